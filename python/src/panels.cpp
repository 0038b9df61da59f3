#include "panels.h"

#include <sstream>

#include "panel/sheet.h"
#include "zephmetadata/xmp_meta.h"

namespace zephpython {

using namespace zephmetadata;

namespace {

/// A tree to be shown, edits among it that are not written yet.
class ShownTree : public TypicalProviderImpl {
public:
    explicit ShownTree(XMPMetaHandle tree) : TypicalProviderImpl(tree) {}

private:
    void WriteChanges(const std::vector<Path>& /*changes*/) override {}
};

std::string Printed(zephmeta::SheetForm form, const std::string& view, const zephmeta::SheetSubject& subject) {
    zephmeta::SheetWish wish;
    wish.mView = view;
    wish.mForm = form;
    std::ostringstream out;
    zephmeta::PrintSheet(zephmeta::MakeSheet(wish, {subject}), {}, out);
    return out.str();
}

}  // namespace

std::optional<PanelForms> PanelOf(const std::string& view, const std::string& name, const XMPMetaPtr& tree) {
    using enum zephmeta::SheetForm;
    if (!zephmeta::HasView(view)) {
        return std::nullopt;
    }
    const XMPMetaPtr shown = tree ? tree : CreateXMPMeta();
    const zephmeta::SheetSubject subject = {name, std::make_shared<ShownTree>(shown.get())};
    return PanelForms{Printed(kText, view, subject), Printed(kPage, view, subject), Printed(kJson, view, subject)};
}

}  // namespace zephpython
