#include "values/formatting/constructors.h"

#include <utility>

#include "zephmetadata/definitions.h"

namespace zephmetadata {

namespace {

Path At(StandardSchema schema, const UTF8String& property) {
    return PathForSchemaNameAndPropertyName(StandardSchemaNamespace(schema), property);
}

/// Whether a read that may find nothing went well; a difference between sources and a missing definition are handed on.
bool IsAcceptable(GetValueResult own, GetValueResult* result) {
    if (own != kGetValueResult_Mixed && own != kGetValueResult_NoDefinition) {
        return true;
    }
    if (result != nullptr) {
        *result = own;
    }
    return false;
}

/// Whether the image is stored on its side (TIFF 6.0, Orientation 5 to 8); absent when that cannot be told.
std::optional<bool> IsOnItsSide(XMPMetaHandle tree, GetValueResult* result) {
    GetValueResult own = kGetValueResult_NoValue;
    int orientation = 0;
    GetValue(tree, At(kStandardSchema_TIFF, "Orientation"), orientation, &own);
    return IsAcceptable(own, result) ? std::optional(orientation >= 5 && orientation <= 8) : std::nullopt;
}

bool ReadPair(XMPMetaHandle tree, const Path& first, const Path& second, std::pair<UTF8String, UTF8String>& pair,
              GetValueResult& result) {
    return GetValue(tree, first, pair.first, &result) && GetValue(tree, second, pair.second, &result);
}

UTF8String Product(const std::pair<UTF8String, UTF8String>& pair) {
    return pair.first + " x " + pair.second;
}

bool ImageSize(XMPMetaHandle tree, UTF8String& value, GetValueResult* result) {
    std::pair<UTF8String, UTF8String> size;
    GetValueResult own = kGetValueResult_NoValue;
    GetValueResult& used = result != nullptr ? *result : own;
    if (!ReadPair(tree, At(kStandardSchema_EXIF, "PixelXDimension"), At(kStandardSchema_EXIF, "PixelYDimension"), size,
                  used) &&
        (used == kGetValueResult_Mixed || !ReadPair(tree, At(kStandardSchema_TIFF, "ImageWidth"),
                                                    At(kStandardSchema_TIFF, "ImageLength"), size, used))) {
        return false;  // where sources differ, what stands behind is not what each would show
    }
    const std::optional<bool> onItsSide = IsOnItsSide(tree, result);
    if (!onItsSide) {
        return false;
    }
    if (*onItsSide) {
        std::swap(size.first, size.second);
    }
    value = Product(size);
    return true;
}

bool ImageResolution(XMPMetaHandle tree, UTF8String& value, GetValueResult* result) {
    std::pair<UTF8String, UTF8String> resolution;
    if (!GetValue(tree, At(kStandardSchema_TIFF, "XResolution"), resolution.first, result)) {
        return false;
    }
    GetValueResult own = kGetValueResult_NoValue;
    GetValue(tree, At(kStandardSchema_TIFF, "YResolution"), resolution.second, &own);
    if (!IsAcceptable(own, result)) {
        return false;
    }
    const std::optional<bool> onItsSide = IsOnItsSide(tree, result);
    if (!onItsSide) {
        return false;
    }
    if (*onItsSide) {
        std::swap(resolution.first, resolution.second);
    }
    value = resolution.first == resolution.second ? resolution.first : Product(resolution);
    return true;
}

bool ShutterSpeed(XMPMetaHandle tree, UTF8String& value, GetValueResult* result) {
    GetValueResult own = kGetValueResult_NoValue;
    GetValueResult* const used = result != nullptr ? result : &own;
    return GetValue(tree, At(kStandardSchema_EXIF, "ShutterSpeedValue"), value, used) ||
           (*used != kGetValueResult_Mixed && GetValue(tree, At(kStandardSchema_EXIF, "ExposureTime"), value, used));
}

/// The kinds of sensitivity that stand in for a speed over 65535 (Exif 2.32, tag 34864).
const char* SensitivityPrefix(XMPMetaHandle tree) {
    int type = 0;
    GetValue(tree, At(kStandardSchema_EXIFEX, "SensitivityType"), type);
    switch (type) {
        case 2:
            return "REI ";
        case 1:
        case 4:
            return "SOS ";
        default:
            return "ISO ";
    }
}

bool PhotographicSensitivity(XMPMetaHandle tree, UTF8String& value, GetValueResult* result) {
    constexpr int kBeyondRange = 65535;
    GetValueResult own = kGetValueResult_NoValue;
    GetValueResult* const used = result != nullptr ? result : &own;
    int sensitivity = 0;
    GetValue(tree, At(kStandardSchema_EXIFEX, "PhotographicSensitivity"), sensitivity, used);
    if (*used == kGetValueResult_Mixed) {
        return false;
    }
    UTF8String speed;
    if (!GetValue(tree, CreatePathFromArrayItem(At(kStandardSchema_EXIF, "ISOSpeedRatings"), 1), speed, used)) {
        return false;
    }
    value = (sensitivity == kBeyondRange ? SensitivityPrefix(tree) : "ISO ") + speed;
    return true;
}

}  // namespace

std::map<Path, Constructor> AggregateConstructors() {
    const auto at = [](const char* property) {
        return PathForSchemaNameAndPropertyName(AggregateNamespaceURI, property);
    };
    return {{at("ImageSize"), ImageSize},
            {at("ImageResolution"), ImageResolution},
            {at("ShutterSpeed"), ShutterSpeed},
            {at("PhotographicSensitivity"), PhotographicSensitivity}};
}

}  // namespace zephmetadata
