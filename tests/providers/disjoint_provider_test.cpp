#include "support/test_provider.h"
#include "support/values_test.h"

namespace zephmetadata {
namespace {

using support::Callback;
using support::TestProvider;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A base provider, and Dublin Core in a provider of its own.
class Disjoint : public support::TreeTest {
protected:
    sp<TestProvider> Source(const std::string& body) {
        Load(body);
        const auto source = std::make_shared<TestProvider>(Tree());
        source->mOwnChangeList = true;
        return source;
    }

    static std::string Shown(const sp<MetaDataProvider>& provider, const std::string& expression) {
        const MetaDataReadAccess access(provider);
        std::string text;
        return GetValue(*access, At(expression), text) ? text : "<none>";
    }

    static void Edit(const sp<MetaDataProvider>& provider, const std::string& expression, const std::string& value) {
        MetaDataUpdateAccess access(provider);
        const Path path = At(expression);
        value.empty() ? DeleteValue(*access, path) : SetValue(*access, path, value);
        access.AddChange(path);
    }

    void Connect() {
        mProvider->RegisterBaseProvider(mBase);
        mProvider->RegisterProvider(NamespaceDefinition(At("dc:source").mNamespace), mRouted);
    }

    sp<TestProvider> mBase = Source("<xmp:Label>base</xmp:Label><dc:source>covered</dc:source>");
    sp<TestProvider> mRouted = Source("<dc:source>routed</dc:source><xmp:Rating>5</xmp:Rating>");
    sp<DisjointSchemaProxyProvider> mProvider = std::make_shared<DisjointSchemaProxyProvider>();
};

TEST_F(Disjoint, ShowsEachSchemaFromItsProvider) {
    EXPECT_EQ(*MetaDataReadAccess(mProvider), nullptr);
    Connect();
    EXPECT_EQ(Shown(mProvider, "xmp:Label"), "base");
    EXPECT_EQ(Shown(mProvider, "dc:source"), "routed");
    EXPECT_EQ(Shown(mProvider, "xmp:Rating"), "<none>") << "not of the routed schema";
    EXPECT_EQ(*MetaDataReadAccess(mProvider), *MetaDataReadAccess(mBase)) << "the base provider's own tree";
    Load("<dc:format>f</dc:format>");
    mRouted->ResetMetaData(Tree(), true);
    EXPECT_EQ(Shown(mProvider, "dc:source"), "covered") << "what the route no longer holds is the base's again";
    EXPECT_EQ(Shown(mProvider, "dc:format"), "f");
}

TEST_F(Disjoint, WritesEachChangeToItsProvider) {
    Connect();
    Edit(mProvider, "dc:source", "n");
    EXPECT_THAT(mRouted->mWrites, ElementsAre(ElementsAre(At("dc:source"))));
    EXPECT_THAT(mBase->mWrites, IsEmpty());
    EXPECT_EQ(Shown(mRouted, "dc:source"), "n");

    std::string duringWrite;
    mBase->mDuringWrite = [&] { duringWrite = Shown(mBase, "dc:source") + Shown(mBase, "xmp:Label"); };
    Edit(mProvider, "xmp:Label", "l");
    EXPECT_EQ(duringWrite, "coveredl") << "the base provider is written with what it has itself";
    EXPECT_EQ(Shown(mProvider, "dc:source"), "n") << "and shows the routed schema again afterwards";
    EXPECT_EQ(mRouted->mWrites.size(), 1U);

    Edit(mProvider, "dc:source", "");
    EXPECT_EQ(Shown(mRouted, "dc:source"), "<none>");
    EXPECT_EQ(duringWrite, "<none>l") << "what is deleted does not come to light again in the base";
    mBase->MetaDataChanged();
    EXPECT_EQ(Shown(mProvider, "dc:source"), "<none>");
    {
        MetaDataUpdateAccess access(mProvider);
        SetValue(*access, At("dc:format"), "f");
        SetValue(*access, At("dc:coverage"), "c");
        SetValue(*access, At("dc:subject"), "x; y; z");
        SetValue(*access, At("xmp:Label"), "ll");
        for (const char* description : {"dc:subject", "dc:coverage/xmp:Label", "dc:format", "dc:x[", "dc:y//"}) {
            access.AddChange({false, At("dc:subject").mNamespace, description, "", ""});  // some lead nowhere
        }
        access.AddChange({false, At("xmp:Label").mNamespace, "xmp:Label//", "", ""});
        access.AddChange(At("xmp:Label"));
    }
    {
        MetaDataUpdateAccess access(mProvider);
        DeleteArrayItem(*access, At("dc:subject"), 0);
        access.AddChange(At("dc:subject[1]"));
    }
    EXPECT_EQ(Shown(mRouted, "dc:subject"), "y; z") << "an item's path stands for its array";
    EXPECT_EQ(Shown(mRouted, "dc:format") + Shown(mRouted, "dc:coverage") + duringWrite, "fc<none>ll");
}

TEST_F(Disjoint, LosesNothingThatNobodyEdited) {
    const std::string source =
        "<xmpMM:DerivedFrom rdf:parseType='Resource'><stRef:documentID>d</stRef:documentID>"
        "<stRef:instanceID>i</stRef:instanceID></xmpMM:DerivedFrom>";
    mBase = Source("<dc:source>covered</dc:source><dc:format>f</dc:format>" + source);
    Connect();
    mProvider->RegisterProvider(NamespaceDefinition(At("xmpMM:DocumentID").mNamespace), mRouted);
    const auto rebuilt = [&](const char* expression) {
        mRouted->MetaDataChanged();
        return Shown(mProvider, expression);
    };
    std::string duringWrite;
    mBase->mDuringWrite = [&] { duringWrite = Shown(mBase, "dc:source") + Shown(mBase, "dc:format"); };
    Edit(mProvider, "xmp:Label", "l");
    EXPECT_EQ(duringWrite, "coveredf");
    EXPECT_EQ(rebuilt("dc:format"), "f") << "what the route lacks is shown and stays where it is";

    Edit(mProvider, "xmpMM:DerivedFrom/stRef:documentID", "n");
    EXPECT_EQ(Shown(mRouted, "xmpMM:DerivedFrom/stRef:instanceID"), "i") << "a part takes the whole along";
    EXPECT_EQ(rebuilt("xmpMM:DerivedFrom/stRef:documentID"), "n");

    Edit(mProvider, "dc:format", "");
    EXPECT_THAT(mBase->mWrites.back(), ElementsAre(At("dc:format")));
    EXPECT_EQ(rebuilt("dc:format") + duringWrite, "<none>covered<none>");

    SetValue(*MetaDataReadAccess(mBase), At("dc:coverage"), "c");
    EXPECT_EQ(rebuilt("dc:coverage"), "c") << "an edit of the base by itself";
    mProvider.reset();
    EXPECT_EQ(Shown(mBase, "dc:coverage") + Shown(mBase, "dc:source"), "ccovered");
    EXPECT_EQ(Shown(mBase, "xmpMM:DerivedFrom/stRef:documentID"), "d");
}

TEST_F(Disjoint, KeepsASchemaInTheBaseWhileItsProviderHasNoTree) {
    mRouted->ResetMetaData(nullptr, false);
    Connect();
    EXPECT_EQ(Shown(mProvider, "dc:source"), "covered");
    std::string duringWrite;
    mBase->mDuringWrite = [&] { duringWrite = Shown(mBase, "dc:source"); };
    Edit(mProvider, "dc:source", "n");
    EXPECT_THAT(mBase->mWrites, ElementsAre(ElementsAre(At("dc:source"))));
    EXPECT_EQ(duringWrite, "n");
}

TEST_F(Disjoint, OverAnAggregateKeepsWhatIsMixed) {
    const auto title = [](const char* text, const char* german) {
        return std::string("<dc:source>") + text + "</dc:source><dc:title><rdf:Alt><rdf:li xml:lang='x-default'>" +
               text + "</rdf:li><rdf:li xml:lang='de'>" + german + "</rdf:li></rdf:Alt></dc:title>";
    };
    const auto first = Source(title("A", "a"));
    const auto second = Source(title("B", "b"));
    const auto both = std::make_shared<AggregateProvider>(std::vector<sp<MetaDataProvider>>{first, second});
    const sp<SchemaDefinition> dublinCore = NamespaceDefinition(At("dc:source").mNamespace);
    mProvider->RegisterBaseProvider(mBase);
    mProvider->RegisterProvider(dublinCore, both);
    EXPECT_TRUE(IsMixed(*MetaDataReadAccess(mProvider), At("dc:source")));
    {
        MetaDataUpdateAccess access(mProvider);
        SetValue(*access, At("dc:title"), "N");
        access.AddChange(At("dc:title"));
        access.AddChange(At("dc:source"));
    }
    EXPECT_EQ(Shown(first, "dc:title") + Shown(second, "dc:title"), "NN");
    EXPECT_EQ(GetLanguages(*MetaDataReadAccess(second), At("dc:title")).at("de"), "b");
    EXPECT_EQ(Shown(second, "dc:source"), "B");

    mProvider->ClearProviders();
    mProvider->RegisterBaseProvider(both);
    mProvider->RegisterProvider(dublinCore, mRouted);
    mProvider->ClearProviders();
    EXPECT_TRUE(IsMixed(*MetaDataReadAccess(both), At("dc:source"))) << "given back as it was";
    EXPECT_FALSE(IsMixed(*MetaDataReadAccess(mRouted), At("dc:source")));
}

TEST_F(Disjoint, WithTheBaseAsItsOwnRouteLosesNothing) {
    mProvider->RegisterBaseProvider(mBase);
    mProvider->RegisterProvider(NamespaceDefinition(At("dc:source").mNamespace), mBase);
    Edit(mProvider, "dc:source", "n");
    Edit(mProvider, "xmp:Label", "l");
    mProvider.reset();
    EXPECT_EQ(Shown(mBase, "dc:source") + Shown(mBase, "xmp:Label"), "nl");
}

TEST_F(Disjoint, FollowsNamesThatLeadIntoARoutedSchema) {
    Connect();
    Edit(mProvider, "tiff:Artist", "a");
    EXPECT_EQ(Shown(mRouted, "dc:creator"), "a");
    EXPECT_THAT(mBase->mWrites, IsEmpty());
}

TEST_F(Disjoint, AsksTheProviderOfThePath) {
    EXPECT_TRUE(mProvider->QueryPathStatus(At("dc:source"), kPathWritable)) << "without any, the base behaviour";
    Connect();
    mRouted->mReadOnlyNamespaces = {At("dc:source").mNamespace, At("xmp:Label").mNamespace};
    EXPECT_FALSE(mProvider->QueryPathStatus(At("dc:source"), kPathWritable));
    EXPECT_TRUE(mProvider->QueryPathStatus(At("xmp:Label"), kPathWritable));
}

TEST_F(Disjoint, GivesTheBaseItsTreeBackWhenCleared) {
    Connect();
    std::vector<XMPMetaHandle> told;
    const auto callback = Callback([&](XMPMetaHandle tree) { told.push_back(tree); });
    mProvider->NotifyWhenMetaDataChanged(callback);
    mProvider->ClearProviders();
    EXPECT_THAT(told, ElementsAre(nullptr));
    EXPECT_EQ(*MetaDataReadAccess(mProvider), nullptr);
    EXPECT_EQ(Shown(mBase, "dc:source"), "covered");
    mBase->MetaDataChanged();
    EXPECT_EQ(told.size(), 1U);
    Connect();
    for (const char* const expression : {"dc:source", "dc:coverage"}) {
        Edit(mProvider, expression, "n");
    }
    mProvider.reset();
    EXPECT_EQ(Shown(mBase, "dc:source"), "covered") << "an edit of a routed schema is the route's";
    EXPECT_EQ(Shown(mBase, "dc:coverage"), "<none>");
}

}  // namespace
}  // namespace zephmetadata
