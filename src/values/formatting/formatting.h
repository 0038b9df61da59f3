#pragma once

namespace zephmetadata {

/// The table of formatters of single properties lives between these two. The definitions have to be loaded.
void FillSpecialFormatters();
void ClearSpecialFormatters();

}  // namespace zephmetadata
