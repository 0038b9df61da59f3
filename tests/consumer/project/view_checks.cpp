#include <fstream>

#include "host.h"
#include "zephcore/files.h"
#include "zephcore/text.h"

using namespace zephmetadata;

namespace host {

namespace {

constexpr const char* kDocument =
    "<views xmlns='http://ns.zephmetadata.org/metadata/ui/1.0/' xmlns:dc='http://purl.org/dc/elements/1.1/'>"
    "<view name='org.example.view.notes' label='$$$/example/notes=Notes'>"
    "<section label='Words'><property name='dc:title' hint='Short'/><property name='dc:description'/></section>"
    "</view></views>";

/// Draws a view as lines of text.
class Lines : public ViewBuilderInterface {
public:
    void BeginView(const ViewHeader& header) override {
        mText += zephcore::UTF16to8(LocalizedText(header.mLabel)) + "\n";
    }
    void AddViewItem(const sp<ViewItem>& item) override {
        mText += zephcore::UTF16to8(item->GetLabel()) + "\n";
        for (const auto& child : item->mChildItems) {
            AddViewItem(child);
        }
    }
    void EndView(ViewDefinition& view) override { mText += view.mName + "\n"; }

    UTF8String mText;
};

int CheckDocuments(const std::string& folder) {
    const auto fromBuffer = ParseViewDefinitionsFromBuffer(kDocument, u"notes");
    const std::string path = folder + "/notes.xml";
    std::ofstream(path) << kDocument;
    const auto fromFile = ParseViewDefinitionsFromDocument(zephcore::PathFromNative(path));
    CHECK(fromBuffer.size() == 1 && fromFile.size() == 1);
    Lines lines;
    BuildView(fromFile.front(), lines);
    CHECK(lines.mText == "Notes\nWords\nTitle\nDescription\norg.example.view.notes\n");
    const sp<ViewItem> title = fromBuffer.front()->mItems.front()->mChildItems.front();
    CHECK(title->GetPath() == PathForExpression("dc:title") && !title->GetDescription().empty());
    CHECK(title->GetParameter("hint", "") == "Short");
    LoadAllViewDefinitions();
    const sp<ViewDefinition> camera = GetViewDefinitionForName("com.corvid.xmp.view.camera");
    int views = 0;
    bool hasCamera = false;
    for (const sp<ViewDefinition>& view : CommonViewDefinitions()) {
        ++views;
        hasCamera = hasCamera || view == camera;
    }
    CHECK(camera && hasCamera && views == 10);
    CHECK(RemoveViewDefinition(camera) && !RemoveViewDefinition(camera) && !GetViewDefinitionForName(camera->mName));
    CHECK(RegisterViewDefinition(camera, u"again") && !RegisterViewDefinition(camera, u"again"));
    ClearErrors();
    return 0;
}

int CheckItems() {
    ViewItem item(UTF8String("section"));
    item.AddItem(std::make_shared<ViewItem>(PathForExpression("dc:title")));
    item.AddItem(std::make_shared<ViewItem>(QualifiedName{"http://purl.org/dc/elements/1.1/", "title"}));
    item.SetParameter("lines", 3);
    item.SetParameter("wide", true);
    item.SetParameter("ratio", 1.5F);
    item.SetParameter("exact", 0.1);
    CHECK(item.GetParameter("lines", 0) == 3 && item.GetParameter("wide", false));
    CHECK(item.GetParameter("ratio", 0.0F) == 1.5F && item.GetParameter("exact", 0.0) == 0.1);
    ViewItem copy(item);
    ViewItem other;
    other = copy;
    ViewItem moved(std::move(copy));
    copy = std::move(other);
    CHECK(moved.mChildItems == item.mChildItems && copy.mChildItems == item.mChildItems);
    CHECK(GetParameter(sp<ViewItem>(), "lines", 7) == 7);
    return 0;
}

int CheckFormatting() {
    CHECK(FormatRational("1/3", 2) == "0.33" && FormatGPSCoordinate("45,30,15N") == "45\u00B0 30' 15\" N");
    CHECK(FormatDate("no date") == "no date");
    const XMPMetaPtr tree = CreateXMPMeta();
    const Path exposure = PathForExpression("exif:ExposureTime");
    CHECK(FormatValue(tree.get(), exposure, "1/250") == "1/250 sec");
    RegisterValueFormatter([](XMPMetaHandle, const Path&, UTF8String value) { return "<" + value + ">"; });
    CHECK(FormatValue(tree.get(), exposure, "1/250") == "<1/250>" && RegisteredValueFormatter());
    RegisterValueFormatter({});
    CHECK(!RegisteredValueFormatter());
    return 0;
}

}  // namespace

int CheckViews(const Arguments& arguments) {
    const Session session;
    return CheckDocuments(arguments.mFolder) | CheckItems() | CheckFormatting();
}

}  // namespace host
