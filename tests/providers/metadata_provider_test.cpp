#include "support/test_provider.h"
#include "support/values_test.h"
#include "zephmetadata/edits.h"
#include "zephmetadata/providers.h"

namespace zephmetadata {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using support::Callback;
using support::TestProvider;

class Provider : public support::TreeTest {
protected:
    std::string HistoryField(int item, const std::string& field) const {
        return Raw("xmpMM:History[" + std::to_string(item) + "]/stEvt:" + field);
    }
    sp<TestProvider> mProvider = std::make_shared<TestProvider>(mTree.get());
};

TEST_F(Provider, WritesBackWithOneHistoryEntry) {
    std::vector<std::string> told;
    const auto callback = Callback([&](XMPMetaHandle tree) {
        EXPECT_EQ(tree, Tree());
        told.push_back(Raw("xmpMM:History[1]/stEvt:action") + std::to_string(mProvider->mWrites.size()));
    });
    mProvider->NotifyWhenMetaDataWritten(callback);
    {
        MetaDataUpdateAccess access(mProvider);
        EXPECT_FALSE(access.HasChanges());
        SetValue(*access, At("dc:title"), "New");
        access.AddChange(At("dc:title"));
        access.AddChange(At("dc:title"));
        access.AddChange({false, "http://nobody/", "x", "x", ""});
        EXPECT_TRUE(access.HasChanges());
    }
    EXPECT_THAT(mProvider->mWrites,
                ElementsAre(ElementsAre(At("dc:title"), At("dc:title"), Path{false, "http://nobody/", "x", "", ""})));
    EXPECT_EQ(CountArrayItems(Tree(), At("xmpMM:History")), 1);
    EXPECT_EQ(HistoryField(1, "action"), "saved");
    EXPECT_EQ(HistoryField(1, "changed"), "/metadata/dc/title;/metadata");
    EXPECT_EQ(HistoryField(1, "instanceID"), Raw("xmpMM:InstanceID"));
    EXPECT_THAT(Raw("xmpMM:InstanceID"), ::testing::MatchesRegex("xmp\\.iid:[0-9a-f-]{36}"));
    EXPECT_EQ(HistoryField(1, "when"), Raw("xmp:MetadataDate"));
    EXPECT_NE(Raw("xmpMM:DocumentID"), "<none>");
    EXPECT_NE(Raw("xmpMM:OriginalDocumentID"), "<none>");
    { MetaDataUpdateAccess access(mProvider); }
    mProvider->RemoveMetaDataWrittenNotification(callback);
    MetaDataUpdateAccess(mProvider).AddChange(At("dc:title"));
    EXPECT_THAT(told, ElementsAre("saved1")) << "once, after the write";
}

TEST_F(Provider, WritesNothingWithoutChangesOrTree) {
    { MetaDataUpdateAccess access(mProvider); }
    EXPECT_THAT(mProvider->mWrites, IsEmpty());
    EXPECT_THAT(XMPNodes(Tree()), IsEmpty());
    mProvider->ResetMetaData(nullptr, false);
    {
        MetaDataUpdateAccess access(mProvider);
        EXPECT_EQ(*access, nullptr);
        access.AddChange(At("dc:title"));
        EXPECT_EQ(access.Commit().mFailures.at(0).mStatus, kFileStatus_NoXMP);
    }
    EXPECT_THAT(mProvider->mWrites, IsEmpty());
    {
        MetaDataUpdateAccess access(nullptr);
        access.AddChange(At("dc:title"));
    }
    EXPECT_EQ(*MetaDataReadAccess(nullptr), nullptr);
}

TEST_F(Provider, WithAChangeListOfItsOwnHasNoHistory) {
    mProvider->mOwnChangeList = true;
    {
        MetaDataUpdateAccess access(mProvider);
        access.AddChange(At("dc:title"));
    }
    EXPECT_EQ(mProvider->mWrites.size(), 1U);
    EXPECT_THAT(XMPNodes(Tree()), IsEmpty());
}

TEST_F(Provider, IgnoresWritesAndChangesFromInsideAWrite) {
    int calls = 0;
    int written = 0;
    const auto callback = Callback([&](XMPMetaHandle) { ++calls; });
    const auto writeCallback = Callback([&](XMPMetaHandle) { ++written; });
    mProvider->NotifyWhenMetaDataChanged(callback);
    mProvider->NotifyWhenMetaDataWritten(writeCallback);
    mProvider->mDuringWrite = [&] {
        mProvider->MetaDataChanged();
        MetaDataUpdateAccess inner(mProvider);
        inner.AddChange(At("dc:source"));
    };
    {
        MetaDataUpdateAccess access(mProvider);
        access.AddChange(At("dc:title"));
    }
    EXPECT_EQ(mProvider->mWrites.size(), 1U);
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(written, 1);
}

TEST_F(Provider, CommitsOnceAndTellsOfIt) {
    mProvider->mDuringWrite = [] { throw std::runtime_error("disk"); };
    {
        MetaDataUpdateAccess access(mProvider);
        EXPECT_EQ(access.Set(At("dc:title"), "New").mResult, kEditResult_Changed);
        EXPECT_EQ(access.Set(At("dc:title"), "New").mResult, kEditResult_Unchanged);
        EXPECT_EQ(access.Set(At("dc:nothing"), 1).mRefusal, kEditRefusal_NoDefinition);
        EXPECT_EQ(access.Delete(At("dc:source")).mResult, kEditResult_Unchanged);
        const WriteReport failed = access.Commit();
        ASSERT_EQ(failed.mFailures.size(), 1U);
        EXPECT_EQ(Describe(failed.mFailures.front()), "could not be written (disk)");
        EXPECT_FALSE(failed.IsWritten() || access.HasChanges());
        EXPECT_THAT(Records(), IsEmpty()) << "it is told, not reported";

        mProvider->mDuringWrite = nullptr;
        EXPECT_FALSE(access.Commit().mHadChanges) << "what was committed is not written again";
        EXPECT_EQ(access.Delete(At("dc:title")).mResult, kEditResult_Changed);
        EXPECT_TRUE(access.Commit().IsWritten()) << "the in-write flag is cleared however a write ends";
    }
    EXPECT_THAT(mProvider->mWrites, ElementsAre(ElementsAre(At("dc:title")), ElementsAre(At("dc:title"))));
    ValueEdit language;
    language.mPath = At("dc:title");
    language.mLanguage = "de";
    language.mValue = "Neu";
    EXPECT_EQ(MetaDataUpdateAccess(mProvider).Apply(language).mResult, kEditResult_Changed);
    EXPECT_EQ(mProvider->mWrites.size(), 3U) << "the end of an access commits";
}

TEST_F(Provider, CallsWhatWasRegisteredWhenThePassBegan) {
    std::vector<std::string> calls;
    const auto late = Callback([&](XMPMetaHandle) { calls.emplace_back("late"); });
    const auto emptied = Callback([&](XMPMetaHandle) { calls.emplace_back("emptied"); });
    const auto removed = Callback([&](XMPMetaHandle) { calls.emplace_back("removed"); });
    const auto twice = Callback([&](XMPMetaHandle) { calls.emplace_back("twice"); });
    const auto first = Callback([&](XMPMetaHandle tree) {
        EXPECT_EQ(tree, Tree());
        mProvider->NotifyWhenMetaDataChanged(late);
        mProvider->RemoveMetaDataChangedNotification(removed);
        *emptied = nullptr;
    });
    for (const auto& callback : {first, twice, emptied, removed, twice}) {
        mProvider->NotifyWhenMetaDataChanged(callback);
    }
    mProvider->MetaDataChanged();
    EXPECT_THAT(calls, ElementsAre("twice", "removed", "twice"));
    calls.clear();
    *first = nullptr;
    mProvider->RemoveMetaDataChangedNotification(twice);
    mProvider->MetaDataChanged();
    EXPECT_THAT(calls, ElementsAre("twice", "late"));
}

TEST_F(Provider, MayBeDestroyedByItsOwnCallback) {
    const auto callback = Callback([this](XMPMetaHandle) { mProvider.reset(); });
    const auto after = Callback([](XMPMetaHandle) { FAIL() << "was emptied with the provider"; });
    mProvider->NotifyWhenMetaDataChanged(callback);
    mProvider->NotifyWhenMetaDataChanged(after);
    mProvider->MetaDataChanged();
    EXPECT_FALSE(*callback);
    EXPECT_FALSE(*after);
}

TEST_F(Provider, ReadAccessKeepsItsTree) {
    SetValue(Tree(), At("dc:source"), "old");
    const MetaDataReadAccess access(mProvider);
    mTree = nullptr;
    mProvider->ResetToEmptyMetaData(true);
    mProvider.reset();
    std::string text;
    EXPECT_TRUE(GetValue(*access, At("dc:source"), text));
    EXPECT_EQ(text, "old");
}

TEST_F(Provider, KeepsTheFirstDynamicSchemaOfANamespace) {
    const auto make = [](const char* prefix) {
        const auto schema = std::make_shared<SchemaDefinition>();
        schema->mNamespace = "n:dynamic";
        schema->mPrefix = prefix;
        schema->mDynamic = true;
        return schema;
    };
    const auto first = make("dyn");
    EXPECT_FALSE(mProvider->DoesDynamicNamespaceExist("n:dynamic"));
    mProvider->AddDynamicSchemaDefinition(first);
    mProvider->AddDynamicSchemaDefinition(make("other"));
    mProvider->AddDynamicSchemaDefinition(nullptr);
    EXPECT_TRUE(mProvider->DoesDynamicNamespaceExist("n:dynamic"));
    const auto range = mProvider->DynamicSchemaDefinitions();
    EXPECT_THAT(std::vector<sp<SchemaDefinition>>(boost::begin(range), boost::end(range)), ElementsAre(first));
    EXPECT_EQ(NamespaceDefinition("n:dynamic"), first);
}

TEST_F(Provider, AnswersPathStatusByTheWritingSwitch) {
    EXPECT_TRUE(mProvider->QueryPathStatus(Path(), PathStatus::kPathReadable));
    EXPECT_TRUE(mProvider->QueryPathStatus(Path(), PathStatus::kPathWritable));
    DisableXMPWriting(true);
    EXPECT_TRUE(mProvider->QueryPathStatus(Path(), PathStatus::kPathReadable));
    EXPECT_FALSE(mProvider->QueryPathStatus(Path(), PathStatus::kPathWritable));
    DisableXMPWriting(false);
}

}  // namespace
}  // namespace zephmetadata
