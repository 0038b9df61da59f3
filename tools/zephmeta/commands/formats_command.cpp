#include <algorithm>
#include <array>
#include <iostream>

#include "commands/commands.h"
#include "console.h"
#include "json.h"
#include "zephmetadata/media.h"

namespace zephmeta {

namespace {

using zephmetadata::MediaFormat;

constexpr auto kKinds = std::to_array<std::pair<const char*, bool MediaFormat::Kinds::*>>({
    {"XMP", &MediaFormat::Kinds::mXMP},
    {"Exif", &MediaFormat::Kinds::mExif},
    {"IPTC-IIM", &MediaFormat::Kinds::mIIM},
    {"own fields", &MediaFormat::Kinds::mFields},
});

std::vector<std::string> Names(const MediaFormat::Kinds& kinds) {
    std::vector<std::string> names;
    for (const auto& [name, member] : kKinds) {
        if (kinds.*member) {
            names.emplace_back(name);
        }
    }
    return names;
}

std::string Joined(const std::vector<std::string>& texts, const char* separator, const char* none) {
    std::string joined;
    for (const std::string& text : texts) {
        joined += (joined.empty() ? "" : separator) + text;
    }
    return joined.empty() ? none : joined;
}

Json ToJson(const MediaFormat& format) {
    return {{"name", format.mName},
            {"extensions", format.mExtensions},
            {"reads", Names(format.mReads)},
            {"writes", Names(format.mWrites)},
            {"note", format.mNote}};
}

using Line = std::array<std::string, 4>;

Line ToLine(const MediaFormat& format) {
    return {format.mName, Joined(Names(format.mReads), ", ", "-"), Joined(Names(format.mWrites), ", ", "sidecar"),
            format.mNote};
}

void PrintTable(const std::vector<MediaFormat>& formats) {
    std::vector<Line> lines = {{"FORMAT", "READ", "WRITTEN", "NOTE"}};
    std::transform(formats.begin(), formats.end(), std::back_inserter(lines), &ToLine);
    std::array<std::size_t, 3> widths{};
    for (const Line& line : lines) {
        for (std::size_t i = 0; i < widths.size(); ++i) {
            widths[i] = std::max(widths[i], Columns(line[i]));
        }
    }
    for (const Line& line : lines) {
        std::string text;
        for (std::size_t i = 0; i < widths.size(); ++i) {
            text += Padded(line[i], widths[i]) + "  ";
        }
        text += line.back();
        std::cout << text.substr(0, text.find_last_not_of(' ') + 1) << '\n';
    }
}

}  // namespace

int ShowFormats(bool json) {
    const std::vector<MediaFormat> formats = zephmetadata::MediaFormats();
    if (!json) {
        PrintTable(formats);
        return 0;
    }
    Json list = Json::array();
    for (const MediaFormat& format : formats) {
        list.push_back(ToJson(format));
    }
    std::cout << JsonLine(list) << '\n';
    return 0;
}

}  // namespace zephmeta
