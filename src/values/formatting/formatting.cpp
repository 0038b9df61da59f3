#include "values/formatting/formatting.h"

#include <array>
#include <map>
#include <string_view>
#include <utility>

#include "values/formatting/camera_values.h"
#include "zephmetadata/definitions.h"
#include "zephmetadata/formatting.h"

namespace zephmetadata {

namespace {

using Format = UTF8String (*)(const UTF8String&);

constexpr const char* kExifNamespace = "http://ns.adobe.com/exif/1.0/";
constexpr const char* kAuxNamespace = "http://ns.adobe.com/exif/1.0/aux/";

struct SpecialRow {
    const char* mNamespace;
    const char* mProperty;
    Format mFormat;
};

constexpr auto kSpecialFormatters = std::to_array<SpecialRow>({
    {kExifNamespace, "ExposureTime", FormatExposureTime},
    {kExifNamespace, "ShutterSpeedValue", FormatShutterSpeed},
    {kExifNamespace, "FNumber", FormatFNumber},
    {kExifNamespace, "ApertureValue", FormatAperture},
    {kExifNamespace, "MaxApertureValue", FormatAperture},
    {kExifNamespace, "SubjectDistance", FormatDistance},
    {kAuxNamespace, "ApproximateFocusDistance", FormatDistance},
});

UTF8String FormatRationalValue(const UTF8String& value) {
    constexpr std::uint64_t kDigits = 2;
    return FormatRational(value, kDigits);
}

constexpr auto kFormattersByType = std::to_array<std::pair<std::string_view, Format>>(
    {{"date", FormatDate}, {"rational", FormatRationalValue}, {"gpscoordinate", FormatGPSCoordinate}});

std::map<Path, Format>& SpecialFormatters() {
    static std::map<Path, Format> formatters;
    return formatters;
}

/// Null for none. Shared, for a formatter may replace itself while it runs.
sp<ValueFormatter>& HostFormatter() {
    static sp<ValueFormatter> formatter;
    return formatter;
}

/// How the values at @p path are shown; null when they are shown as they are stored.
Format FormatFor(const Path& path) {
    const auto special = SpecialFormatters().find(path);
    if (special != SpecialFormatters().end()) {
        return special->second;
    }
    const sp<EntryDefinition> entry = PathEntryDefinition(path);
    for (const auto& [type, format] : kFormattersByType) {
        if (entry && entry->mType == type) {
            return format;
        }
    }
    return nullptr;
}

}  // namespace

void FillSpecialFormatters() {
    for (const SpecialRow& row : kSpecialFormatters) {
        SpecialFormatters().emplace(PathForSchemaNameAndPropertyName(row.mNamespace, row.mProperty), row.mFormat);
    }
}

void ClearSpecialFormatters() {
    SpecialFormatters().clear();
}

UTF8String FormatValue(XMPMetaHandle tree, const Path& path, const UTF8String& value) {
    if (const sp<ValueFormatter> running = HostFormatter()) {
        UTF8String text = (*running)(tree, path, value);
        if (!text.empty()) {
            return text;
        }
    }
    const Format format = FormatFor(path);
    return format != nullptr ? format(value) : UTF8String();
}

void RegisterValueFormatter(ValueFormatter formatter) {
    HostFormatter() = formatter ? std::make_shared<ValueFormatter>(std::move(formatter)) : nullptr;
}

ValueFormatter RegisteredValueFormatter() {
    return HostFormatter() ? *HostFormatter() : ValueFormatter();
}

}  // namespace zephmetadata
