#pragma once

#include <cmath>
#include <string_view>

#include "xmp/tree/xmp_tree.h"
#include "zephmetadata/library.h"
#include "zephmetadata/values.h"

/// The two procedures that all typed reads and writes go through.
namespace zephmetadata {

/// Reports that the value at @p path is not what it should be.
void ReportInvalidData(ErrorKind kind, const Path& path);

/// The date in the form of ISO 8601, without the parts at the end that are 0; empty when a part before another is missing.
UTF8String DateText(const Date& date);

inline void SetResult(GetValueResult* result, GetValueResult value) {
    if (result != nullptr) {
        *result = value;
    }
}

/// Reads with @p getter, a function without arguments whose optional result is the value, absent where there is none.
/// Whatever goes wrong is reported; absent then too.
template <typename Getter>
auto ReadValue(XMPMetaHandle tree, const Path& path, GetValueResult* result, const Getter& getter)
    -> decltype(getter()) {
    SetResult(result, kGetValueResult_NoValue);
    if (tree == nullptr) {
        return std::nullopt;
    }
    try {
        if (toolkit::IsMixed(tree, path.mNamespace, path.mPathDescription)) {
            SetResult(result, kGetValueResult_Mixed);
            return std::nullopt;
        }
        auto value = getter();
        if (value) {
            SetResult(result, kGetValueResult_Success);
        }
        return value;
    } catch (...) {
        ReportInvalidData(ErrorKind::ErrorReadingXMP, path);
        return std::nullopt;
    }
}

inline bool IsWorthWriting(const UTF8String& value) {
    return !value.empty();
}
template <typename Number>
bool IsWorthWriting(Number /*value*/) {
    return true;
}

/// Whether a text came back as it was written, but for spaces, which joining and splitting may change.
bool CameBack(const UTF8String& written, const UTF8String& read);
inline bool CameBack(double written, double read) {
    return std::fabs(written - read) < 0.0001;
}
template <typename Number>
bool CameBack(Number written, Number read) {
    return written == read;
}

template <typename Value, typename Getter>
std::optional<Value> CurrentValue(const Getter& getter) {
    try {
        return getter();
    } catch (...) {
        return std::nullopt;  // what cannot be read is as good as missing
    }
}

/// Writes @p value with @p setter unless it is what @p getter reads already, and reads it back. True when it was
/// written. Whatever goes wrong is reported.
template <typename Value, typename Getter, typename Setter>
bool WriteValue(XMPMetaHandle tree, const Path& path, const Value& value, const Getter& getter, const Setter& setter) {
    if (tree == nullptr) {
        return false;
    }
    bool written = false;
    try {
        const std::optional<Value> current = CurrentValue<Value>(getter);
        const bool isMixed = toolkit::IsMixed(tree, path.mNamespace, path.mPathDescription);
        if (!isMixed && (current ? *current == value : !IsWorthWriting(value))) {
            return false;
        }
        setter(value);
        written = true;
        const std::optional<Value> readBack = getter();
        // A text without items leaves no array.
        if (readBack ? !CameBack(value, *readBack) : IsWorthWriting(value)) {
            ReportInvalidData(ErrorKind::ErrorWritingXMP, path);
        }
    } catch (...) {
        ReportInvalidData(ErrorKind::ErrorWritingXMP, path);
    }
    return written;
}

}  // namespace zephmetadata
