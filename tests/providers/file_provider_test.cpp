#include "support/values_test.h"
#include "zephmetadata/providers.h"

namespace zephmetadata {
namespace {

class FileProviders : public support::TreeTest {
protected:
    UTF16String Copy(const std::string& fixture) {
        const auto path = Folder().Path() / fixture;
        std::filesystem::copy_file(ZEPHMETADATA_SOURCE_DIR "/tests/data/" + fixture, path);
        return zephcore::PathFromNative(path.string());
    }
    /// Sets a value through the provider and writes back.
    template <typename Kind>
    static FileStatus Set(const sp<Kind>& provider, const std::string& expression, const std::string& value) {
        {
            MetaDataUpdateAccess access(provider);
            if (SetValue(*access, At(expression), value)) {
                access.AddChange(At(expression));
            }
        }
        return provider->LastWrite().mStatus;
    }
    template <typename Kind>
    static std::string Get(const sp<Kind>& provider, const std::string& expression) {
        std::string text;
        return GetValue(*MetaDataReadAccess(provider), At(expression), text) ? text : "<none>";
    }
};

TEST_F(FileProviders, ReadAndWriteAPhoto) {
    const UTF16String path = Copy("harbour.jpg");
    const auto provider = std::make_shared<FileProvider>(path);
    int calls = 0;
    provider->NotifyWhenMetaDataChanged(
        std::make_shared<std::function<void(XMPMetaHandle)>>([&](XMPMetaHandle) { ++calls; }));
    EXPECT_EQ(provider->FilePath(), path);
    EXPECT_EQ(provider->LastRead().mStatus, FileStatus::kFileStatus_Success);
    EXPECT_EQ(Set(provider, "xmp:Label", "Blue"), FileStatus::kFileStatus_Success);
    EXPECT_EQ(Set(provider, "xmp:Nickname", "again"), FileStatus::kFileStatus_Success)
        << "a second write of the same provider";
    provider->ResetFilePath(path);
    EXPECT_EQ(calls, 0);
    provider->ReloadFile();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(Get(provider, "xmp:Label"), "Blue");
    EXPECT_EQ(Get(provider, "xmp:Nickname"), "again");
    EXPECT_EQ(Get(provider, "xmpMM:History[2]/stEvt:changed"), "/metadata/xmp/Nickname");
}

TEST_F(FileProviders, HaveNoTreeWithoutAFile) {
    const auto provider = std::make_shared<FileProvider>(u"");
    EXPECT_EQ(provider->LastRead().mStatus, FileStatus::kFileStatus_NoFile);
    EXPECT_EQ(*MetaDataReadAccess(provider), nullptr);
    provider->ResetFilePath(u"/nowhere/at all.jpg");
    EXPECT_EQ(provider->LastRead().mStatus, FileStatus::kFileStatus_NoFile);
    EXPECT_FALSE(provider->StartMetaData());
}

TEST_F(FileProviders, GiveAFileItsFirstXMPWhenAsked) {
    const UTF16String path = Copy("plain.png");
    const auto provider = std::make_shared<FileProvider>(path);
    EXPECT_EQ(provider->LastRead().mStatus, FileStatus::kFileStatus_NoXMP);
    EXPECT_EQ(*MetaDataReadAccess(provider), nullptr);
    EXPECT_TRUE(provider->StartMetaData());
    EXPECT_EQ(Set(provider, "dc:title", "First"), FileStatus::kFileStatus_Success);
    EXPECT_EQ(Get(std::make_shared<FileProvider>(path), "dc:title"), "First");
}

TEST_F(FileProviders, LeaveTheFileAloneWhileWritingIsDisabled) {
    const UTF16String path = Copy("harbour.jpg");
    const std::string before = support::ReadFile(zephcore::PathToNative(path));
    const auto provider = std::make_shared<FileProvider>(path);
    DisableXMPWriting(true);
    EXPECT_EQ(Set(provider, "xmp:Label", "Blue"), FileStatus::kFileStatus_WritingDisabled);
    DisableXMPWriting(false);
    EXPECT_EQ(support::ReadFile(zephcore::PathToNative(path)), before);
    EXPECT_EQ(Get(provider, "xmp:Label"), "Blue") << "the tree has the edit and its history all the same";
    EXPECT_NE(Get(provider, "xmpMM:History[1]/stEvt:action"), "<none>");
}

TEST_F(FileProviders, LeaveAFileAloneThatChangedMeanwhile) {
    const UTF16String path = Copy("harbour.jpg");
    const auto provider = std::make_shared<FileProvider>(path);
    EXPECT_EQ(Set(std::make_shared<FileProvider>(path), "xmp:Label", "Other"), FileStatus::kFileStatus_Success);
    EXPECT_EQ(Set(provider, "xmp:Nickname", "mine"), FileStatus::kFileStatus_Changed);
    EXPECT_EQ(Get(std::make_shared<FileProvider>(path), "xmp:Label"), "Other");
    provider->ReloadFile();
    EXPECT_EQ(Set(provider, "xmp:Nickname", "mine"), FileStatus::kFileStatus_Success);
}

// A name space that the toolkit writes as it stands, and so makes no XML.
const char* const kUnwritable =
    "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>"
    "<rdf:Description xmlns:z='http://z.test/?a=1&amp;b=2'><z:a>v</z:a></rdf:Description></rdf:RDF></x:xmpmeta>";

TEST_F(FileProviders, TellOfASidecarThatCannotBeMadeAPacket) {
    const auto file = Folder().Write("unwritable.xmp", kUnwritable);
    const auto provider = std::make_shared<SidecarProvider>(zephcore::PathFromNative(file.string()));
    ASSERT_EQ(provider->LastRead().mStatus, FileStatus::kFileStatus_Success);
    EXPECT_EQ(Set(provider, "xmp:Label", "Blue"), FileStatus::kFileStatus_NotWritten);
    EXPECT_NE(provider->LastWrite().mDetail, "");
    ASSERT_TRUE(HasErrors());
    EXPECT_EQ(GetErrorInfos().back().kind, ErrorKind::ErrorWritingXMP);
    EXPECT_EQ(support::ReadFile(file), kUnwritable);
}

TEST_F(FileProviders, KeepASidecarASidecar) {
    const UTF16String path = Copy("sidecar.xmp");
    const auto provider = std::make_shared<SidecarProvider>(path);
    ASSERT_EQ(provider->LastRead().mStatus, FileStatus::kFileStatus_Success);
    EXPECT_EQ(Set(provider, "xmp:Label", "Blue"), FileStatus::kFileStatus_Success);
    EXPECT_EQ(Set(provider, "xmp:Nickname", "again"), FileStatus::kFileStatus_Success);
    const std::string text = support::ReadFile(zephcore::PathToNative(path));
    EXPECT_TRUE(text.starts_with("<?xpacket")) << text.substr(0, 40);
    EXPECT_EQ(Get(std::make_shared<SidecarProvider>(path), "xmp:Label"), "Blue");

    const auto broken = Folder().Write("broken.xmp", "<x:xmpmeta");
    EXPECT_EQ(SidecarProvider(zephcore::PathFromNative(broken.string())).LastRead().mStatus,
              FileStatus::kFileStatus_DamagedXMP);
    EXPECT_EQ(SidecarProvider(zephcore::PathFromNative(Folder().Path().string())).LastRead().mStatus,
              FileStatus::kFileStatus_NotAFile);
    EXPECT_EQ(SidecarProvider(u"/nowhere.xmp").LastRead().mStatus, FileStatus::kFileStatus_NoFile);
}

}  // namespace
}  // namespace zephmetadata
