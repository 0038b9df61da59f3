#pragma once

#include <optional>
#include <string>

#include "zephmetadata/types.h"

namespace zephpython {

/// One panel in each of its forms.
struct PanelForms {
    std::string mText;
    std::string mPage;  ///< HTML that needs nothing but itself
    std::string mJson;
};

/// What the view that is named, or "overview", shows of a tree, which may be null. The picture of the page is read from the
/// file @p name, which may be empty. Absent when there is no such view. Needs no Python.
std::optional<PanelForms> PanelOf(const std::string& view, const std::string& name,
                                  const zephmetadata::XMPMetaPtr& tree);

}  // namespace zephpython
