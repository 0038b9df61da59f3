#include "support/test_provider.h"
#include "support/values_test.h"

namespace zephmetadata {
namespace {

class TestBuffer : public BufferProviderImpl {
public:
    explicit TestBuffer(const std::string& packet) : BufferProviderImpl(Bytes(packet), packet.size()) {}
    static const unsigned char* Bytes(const std::string& text) {
        return reinterpret_cast<const unsigned char*>(text.data());
    }

    std::string mStored;
    bool mThrows = false;

private:
    void WriteBuffer(const std::vector<Path>&, const char* data, std::size_t size) override {
        if (mThrows) {
            throw 1;
        }
        mStored.assign(data, size);
    }
};

class BufferProvider : public support::TreeTest {};

TEST_F(BufferProvider, HoldsWhatThePacketHolds) {
    SetValue(Tree(), At("dc:source"), "s");
    const std::string packet = SerializeXMPMeta(Tree());
    const auto provider = std::make_shared<TestBuffer>(packet);
    int calls = 0;
    provider->NotifyWhenMetaDataChanged(
        std::make_shared<std::function<void(XMPMetaHandle)>>([&](XMPMetaHandle) { ++calls; }));
    {
        MetaDataUpdateAccess access(provider);
        ASSERT_NE(*access, nullptr);
        SetValue(*access, At("dc:source"), "changed");
        access.AddChange(At("dc:source"));
    }
    EXPECT_EQ(calls, 0);
    const auto reread = std::make_shared<TestBuffer>(provider->mStored);
    std::string text;
    EXPECT_TRUE(GetValue(*MetaDataReadAccess(reread), At("dc:source"), text));
    EXPECT_EQ(text, "changed");

    for (const std::string& none : {std::string(), std::string("no xmp"), std::string("<html/>")}) {
        provider->ResetBuffer(TestBuffer::Bytes(none), none.size());
        EXPECT_EQ(*MetaDataReadAccess(provider), nullptr) << none;
    }
    provider->ResetBuffer(nullptr, 10);
    EXPECT_EQ(calls, 4);
}

// What an edit of another property leaves of a packet.
TEST_F(BufferProvider, KeepsEmptyTextsAndWhatThePacketIsAbout) {
    const std::string body =
        "<dc:format/><dc:subject><rdf:Bag><rdf:li/><rdf:li>b</rdf:li><rdf:li/></rdf:Bag></"
        "dc:subject><dc:title><rdf:Alt>"
        "<rdf:li xml:lang='x-default'/><rdf:li xml:lang='de'>T</rdf:li></rdf:Alt></dc:title>";
    const auto provider = std::make_shared<TestBuffer>(
        "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><rdf:Description rdf:about='uuid:1-2' "
        "xmlns:dc='http://purl.org/dc/elements/1.1/'>" +
        body + "</rdf:Description></rdf:RDF>");
    {
        MetaDataUpdateAccess access(provider);
        ASSERT_TRUE(SetValue(*access, At("dc:source"), "changed"));
        access.AddChange(At("dc:source"));
    }
    const auto reread = std::make_shared<TestBuffer>(provider->mStored);
    const MetaDataReadAccess tree(reread);
    ASSERT_NE(*tree, nullptr) << provider->mStored;
    EXPECT_TRUE(HasValue(*tree, At("dc:format"))) << provider->mStored;
    EXPECT_EQ(GetItems(*tree, At("dc:subject")), (std::vector<std::string>{"", "b", ""}));
    EXPECT_EQ(GetLanguages(*tree, At("dc:title")),
              (std::map<std::string, std::string>{{"x-default", ""}, {"de", "T"}}));
    EXPECT_NE(provider->mStored.find("rdf:about=\"uuid:1-2\""), std::string::npos) << provider->mStored;
}

TEST_F(BufferProvider, KeepsAnExceptionOfItsSubclassIn) {
    const auto provider = std::make_shared<TestBuffer>(SerializeXMPMeta(Tree()));
    provider->mThrows = true;
    EXPECT_NO_THROW({
        MetaDataUpdateAccess access(provider);
        access.AddChange(At("dc:source"));
    });
    EXPECT_EQ(provider->mStored, "");
}

// Providers of all kinds.
TEST_F(BufferProvider, AndAnyOtherHasNoTreeWithoutTheLibrary) {
    const UTF16String photo = u"" ZEPHMETADATA_SOURCE_DIR "/tests/data/harbour.jpg";
    const auto other = std::make_shared<support::TestProvider>(Tree());
    const std::string packet = SerializeXMPMeta(Tree());
    struct Row {
        const char* mLabel;
        std::function<sp<MetaDataProvider>()> mMake;
    };
    const std::vector<Row> rows = {
        {"file", [&] { return std::make_shared<FileProvider>(photo); }},
        {"media", [&] { return OpenMedia(photo); }},
        {"sidecar",
         [] { return std::make_shared<SidecarProvider>(u"" ZEPHMETADATA_SOURCE_DIR "/tests/data/sidecar.xmp"); }},
        {"buffer", [&] { return std::make_shared<TestBuffer>(packet); }},
        {"typical",
         [&] {
             other->ResetToEmptyMetaData(true);
             return other;
         }},
        {"aggregate", [&] { return std::make_shared<AggregateProvider>(std::vector<sp<MetaDataProvider>>{other}); }},
        {"disjoint",
         [&] {
             const auto disjoint = std::make_shared<DisjointSchemaProxyProvider>();
             disjoint->RegisterBaseProvider(other);
             return disjoint;
         }},
    };
    Terminate();
    for (const Row& row : rows) {
        EXPECT_EQ(*MetaDataReadAccess(row.mMake()), nullptr) << row.mLabel;
    }
    EXPECT_EQ(GetErrorInfos().size(), rows.size());
    const auto provider = std::make_shared<FileProvider>(photo);
    EXPECT_EQ(provider->LastRead().mStatus, FileStatus::kFileStatus_Unreadable);
    Initialize();
    EXPECT_EQ(Records().back(),
              (Record{ErrorKind::ErrorReadingXMP, "Error reading XMP data: the library is not initialised.",
                      zephcore::UTF16to8(photo)}));
    provider->ReloadFile();
    EXPECT_NE(*MetaDataReadAccess(provider), nullptr);
}

}  // namespace
}  // namespace zephmetadata
