// Draws a panel, and draws it again after an edit: panel_host FILE VIEW [PATH VALUE]
//
// A view says what a panel shows. The host walks it once and draws; the provider tells when what is drawn is out of date.
#include <zephcore/localizer.h>
#include <zephcore/text.h>
#include <zephmetadata/zephmetadata.h>

#include <functional>
#include <iostream>
#include <string>

namespace {

/// A message or a label for people: escapes that stand for quotes and the like resolved, in UTF-8.
std::string Shown(const zephmetadata::UTF16String& text) {
    return zephcore::UTF16to8(zephcore::ResolveDisplayEscapes(text));
}

/// Draws on a terminal; a graphical host would make its widgets here.
class TextPanel : public zephmetadata::ViewBuilderInterface {
public:
    explicit TextPanel(zephmetadata::XMPMetaHandle tree) : mTree(tree) {}

    void BeginView(const zephmetadata::ViewHeader& header) override {
        std::cout << "== " << Shown(zephmetadata::LocalizedText(header.mLabel)) << " ==\n";
    }
    void AddViewItem(const zephmetadata::sp<zephmetadata::ViewItem>& item) override { Draw(*item, 0); }
    void EndView(zephmetadata::ViewDefinition& /*view*/) override { std::cout << "==\n"; }

private:
    void Draw(const zephmetadata::ViewItem& item, std::size_t depth) const {
        const std::string label = Shown(item.GetLabel());
        const zephmetadata::Path path = item.GetPath();
        std::string text;
        auto result = zephmetadata::kGetValueResult_NoValue;
        if (item.mWidgetName == "section") {
            std::cout << std::string(2 * depth, ' ') << label << '\n';
        } else if (GetValue(mTree, path, text, &result)) {
            std::cout << std::string(2 * depth, ' ') << label << ": " << text << '\n';
        } else if (result == zephmetadata::kGetValueResult_Mixed) {
            std::cout << std::string(2 * depth, ' ') << label << ": (different values)\n";
        }
        for (const auto& child : item.mChildItems) {
            Draw(*child, depth + 1);
        }
    }

    zephmetadata::XMPMetaHandle mTree;
};

int Run(const zephmetadata::sp<zephmetadata::MediaProvider>& photo, const char* viewName,
        const zephmetadata::ValueEdit* edit) {
    zephmetadata::LoadAllViewDefinitions();
    const auto view = zephmetadata::GetViewDefinitionForName("com.corvid.xmp.view." + std::string(viewName));
    if (!view) {
        std::cerr << viewName << ": no such view\n";
        return 1;
    }
    const auto repaint =
        std::make_shared<std::function<void(zephmetadata::XMPMetaHandle)>>([&view](zephmetadata::XMPMetaHandle tree) {
            TextPanel panel(tree);
            BuildView(view, panel);
        });
    // The tree is replaced when the file is read again, and edited in place by an edit.
    photo->NotifyWhenMetaDataChanged(repaint);
    photo->NotifyWhenMetaDataWritten(repaint);
    (*repaint)(*zephmetadata::MetaDataReadAccess(photo));
    if (edit == nullptr) {
        return 0;
    }
    const zephmetadata::EditReport report = ApplyEdits(photo, {*edit});
    if (report.IsRefused()) {
        std::cerr << Describe(report.mOutcomes.front()) << '\n';
    } else if (report.mStatus != zephmetadata::kFileStatus_Success) {
        std::cerr << "not written: " << Describe(zephmetadata::FileReport{report.mStatus, report.mDetail}) << '\n';
    }
    return report.IsRefused() || report.mStatus != zephmetadata::kFileStatus_Success ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3 && argc != 5) {
        std::cerr << "usage: panel_host FILE VIEW [PATH VALUE]\n";
        return 2;
    }
    const zephmetadata::Library library;
    const auto photo = zephmetadata::OpenMedia(zephcore::PathFromNative(argv[1]));
    if (argc == 3) {
        return Run(photo, argv[2], nullptr);
    }
    zephmetadata::ValueEdit edit;
    edit.mPath = zephmetadata::PathForExpression(argv[3]);
    edit.mValue = argv[4];
    return Run(photo, argv[2], &edit);
}
