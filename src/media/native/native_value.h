#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zephmetadata::media {

enum class ValueForm { kSimple, kBag, kSeq, kLangAlt, kStruct };

/// One part of a value: the text, and what it is called within the property.
struct NativeItem {
    /// Of a structure the field with its prefix ("exif:Fired"), of an array in it each item with its number from 1 on
    /// ("exif:Values[1]"); of an alternative the language.
    std::string mName;
    std::string mText;  ///< UTF-8, in the form that XMP gives it

    friend bool operator==(const NativeItem&, const NativeItem&) = default;
};

/// What native metadata says of one XMP property.
struct NativeValue {
    std::string_view mNamespace;  ///< of a table row or another constant
    std::string_view mProperty;   ///< the local name
    ValueForm mForm = ValueForm::kSimple;
    std::vector<NativeItem> mItems;  ///< exactly one for a simple value

    friend bool operator==(const NativeValue&, const NativeValue&) = default;
};

}  // namespace zephmetadata::media
