#pragma once

#include "zephmetadata/views.h"

namespace zephmetadata {

/// Registers a view; false for a null one, and for one whose name is taken, which is reported with @p source as
/// context.
bool AddViewDefinition(sp<ViewDefinition> view, const UTF16String& source);
/// Registers the views of the library's own documents.
void LoadBuiltInViews();
/// Cost: linear in all views.
void RemoveViewDefinitions(const std::vector<sp<ViewDefinition>>& views);
void ClearViewDefinitions();

}  // namespace zephmetadata
