#include "views/view_registry.h"

#include "support/library_test.h"

namespace zephmetadata {
namespace {

using ::testing::ElementsAre;

class ViewRegistry : public support::LibraryTest {
protected:
    static std::vector<std::string> Names() {
        std::vector<std::string> names;
        for (const sp<ViewDefinition>& view : CommonViewDefinitions()) {
            names.push_back(view->mName);
        }
        return names;
    }
    static sp<ViewDefinition> Named(const std::string& name, const std::string& label = "") {
        auto view = std::make_shared<ViewDefinition>();
        view->mName = name;
        view->mLabel = label;
        return view;
    }
};

TEST_F(ViewRegistry, LoadsTheBuiltInViewsOncePerStart) {
    EXPECT_TRUE(Names().empty()) << "the host decides when to load";
    LoadAllViewDefinitions();
    LoadAllViewDefinitions();
    const auto builtIn =
        ElementsAre("com.corvid.xmp.view.audio", "com.corvid.xmp.view.basic", "com.corvid.xmp.view.camera",
                    "com.corvid.xmp.view.dicom", "com.corvid.xmp.view.gps", "com.corvid.xmp.view.iptccore",
                    "com.corvid.xmp.view.iptcextension", "com.corvid.xmp.view.origin", "com.corvid.xmp.view.tessera",
                    "com.corvid.xmp.view.video");
    EXPECT_THAT(Names(), builtIn);
    EXPECT_FALSE(HasErrors());
    const sp<ViewDefinition> held = GetViewDefinitionForName("com.corvid.xmp.view.basic");
    ASSERT_TRUE(held);
    Terminate();
    EXPECT_TRUE(Names().empty());
    EXPECT_FALSE(GetViewDefinitionForName("com.corvid.xmp.view.basic"));
    EXPECT_EQ(held->mItems.size(), 16U) << "a view lives as long as it is held";
    Initialize();
    LoadAllViewDefinitions();
    EXPECT_THAT(Names(), builtIn);
}

TEST_F(ViewRegistry, KeepsTheFirstOfEachName) {
    EXPECT_FALSE(AddViewDefinition(nullptr, u"source"));
    EXPECT_FALSE(HasErrors());
    const auto first = Named("vue.\u00E9t\u00E9", "first");
    EXPECT_TRUE(AddViewDefinition(first, u"a.xml"));
    EXPECT_TRUE(AddViewDefinition(Named("Vue.\u00E9t\u00E9"), u"a.xml")) << "letter case counts";
    EXPECT_FALSE(AddViewDefinition(Named("vue.\u00E9t\u00E9", "second"), u"b.xml"));
    EXPECT_THAT(Records(), ElementsAre(Record{ErrorKind::ViewDefinitionRegistrationError,
                                              "Error registering view definition: View definition for "
                                              "#{quot}vue.\u00E9t\u00E9#{quot} already exists.",
                                              "b.xml"}));
    EXPECT_EQ(GetViewDefinitionForName("vue.\u00E9t\u00E9"), first);
    EXPECT_EQ(first->mLabel, "first");
    EXPECT_THAT(Names(), ElementsAre("vue.\u00E9t\u00E9", "Vue.\u00E9t\u00E9"));
    first->mName = "renamed";
    EXPECT_EQ(GetViewDefinitionForName("renamed"), first);
    EXPECT_TRUE(AddViewDefinition(Named("vue.\u00E9t\u00E9"), u"c.xml")) << "the name is free again";
    for (const char* name : {"vue", "vue.", "VUE.\u00E9t\u00E9", ""}) {
        EXPECT_FALSE(GetViewDefinitionForName(name)) << name;
    }
}

class Notes : public ViewBuilderInterface {
public:
    std::vector<std::string> mCalls;
    std::vector<sp<ViewItem>> mItems;
    ViewDefinition* mEnded = nullptr;
    sp<ViewDefinition>* mDropped = nullptr;  ///< the host's pointer to the view

    void BeginView(const ViewHeader& header) override {
        if (mDropped != nullptr) {
            (*mDropped)->mItems.clear();
            mDropped->reset();
        }
        mCalls.push_back("begin " + header.mName + "|" + header.mLabel + "|" + header.mDescription + "|" +
                         std::to_string(header.mItemCount) + (header.mPruneEmptyProperties ? "|prune" : ""));
    }
    void EndView(ViewDefinition& view) override {
        mCalls.push_back("end");
        mEnded = &view;
    }
    void AddViewItem(const sp<ViewItem>& item) override {
        if (item->mWidgetName == "bad") {
            throw 1;
        }
        mCalls.push_back(item->mWidgetName);
        mItems.push_back(item);
    }
};

TEST_F(ViewRegistry, ViewsAreBuiltItemByItem) {
    auto view = Named("v", "$$$/v=Label");
    view->mDescription = "What";
    view->mPruneEmptyProperties = true;
    for (const char* widget : {"a", "b", "c"}) {
        view->mItems.push_back(std::make_shared<ViewItem>(UTF8String(widget)));
    }
    view->mItems[0]->AddItem(std::make_shared<ViewItem>(UTF8String("below")));
    Notes notes;
    BuildView(nullptr, notes);
    EXPECT_TRUE(notes.mCalls.empty());
    BuildView(view, notes);
    EXPECT_THAT(notes.mCalls, ElementsAre("begin v|$$$/v=Label|What|3|prune", "a", "b", "c", "end"));
    EXPECT_EQ(notes.mItems, view->mItems);
    EXPECT_EQ(notes.mEnded, view.get());
    notes.mItems[1]->mWidgetName = "bad";
    EXPECT_THROW(BuildView(view, notes), int);
    notes.mItems[1]->mWidgetName = "b";
    notes.mCalls.clear();
    notes.mDropped = &view;
    BuildView(view, notes);
    EXPECT_THAT(notes.mCalls, ElementsAre("begin v|$$$/v=Label|What|3|prune", "a", "b", "c", "end"));
}

}  // namespace
}  // namespace zephmetadata
