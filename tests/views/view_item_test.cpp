#include "support/library_test.h"
#include "zephcore/localizer.h"
#include "zephmetadata/views.h"

namespace zephmetadata {
namespace {

class ViewItems : public support::LibraryTest {
protected:
    template <typename T>
    static T FromText(const UTF8String& text) {
        ViewItem item;
        item.mParameters["key"] = text;
        return item.GetParameter("key", T());
    }
    template <typename T>
    static UTF8String ToText(const T& value) {
        ViewItem item;
        item.SetParameter("key", value);
        return item.mParameters.at("key");
    }
};

TEST_F(ViewItems, KeepTypedParametersAsText) {
    EXPECT_EQ(ToText(123) + ToText(-123) + ToText(0), "123-1230");
    EXPECT_EQ(ToText(true) + ToText(false), "truefalse");
    EXPECT_EQ(ToText('c') + ToText("text") + ToText(UTF8String("more")), "ctextmore");
    EXPECT_EQ(ToText(3.14F), "3.1400001049");
    EXPECT_EQ(ToText(3.14), "3.1400000000000001");
    EXPECT_EQ(ToText(0.5F) + " " + ToText(1e300), "0.5 1.0000000000000001e+300");
    EXPECT_EQ(FromText<float>(ToText(3.14F)), 3.14F);
    EXPECT_EQ(FromText<double>(ToText(3.14)), 3.14);
    EXPECT_EQ(FromText<char>("xyz"), 'x');

    struct IntRow {
        const char* mText;
        int mValue;
    };
    for (const IntRow& row : {IntRow{"123", 123}, IntRow{"-123", -123}, IntRow{" \t+7", 7}, IntRow{"12px", 12},
                              IntRow{"0x10", 0}, IntRow{"+-5", 0}, IntRow{"px", 0}, IntRow{"", 0}}) {
        EXPECT_EQ(FromText<int>(row.mText), row.mValue) << row.mText;
    }
    for (const char* text : {"True", "1", "yes", " true", "true ", ""}) {
        EXPECT_FALSE(FromText<bool>(text)) << text;
    }
    EXPECT_TRUE(FromText<bool>("true"));
    EXPECT_EQ(FromText<double>(" -2.5e1x"), -25);
    EXPECT_EQ(FromText<double>("wide"), 0);
}

TEST_F(ViewItems, ReplaceParametersAndFallBack) {
    const auto item = std::make_shared<ViewItem>();
    item->SetParameter("\u0915", 1);
    item->SetParameter("\u0915", "\u0916");
    EXPECT_EQ(item->mParameters, (std::map<UTF8String, UTF8String>{{"\u0915", "\u0916"}}));
    EXPECT_EQ(item->GetParameter("\u0915", "other"), "\u0916");
    EXPECT_EQ(item->GetParameter("missing", "other"), "other");
    EXPECT_EQ(item->GetParameter("missing", 7), 7);
    EXPECT_EQ(GetParameter(item, "missing", true), true);
    EXPECT_EQ(GetParameter(item, "\u0915", UTF8String()), "\u0916");
    EXPECT_EQ(GetParameter(sp<ViewItem>(), "\u0915", 7), 7);
}

TEST_F(ViewItems, BorrowTheTextsOfTheirDefinition) {
    const Path path = PathForExpression("exif:ExifVersion");
    ViewItem item(path);
    EXPECT_EQ(item.GetPath(), path);
    EXPECT_EQ(item.GetLabel(), u"Exif Version");
    EXPECT_EQ(item.GetDescription(), PathEntryDefinition(path)->mDescription);
    EXPECT_NE(item.GetDescription(), u"");
    item.mLabel = "$$$/my/choice/label/zstring=My Choice Label";
    item.mDescription = "plain = text";
    EXPECT_EQ(item.GetLabel(), u"My Choice Label");
    EXPECT_EQ(item.GetDescription(), u"plain = text");
    zephcore::Localizer::Get().LoadBuffer("\"$$$/my/choice/label/zstring=Mine\"\n");
    EXPECT_EQ(item.GetLabel(), u"Mine") << "texts are looked up at every call";
    const ViewItem bare;
    EXPECT_EQ(bare.GetLabel() + bare.GetDescription(), u"");
    EXPECT_EQ(ViewItem(QualifiedName{path.mNamespace, "ExifVersion"}).GetLabel(), u"");
    EXPECT_EQ(ViewItem(UTF8String("section")).mWidgetName, "section");
}

TEST_F(ViewItems, ShareTheirChildrenWithCopies) {
    ViewItem item(UTF8String("section"));
    const auto child = std::make_shared<ViewItem>();
    for (int i = 0; i < 3; ++i) {
        item.AddItem(child);
    }
    item.mChoices.push_back(std::make_shared<ChoiceDefinition>());
    const ViewItem copy = item;
    child->mLabel = "changed";
    ASSERT_EQ(copy.mChildItems.size(), 3U);
    for (const auto& shared : copy.mChildItems) {
        EXPECT_EQ(shared->mLabel, "changed");
    }
    EXPECT_EQ(copy.mChoices, item.mChoices);
    item.SetParameter("own", 1);
    EXPECT_TRUE(copy.mParameters.empty());
    const ViewItem moved = std::move(item);
    EXPECT_EQ(moved.mWidgetName, "section");
    EXPECT_EQ(child.use_count(), 7) << "one here, three in each of two items";
}

TEST_F(ViewItems, StartEmptyInViewsToo) {
    const ViewDefinition view;
    EXPECT_EQ(view.mName + view.mLabel + view.mDescription, "");
    EXPECT_EQ(view.mItems.capacity(), 0U);
    EXPECT_FALSE(view.mPruneEmptyProperties || view.mStaticPage);
}

}  // namespace
}  // namespace zephmetadata
