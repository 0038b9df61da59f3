#pragma once

namespace zephmetadata {

/// The table of what stands in for internal properties that are absent lives between these two.
void FillConstructedValues();
void ClearConstructedValues();

}  // namespace zephmetadata
