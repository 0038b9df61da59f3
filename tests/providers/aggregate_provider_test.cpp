
#include "support/growth.h"
#include "support/test_provider.h"
#include "support/values_test.h"
#include "xmp/core/xmp_paths.h"
#include "xmp/tree/xmp_tree.h"

namespace zephmetadata {
namespace {

using support::Callback;
using support::TestProvider;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

/// Two or more sources that are read and edited as one.
class Aggregate : public support::TreeTest {
protected:
    sp<TestProvider> Source(const std::string& body) {
        Load(body);
        const auto source = std::make_shared<TestProvider>(Tree());
        source->mOwnChangeList = true;  // no history, so that trees hold what the test put there
        return source;
    }

    sp<AggregateProvider> Of(const std::vector<std::string>& bodies) {
        mSources.clear();
        for (const std::string& body : bodies) {
            mSources.push_back(Source(body));
        }
        return std::make_shared<AggregateProvider>(std::vector<sp<MetaDataProvider>>(mSources.begin(), mSources.end()));
    }

    /// The value that the providers show: "<mixed>" and "<none>" for what has no text.
    static std::string Shown(const sp<MetaDataProvider>& provider, const std::string& expression) {
        const MetaDataReadAccess access(provider);
        std::string text;
        GetValueResult result = kGetValueResult_NoValue;
        if (GetValue(*access, At(expression), text, &result)) {
            return text;
        }
        return result == kGetValueResult_Mixed ? "<mixed>" : "<none>";
    }

    std::vector<std::string> InSources(const std::string& expression) const {
        std::vector<std::string> texts;
        for (const auto& source : mSources) {
            texts.push_back(Shown(source, expression));
        }
        return texts;
    }

    static constexpr const char* kEmptied = "<emptied>";

    static bool Edit(const sp<MetaDataProvider>& provider, const std::string& expression, const std::string& value) {
        MetaDataUpdateAccess access(provider);
        const Path path = At(expression);
        const bool changed = value.empty() ? DeleteValue(*access, path)
                                           : SetValue(*access, path, value == kEmptied ? std::string() : value);
        if (changed) {
            access.AddChange(path);
        }
        return changed;
    }

    std::vector<sp<TestProvider>> mSources;
};

std::string Bag(const std::vector<std::string>& items) {
    std::string body = "<dc:subject><rdf:Bag>";
    for (const std::string& item : items) {
        body.append("<rdf:li>").append(item).append("</rdf:li>");
    }
    return body + "</rdf:Bag></dc:subject>";
}

std::string Title(const std::vector<std::pair<std::string, std::string>>& texts) {
    std::string body = "<dc:title><rdf:Alt>";
    for (const auto& [language, text] : texts) {
        body.append("<rdf:li xml:lang='").append(language).append("'>").append(text).append("</rdf:li>");
    }
    return body + "</rdf:Alt></dc:title>";
}

const std::string kFromA =
    "<xmpMM:DerivedFrom rdf:parseType='Resource'><stRef:documentID>same</stRef:documentID>"
    "<stRef:instanceID>a</stRef:instanceID></xmpMM:DerivedFrom>";
const std::string kFromB =
    "<xmpMM:DerivedFrom rdf:parseType='Resource'><stRef:documentID>same</stRef:documentID>"
    "<stRef:instanceID>b</stRef:instanceID></xmpMM:DerivedFrom>";

TEST_F(Aggregate, OfOneSharesItsTree) {
    const auto aggregate = Of({"<dc:source>a</dc:source>"});
    {
        MetaDataUpdateAccess access(aggregate);
        SetValue(*access, At("dc:source"), "b");
        EXPECT_EQ(Shown(mSources[0], "dc:source"), "b") << "at once";
        access.AddChange(At("dc:source"));
    }
    EXPECT_THAT(mSources[0]->mWrites, ElementsAre(ElementsAre(At("dc:source"))));
}

TEST_F(Aggregate, OfOneThatGetsAnotherWithoutARebuildWritesBoth) {
    const auto aggregate = Of({"<dc:source>a</dc:source>" + Bag({"x"})});
    mSources.push_back(Source("<dc:source>b</dc:source>" + Bag({"y"})));
    aggregate->AddProvider(mSources.back(), false);
    EXPECT_EQ(*MetaDataReadAccess(aggregate), *MetaDataReadAccess(mSources.front())) << "not built anew";
    EXPECT_TRUE(Edit(aggregate, "dc:source", "n"));
    EXPECT_TRUE(Edit(aggregate, "dc:subject[2]", "z"));
    EXPECT_THAT(InSources("dc:source"), ElementsAre("n", "n"));
    EXPECT_THAT(InSources("dc:subject"), ElementsAre("x; z", "y; z"));
    for (const auto& source : mSources) {
        EXPECT_THAT(source->mWrites, ElementsAre(ElementsAre(At("dc:source")), ElementsAre(At("dc:subject[2]"))));
    }
}

TEST_F(Aggregate, ShowsWhatDiffersAsMixed) {
    struct Row {
        const char* mLabel;
        std::vector<std::string> mBodies;
        const char* mExpression;
        const char* mShown;
    };
    const std::vector<Row> rows = {
        {"the same", {"<dc:source>a</dc:source>", "<dc:source>a</dc:source>"}, "dc:source", "a"},
        {"different", {"<dc:source>a</dc:source>", "<dc:source>b</dc:source>"}, "dc:source", "<mixed>"},
        {"only in the first", {"<dc:source>a</dc:source>", ""}, "dc:source", "<mixed>"},
        {"only in the last", {"", "", "<dc:source>a</dc:source>"}, "dc:source", "<mixed>"},
        {"in none", {"", "<dc:source>a</dc:source>"}, "dc:coverage", "<none>"},
        {"the same array", {Bag({"x", "y"}), Bag({"x", "y"})}, "dc:subject", "x; y"},
        {"arrays of one item more", {Bag({"x"}), Bag({"x", "y"})}, "dc:subject", "<mixed>"},
        {"an item of such", {Bag({"x"}), Bag({"x", "y"})}, "dc:subject[1]", "<mixed>"},
        {"the same text, one language more",
         {Title({{"x-default", "t"}}), Title({{"x-default", "t"}, {"de", "T"}})},
         "dc:title",
         "<mixed>"},
        {"a common field", {kFromA, kFromB}, "xmpMM:DerivedFrom/stRef:documentID", "same"},
        {"another field", {kFromA, kFromB}, "xmpMM:DerivedFrom/stRef:instanceID", "<mixed>"},
        {"a field of a structure that one lacks", {kFromA, ""}, "xmpMM:DerivedFrom/stRef:documentID", "<mixed>"},
        {"a structure and a text",
         {kFromA, "<xmpMM:DerivedFrom>x</xmpMM:DerivedFrom>"},
         "xmpMM:DerivedFrom/stRef:documentID",
         "<mixed>"},
        {"a text and a structure",
         {"<xmpMM:DerivedFrom>x</xmpMM:DerivedFrom>", kFromA},
         "xmpMM:DerivedFrom/stRef:documentID",
         "<mixed>"},
        {"a name of another property", {"<xmp:ModifyDate>2020-01-01</xmp:ModifyDate>", ""}, "tiff:DateTime", "<mixed>"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(Shown(Of(row.mBodies), row.mExpression), row.mShown) << row.mLabel;
    }
    EXPECT_THAT(Records(), IsEmpty());
}

TEST_F(Aggregate, KnowsEveryNameThatTheToolkitReadsElsewhere) {
    int elsewhere = 0;
    for (const sp<SchemaDefinition>& schema : RegisteredSchemaDefinitions()) {
        for (const sp<PropertyDefinition>& property : schema->mProperties) {
            const XMPMetaPtr tree = CreateXMPMeta();
            const Path path = CreatePathFromSchemaProperty(schema, property);
            toolkit::SetProperty(tree.get(), path.mNamespace, path.mPathDescription, "1");
            const auto nodes = XMPNodes(tree.get());
            const toolkit::Place place = toolkit::NormalPlace(tree.get(), path.mNamespace, path.mPathDescription);
            EXPECT_EQ(place.mSchema, nodes.front().mNamespace) << path.mPathDescription;
            EXPECT_TRUE(place.mPath.starts_with(nodes.front().mPath)) << path.mPathDescription;
            elsewhere += place.mSchema == path.mNamespace ? 0 : 1;
        }
    }
    EXPECT_EQ(elsewhere, 6);
}

TEST_F(Aggregate, TakesAnEditToEverySource) {
    struct Row {
        const char* mLabel;
        std::vector<std::string> mBodies;
        const char* mExpression;
        const char* mValue;  // empty to delete
        std::vector<std::string> mAfter;
    };
    const std::vector<Row> rows = {
        {"sets what is common", {"<dc:source>a</dc:source>", "<dc:source>a</dc:source>"}, "dc:source", "n", {"n", "n"}},
        {"sets what is mixed",
         {"<dc:source>a</dc:source>", "<dc:source>b</dc:source>", ""},
         "dc:source",
         "b",
         {"b", "b", "b"}},
        {"sets what is mixed to the text of the first", {"<dc:source>a</dc:source>", ""}, "dc:source", "a", {"a", "a"}},
        {"deletes what is mixed",
         {"", "<dc:source>a</dc:source>", "<dc:source>b</dc:source>"},
         "dc:source",
         "",
         {"<none>", "<none>", "<none>"}},
        {"sets a whole array", {Bag({"x"}), Bag({"y", "z"})}, "dc:subject", "p; q", {"p; q", "p; q"}},
        {"sets a whole array to that of the first", {Bag({"x"}), Bag({"y", "z"})}, "dc:subject", "x", {"x", "x"}},
        {"deletes an array", {Bag({"x"}), Bag({"y", "z"})}, "dc:subject", "", {"<none>", "<none>"}},
        {"sets a mixed field", {kFromA, kFromB, ""}, "xmpMM:DerivedFrom/stRef:instanceID", "b", {"b", "b", "b"}},
        {"deletes a mixed field", {kFromA, kFromB}, "xmpMM:DerivedFrom/stRef:instanceID", "", {"<none>", "<none>"}},
        {"leaves a text where a field should go",
         {kFromA, "<xmpMM:DerivedFrom>x</xmpMM:DerivedFrom>"},
         "xmpMM:DerivedFrom/stRef:instanceID",
         "n",
         {"n", "<none>"}},
        {"deletes what is emptied",
         {"<dc:source>a</dc:source>", "", "<dc:source>b</dc:source>"},
         "dc:source",
         kEmptied,
         {"<none>", "<none>", "<none>"}},
        {"deletes a field that is emptied, and its structure",
         {kFromA,
          "<xmpMM:DerivedFrom rdf:parseType='Resource'><stRef:instanceID>c</stRef:instanceID></xmpMM:DerivedFrom>"},
         "xmpMM:DerivedFrom/stRef:instanceID",
         kEmptied,
         {"<none>", "<none>"}},
        {"deletes the one language that is emptied",
         {Title({{"x-default", "A"}, {"de", "a"}}), Title({{"x-default", "A"}})},
         "dc:title",
         kEmptied,
         {"a", "<none>"}},
        {"sets a list that one lacks",
         {"",
          "<dc:creator><rdf:Seq><rdf:li>a</rdf:li><rdf:li>b</rdf:li></rdf:Seq>"
          "</dc:creator>"},
         "dc:creator",
         "n",
         {"n", "n"}},
    };
    for (const Row& row : rows) {
        const auto aggregate = Of(row.mBodies);
        EXPECT_TRUE(Edit(aggregate, row.mExpression, row.mValue)) << row.mLabel;
        EXPECT_EQ(InSources(row.mExpression), row.mAfter) << row.mLabel;
        for (const auto& source : mSources) {
            EXPECT_THAT(source->mWrites, ElementsAre(ElementsAre(At(row.mExpression)))) << row.mLabel;
        }
    }
}

TEST_F(Aggregate, LeavesWhatIsMixedAndUntouchedAsItIs) {
    const auto aggregate = Of({"<dc:source>a</dc:source>" + kFromA + Title({{"x-default", "A"}}) + Bag({"x"}),
                               "<dc:coverage>c</dc:coverage>" + kFromB + Title({{"x-default", "B"}})});
    {
        MetaDataUpdateAccess access(aggregate);
        SetValue(*access, At("xmpMM:DerivedFrom/stRef:documentID"), "new");
        SetValue(*access, At("dc:format"), "f");
        // Naming more than was changed changes no more.
        for (const char* expression : {"xmpMM:DerivedFrom", "dc:format", "dc:source", "dc:subject", "dc:title"}) {
            access.AddChange(At(expression));
        }
        // And neither do paths that lead nowhere.
        for (const char* description : {"dc:coverage/xmp:Label", "dc:format[1]/xmp:Label", "dc:format//", "dc:x["}) {
            access.AddChange({false, At("dc:format").mNamespace, description, "", ""});
        }
        SetValue(*access, At("dc:publisher"), "nobody was told of it");
    }
    EXPECT_THAT(InSources("xmpMM:DerivedFrom/stRef:documentID"), ElementsAre("new", "new"));
    EXPECT_THAT(InSources("xmpMM:DerivedFrom/stRef:instanceID"), ElementsAre("a", "b"));
    EXPECT_THAT(InSources("dc:source"), ElementsAre("a", "<none>"));
    EXPECT_THAT(InSources("dc:coverage"), ElementsAre("<none>", "c"));
    EXPECT_THAT(InSources("dc:title"), ElementsAre("A", "B"));
    EXPECT_THAT(InSources("dc:subject"), ElementsAre("x", "<none>"));
    EXPECT_THAT(InSources("dc:format"), ElementsAre("f", "f"));
    EXPECT_THAT(InSources("dc:publisher"), ElementsAre("<none>", "<none>"));
}

TEST_F(Aggregate, EditsOneLanguageAndDropsNoOther) {
    const auto languages = [&](std::size_t source) {
        return GetLanguages(*MetaDataReadAccess(mSources[source]), At("dc:title"));
    };
    const auto set = [&](const sp<MetaDataProvider>& provider, const char* language, const char* text) {
        MetaDataUpdateAccess access(provider);
        EXPECT_TRUE(SetLanguage(*access, At("dc:title"), language, text)) << language;
        access.AddChange(At("dc:title"));
    };
    const auto aggregate = Of({Title({{"x-default", "A"}, {"de", "a"}}), Title({{"x-default", "B"}, {"fr", "b"}})});
    set(aggregate, "x-default", "A");
    EXPECT_THAT(languages(0), ElementsAre(Pair("de", "a"), Pair("x-default", "A")));
    EXPECT_THAT(languages(1), ElementsAre(Pair("fr", "b"), Pair("x-default", "A")));
    EXPECT_EQ(Shown(aggregate, "dc:title"), "A") << "the edit settled it";
    set(aggregate, "it", "i");
    set(aggregate, "de", "");
    EXPECT_THAT(languages(0), ElementsAre(Pair("it", "i"), Pair("x-default", "A")));
    EXPECT_THAT(languages(1), ElementsAre(Pair("fr", "b"), Pair("it", "i"), Pair("x-default", "A")));

    const auto single = Of({Title({{"x-default", "A"}}), Title({{"x-default", "B"}, {"fr", "b"}})});
    set(single, "x-default", "");
    EXPECT_THAT(languages(0), IsEmpty());
    EXPECT_THAT(languages(1), ElementsAre(Pair("fr", "b"))) << "the last language of one source is not that of all";
}

TEST_F(Aggregate, EditsItemsOfMixedArraysInEachSource) {
    const auto edit = [&](const sp<MetaDataProvider>& provider, const std::function<void(XMPMetaHandle)>& change) {
        MetaDataUpdateAccess access(provider);
        change(*access);
        access.AddChange(At("dc:subject"));
    };
    const auto add = [](const char* text) {
        return [text](XMPMetaHandle tree) {
            const int count = CountArrayItems(tree, At("dc:subject"));
            AddArrayItem(tree, At("dc:subject"), count);
            SetValue(tree, CreatePathFromArrayItem(At("dc:subject"), count + 1), text);
        };
    };
    const auto items = [&] {
        std::vector<std::vector<UTF8String>> all;
        for (const auto& source : mSources) {
            all.push_back(GetItems(*MetaDataReadAccess(source), At("dc:subject")));
        }
        return all;
    };
    using Items = std::vector<std::vector<UTF8String>>;
    const auto aggregate = Of({Bag({"x", "y"}), Bag({"n"}), ""});
    edit(aggregate, add("n"));
    EXPECT_EQ(items(), (Items{{"x", "y", "n"}, {"n"}, {"n"}})) << "a bag holds an item once";
    edit(aggregate, [](XMPMetaHandle tree) { SetValue(tree, At("dc:subject[2]"), "Y"); });
    EXPECT_EQ(items(), (Items{{"x", "Y", "n"}, {"n"}, {"n"}})) << "the others have no such item";
    edit(aggregate, [](XMPMetaHandle tree) { DeleteArrayItem(tree, At("dc:subject"), 0); });
    EXPECT_EQ(items(), (Items{{"Y", "n"}, {"n"}, {"n"}}));
    edit(aggregate, [](XMPMetaHandle tree) {
        AddArrayItem(tree, At("dc:subject"), 0);
        SetValue(tree, At("dc:subject[1]"), "first");
    });
    EXPECT_EQ(items(), (Items{{"first", "Y", "n"}, {"n", "first"}, {"n", "first"}})) << "as far as there is an order";

    const auto single = Of({Bag({"x"}), Bag({"y"})});
    edit(single, [](XMPMetaHandle tree) { DeleteArrayItem(tree, At("dc:subject"), 0); });
    EXPECT_EQ(items(), (Items{{}, {"y"}})) << "the last item of one source is not that of all";

    const auto inner = Of({Bag({"x"}), Bag({"y"})});
    const auto outer = std::make_shared<AggregateProvider>(std::vector<sp<MetaDataProvider>>{inner, Source("")});
    edit(outer, [](XMPMetaHandle tree) { DeleteArrayItem(tree, At("dc:subject"), 0); });
    EXPECT_EQ(items(), (Items{{}, {"y"}})) << "nor is it through two aggregates";

    const auto alike = Of({Bag({"x"}), Bag({"x"})});
    SetValue(*MetaDataReadAccess(mSources[1]), At("dc:subject"), "z; x");
    edit(alike, add("n"));
    edit(alike, [](XMPMetaHandle tree) { SetValue(tree, At("dc:subject[1]"), "X"); });
    EXPECT_EQ(items(), (Items{{"X", "n"}, {"z", "X", "n"}})) << "what a source was given since stays";
    SetValue(*MetaDataReadAccess(mSources[1]), At("dc:subject"), "z");
    edit(alike, [](XMPMetaHandle tree) { SetValue(tree, At("dc:subject"), "p; n"); });
    EXPECT_EQ(items(), (Items{{"p", "n"}, {"z", "p"}})) << "and what is edited arrives";
}

TEST_F(Aggregate, LeavesWhatHasAnotherShapeToItsSource) {
    const std::string structure = "<dc:subject rdf:parseType='Resource'><xmp:Label>s</xmp:Label></dc:subject>";
    const auto aggregate = Of({Bag({"x"}), structure});
    {
        MetaDataUpdateAccess access(aggregate);
        EXPECT_TRUE(DeleteArrayItem(*access, At("dc:subject"), 0));
        access.AddChange(At("dc:subject"));
    }
    EXPECT_FALSE(HasValue(*MetaDataReadAccess(mSources[0]), At("dc:subject")));
    EXPECT_EQ(XMPNodes(*MetaDataReadAccess(mSources[1])).size(), 2U) << "the structure and its field";
}

TEST_F(Aggregate, DeletesOneLanguageThroughANameThatStandsForIt) {
    const auto description = [](const char* text, const char* german) {
        return std::string("<dc:description><rdf:Alt><rdf:li xml:lang='x-default'>") + text +
               "</rdf:li><rdf:li xml:lang='de'>" + german + "</rdf:li></rdf:Alt></dc:description>";
    };
    const auto aggregate = Of({description("A", "a"), description("B", "b")});
    EXPECT_TRUE(Edit(aggregate, "tiff:ImageDescription", ""));
    for (std::size_t i = 0; i < mSources.size(); ++i) {
        EXPECT_THAT(GetLanguages(*MetaDataReadAccess(mSources[i]), At("dc:description")),
                    ElementsAre(Pair("de", i == 0 ? "a" : "b")));
    }
    EXPECT_EQ(Shown(Of({Title({{"x-default", "A"}}), Title({{"x-default", "B"}})}), "dc:title"), "<mixed>");
    const Path undefined{false, "http://ns.adobe.com/pdf/1.3/", "Title", "", ""};
    EXPECT_TRUE(
        IsMixed(*MetaDataReadAccess(Of({Title({{"x-default", "A"}}), Title({{"x-default", "B"}})})), undefined));
}

TEST_F(Aggregate, WritesATreeThatTwoProvidersShareOnce) {
    const auto shared = Source(Bag({"x"}));
    const auto alone = std::make_shared<AggregateProvider>(std::vector<sp<MetaDataProvider>>{shared});
    const auto other = Source("<dc:creator><rdf:Seq><rdf:li>b</rdf:li></rdf:Seq></dc:creator>");
    const auto aggregate =
        std::make_shared<AggregateProvider>(std::vector<sp<MetaDataProvider>>{shared, shared, alone, other});
    {
        MetaDataUpdateAccess access(aggregate);
        EXPECT_TRUE(SetValue(*access, At("dc:creator[2]"), "n"));
        access.AddChange(At("dc:creator"));
    }
    EXPECT_EQ(Shown(shared, "dc:creator"), "n");
    EXPECT_EQ(Shown(other, "dc:creator"), "b; n");
    EXPECT_EQ(shared->mWrites.size(), 2U) << "by itself, and through the aggregate of it alone";
}

TEST_F(Aggregate, KeepsQualifiersOfEachSource) {
    const auto qualified = [](const char* value, const char* qualifier) {
        return std::string("<dc:source rdf:parseType='Resource'><rdf:value>") + value + "</rdf:value><xmp:Label>" +
               qualifier + "</xmp:Label></dc:source>";
    };
    const auto aggregate = Of({qualified("a", "1"), qualified("b", "2"), "<dc:source>c</dc:source>"});
    Edit(aggregate, "dc:source", "n");
    const auto qualifier = [&](std::size_t source) {
        std::string text = "<none>";
        const Path path{false, At("dc:source").mNamespace, "dc:source/?xmp:Label", "", ""};
        GetRawStringValue(*MetaDataReadAccess(mSources[source]), path, text);
        return text;
    };
    EXPECT_THAT(InSources("dc:source"), ElementsAre("n", "n", "n"));
    EXPECT_EQ(qualifier(0) + qualifier(1) + qualifier(2), "12<none>");
}

TEST_F(Aggregate, NeverSharesIdentifiersAndHistory) {
    const auto identified = [](const char* id) {
        return std::string("<xmpMM:DocumentID>") + id + "</xmpMM:DocumentID>";
    };
    const auto aggregate = Of({identified("one"), identified("two")});
    Edit(aggregate, "xmpMM:DocumentID", "shared");
    EXPECT_THAT(InSources("xmpMM:DocumentID"), ElementsAre("one", "two"));
    EXPECT_THAT(mSources[0]->mWrites, IsEmpty());
    for (const auto& source : mSources) {
        source->mOwnChangeList = false;
    }
    Edit(aggregate, "dc:source", "s");
    EXPECT_THAT(InSources("xmpMM:DocumentID"), ElementsAre("one", "two"));
    EXPECT_NE(InSources("xmpMM:InstanceID")[0], InSources("xmpMM:InstanceID")[1]);
    EXPECT_THAT(InSources("xmpMM:History[1]/stEvt:changed"), ElementsAre("/metadata/dc/source", "/metadata/dc/source"));
}

TEST_F(Aggregate, LeavesOutWhoMayNotWriteOneOfThePaths) {
    const auto aggregate = Of({"", ""});
    mSources[1]->mReadOnlyNamespaces = {At("xmp:Label").mNamespace};
    EXPECT_TRUE(aggregate->QueryPathStatus(At("xmp:Label"), kPathWritable)) << "one is enough";
    {
        MetaDataUpdateAccess access(aggregate);
        for (const char* expression : {"dc:source", "xmp:Label"}) {
            SetValue(*access, At(expression), "n");
            access.AddChange(At(expression));
        }
        EXPECT_EQ(access.Commit().mFailures.at(0).mStatus, kFileStatus_ReadOnly);
    }
    EXPECT_THAT(InSources("dc:source"), ElementsAre("n", "<none>"));
    EXPECT_THAT(mSources[1]->mWrites, IsEmpty());
    mSources[0]->mReadOnlyNamespaces = mSources[1]->mReadOnlyNamespaces;
    EXPECT_FALSE(aggregate->QueryPathStatus(At("xmp:Label"), kPathWritable));
    EXPECT_FALSE(std::make_shared<AggregateProvider>()->QueryPathStatus(At("xmp:Label"), kPathReadable));
}

TEST_F(Aggregate, FollowsItsSources) {
    const auto aggregate = Of({"<dc:source>a</dc:source>", "<dc:source>b</dc:source>"});
    std::vector<XMPMetaHandle> told;
    const auto callback = Callback([&](XMPMetaHandle tree) { told.push_back(tree); });
    aggregate->NotifyWhenMetaDataChanged(callback);
    Load("<dc:source>a</dc:source>");
    mSources[1]->ResetMetaData(Tree(), true);
    EXPECT_EQ(Shown(aggregate, "dc:source"), "a");
    mSources[1]->ResetMetaData(nullptr, true);
    EXPECT_EQ(Shown(aggregate, "dc:source"), "a") << "a source without a tree says nothing";
    aggregate->AddProvider(nullptr, true);
    aggregate->AddProvider(Source("<dc:source>c</dc:source>"), true);
    EXPECT_EQ(Shown(aggregate, "dc:source"), "<mixed>");
    aggregate->ResetProviders();
    EXPECT_EQ(*MetaDataReadAccess(aggregate), nullptr);
    mSources[0]->ResetToEmptyMetaData(true);
    EXPECT_EQ(told.size(), 4U);
    EXPECT_EQ(told.back(), nullptr);
}

TEST_F(Aggregate, OfAggregatesPassesMarksAndEditsThrough) {
    const auto inner =
        Of({Bag({"x"}) + "<dc:source>a</dc:source><dc:format>f</dc:format>" + Title({{"x-default", "A"}, {"de", "a"}}),
            Bag({"y"}) + "<dc:source>b</dc:source>" + Title({{"x-default", "B"}, {"fr", "b"}})});
    const auto third = Source("<dc:source>a</dc:source>" + Title({{"x-default", "C"}}));
    const auto outer = std::make_shared<AggregateProvider>(std::vector<sp<MetaDataProvider>>{inner, third});
    EXPECT_EQ(Shown(outer, "dc:source"), "<mixed>") << "the first of the inner ones has what the third has";
    {
        MetaDataUpdateAccess access(outer);
        SetValue(*access, At("dc:title"), "T");
        AddArrayItem(*access, At("dc:subject"), 1);
        SetValue(*access, At("dc:subject[2]"), "n");
        DeleteValue(*access, At("dc:format"));
        for (const char* expression : {"dc:title", "dc:subject", "dc:format"}) {
            access.AddChange(At(expression));
        }
    }
    mSources.push_back(third);
    EXPECT_THAT(InSources("dc:title"), ElementsAre("T", "T", "T"));
    EXPECT_THAT(InSources("dc:subject"), ElementsAre("x; n", "y; n", "n"));
    EXPECT_THAT(InSources("dc:format"), ElementsAre("<none>", "<none>", "<none>"));
    EXPECT_THAT(InSources("dc:source"), ElementsAre("a", "b", "a"));
    EXPECT_THAT(GetLanguages(*MetaDataReadAccess(mSources[1]), At("dc:title")),
                ElementsAre(Pair("fr", "b"), Pair("x-default", "T")));
}

TEST_F(Aggregate, EditsOfManyPartsTakeNoLongerThanTheyMust) {
    const auto editParts = [this](int parts) {
        const auto texts = [parts](const char* text) {
            std::vector<std::pair<std::string, std::string>> all = {{"x-default", text}};
            for (int i = 0; i < parts; ++i) {
                all.emplace_back("x-" + std::to_string(i), text);
            }
            return Title(all);
        };
        const auto aggregate = Of({texts("a"), texts("b")});
        mSources[1]->mOwnChangeList = false;
        {
            MetaDataUpdateAccess access(aggregate);
            SetLanguage(*access, At("dc:title"), "x-9", "alone");
            Load(texts("c"));
            EXPECT_TRUE(ApplyTemplate(*access, Tree(), kTemplateImport_Replace));
            for (int i = 0; i < 20 * parts; ++i) {
                access.AddChange(CreatePathFromArrayItem(At("dc:title"), i + 1));
            }
        }
        EXPECT_EQ(GetLanguages(*MetaDataReadAccess(mSources[1]), At("dc:title")).size(),
                  static_cast<std::size_t>(parts) + 1);
        EXPECT_THAT(InSources("dc:title"), ElementsAre("c", "c"));
    };
    EXPECT_LT(support::GrowthByFour(500, editParts), support::kLinearGrowth);
}

TEST_F(Aggregate, FindsDynamicSchemas) {
    const UTF8String tides = MakeDynamicSchemaNamespace("tides");
    const auto dynamic = [](const UTF8String& namespaceURI, const std::string& body) {
        return ParseXMPMeta(
            "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>"
            "<rdf:Description rdf:about='' xmlns:t='" +
            namespaceURI + "'>" + body + "</rdf:Description></rdf:RDF></x:xmpmeta>");
    };
    const auto aggregate = Of({"<dc:source>a</dc:source>", ""});
    mSources[0]->ResetMetaData(dynamic(tides, "<t:high>3</t:high>").get(), true);
    mSources[1]->ResetMetaData(
        dynamic(tides, "<t:low><rdf:Seq><rdf:li>1</rdf:li></rdf:Seq></t:low><t:high>4</t:high>").get(), true);
    ASSERT_TRUE(aggregate->DoesDynamicNamespaceExist(tides));
    EXPECT_FALSE(aggregate->DoesDynamicNamespaceExist(At("dc:source").mNamespace));
    const sp<SchemaDefinition> schema = NamespaceDefinition(tides);
    ASSERT_TRUE(schema) << "registered as well";
    EXPECT_TRUE(schema->mDynamic);
    EXPECT_EQ(schema->mPrefix, "t");
    EXPECT_EQ(schema->mLabel, u"t");
    EXPECT_EQ(schema->mDescriptionZString, zephcore::UTF8to16(tides));

    std::vector<sp<PropertyDefinition>> properties = {nullptr};
    aggregate->GetAllPathsForDynamicSchema(tides, properties);
    std::vector<std::string> names;
    for (const auto& property : properties) {
        names.push_back(property->mName + ":" + property->mType.value_or(""));
    }
    EXPECT_THAT(names, ElementsAre("high:text", "low:text", "low[1]:text"));
}

}  // namespace
}  // namespace zephmetadata
