#pragma once

#include <cstdint>
#include <functional>

#include "xmp/core/toolkit.h"

namespace zephmetadata::toolkit {

// What ApplyTemplate does; may be combined. The values are those of the XMP toolkits' template operation.
inline constexpr std::uint32_t kTemplateReplaceExistingProperties = 0x02;  ///< replaces, and adds what is missing
inline constexpr std::uint32_t kTemplateAddNewProperties = 0x08;           ///< adds what is missing alone
inline constexpr std::uint32_t kTemplateClearUnnamedProperties = 0x10;     ///< removes what the template lacks

/// Whether the top-level property @p name (without prefix) of @p schema is internal.
using IsInternalProperty = std::function<bool(const UTF8String& schema, const UTF8String& name)>;

/// Merges @p source, the template, into @p destination, one top-level property at a time: structures, arrays and
/// alternatives are taken, or left, as a whole; an empty value is a value. Internal properties of either tree are left
/// alone. A mixed property of the destination is there, whether the tree holds a value of it or not; a property of the
/// template that is mixed, or holds what is, has no value to apply, and the destination keeps its own.
void ApplyTemplate(XMPMetaHandle destination, XMPMetaHandle source, std::uint32_t flags,
                   const IsInternalProperty& isInternal);

}  // namespace zephmetadata::toolkit
