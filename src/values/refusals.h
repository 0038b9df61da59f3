#pragma once

#include "zephmetadata/edits.h"

namespace zephmetadata {

/// Why an edit is refused, if it is.
struct Refusal {
    EditRefusal mKind = EditRefusal::kEditRefusal_None;
    UTF16String mReason;

    bool IsNone() const { return mKind == EditRefusal::kEditRefusal_None; }
};

Refusal NoTree();
/// What only trying showed.
Refusal Cannot();
/// Of a number, a boolean or a date where there is no place for one.
Refusal NoPlace();

/// What makes no sense in any tree.
Refusal Consider(const ValueEdit& edit);
/// The same of a text that is to become the value at @p path, which has a definition.
Refusal ConsiderValue(const Path& path, const UTF8String& value);

EditOutcome Refused(Refusal why);

}  // namespace zephmetadata
