#include <algorithm>
#include <array>

#include "frame/errors.h"
#include "xmp/tree/xmp_template.h"
#include "zephcore/localizer.h"
#include "zephmetadata/values.h"

namespace zephmetadata {

namespace {

constexpr std::u16string_view kInvalidTemplate =
    u"$$$/zephmetadata/ErrorInXMPData/InvalidTemplate=template cannot be applied.";

struct ModeRow {
    TemplateImportOptions mMode;
    std::uint32_t mFlags;
};

constexpr auto kModes = std::to_array<ModeRow>({
    {kTemplateImport_ClearAndReplace,
     toolkit::kTemplateClearUnnamedProperties | toolkit::kTemplateReplaceExistingProperties},
    {kTemplateImport_Replace, toolkit::kTemplateReplaceExistingProperties},
    {kTemplateImport_Add, toolkit::kTemplateAddNewProperties},
});

std::uint32_t TemplateFlags(TemplateImportOptions mode) {
    const auto* const row =
        std::find_if(kModes.begin(), kModes.end(), [&](const ModeRow& candidate) { return candidate.mMode == mode; });
    return row == kModes.end() ? 0 : row->mFlags;
}

bool IsInternal(const UTF8String& namespaceURI, const UTF8String& name) {
    return PathForSchemaNameAndPropertyName(namespaceURI, name).mInternal;
}

}  // namespace

bool ApplyTemplate(XMPMetaHandle destination, XMPMetaHandle templateTree, TemplateImportOptions mode) {
    if (destination == nullptr || templateTree == nullptr) {
        return false;
    }
    try {
        toolkit::ApplyTemplate(destination, templateTree, TemplateFlags(mode), IsInternal);
        return true;
    } catch (const XMPError&) {
        SendError(ErrorKind::ErrorWritingXMP, zephcore::ZString(kInvalidTemplate), {});
        return false;
    }
}

}  // namespace zephmetadata
