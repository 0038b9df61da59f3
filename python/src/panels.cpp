#include "panels.h"

#include <sstream>

#include "panel/sheet.h"
#include "providers.h"
#include "zephmetadata/xmp_meta.h"

namespace zephpython {

using namespace zephmetadata;

namespace {

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
    const zephmeta::SheetSubject subject = {name, zephmeta::InMemory(tree ? tree : CreateXMPMeta())};
    return PanelForms{Printed(kText, view, subject), Printed(kPage, view, subject), Printed(kJson, view, subject)};
}

}  // namespace zephpython
