#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "media/bytes.h"
#include "media/containers/container.h"
#include "media/native/iim/image_resources.h"

/// Small files made by hand, and edits of them.
namespace zephmetadata::media::testing_support {

inline std::string Join(const std::vector<std::string>& parts) {
    std::string bytes;
    for (const std::string& part : parts) {
        bytes += part;
    }
    return bytes;
}

inline std::string Segment(int marker, std::string_view data) {
    const std::string head = {'\xFF', static_cast<char>(marker)};
    return (head + NumberBytes(data.size() + 2, 2)).append(data);
}
inline std::string JFIF() {
    return Segment(0xE0, std::string_view("JFIF\0\1\1\0\0\1\0\1\0\0", 14));
}
inline std::string XMPSegment(std::string_view packet) {
    return Segment(0xE1, std::string("http://ns.adobe.com/xap/1.0/\0", 29).append(packet));
}
inline std::string ExifSegment(std::string_view block, char padding = '\0') {
    return Segment(0xE1, (std::string("Exif\0", 5) + padding).append(block));
}
inline std::string ExtensionSegment(std::string_view guid, std::size_t whole, std::size_t at, std::string_view part) {
    std::string data = std::string("http://ns.adobe.com/xmp/extension/\0", 35).append(guid);
    return Segment(0xE1, (data + NumberBytes(whole, 4) + NumberBytes(at, 4)).append(part));
}
inline std::string PhotoshopSegment(std::string_view resources) {
    return Segment(0xED, std::string("Photoshop 3.0\0", 14).append(resources));
}

/// The rest of a picture: what a table holds, a scan with a marker in it that is none, and the end.
inline std::string Scan() {
    return Segment(0xDB, std::string(65, '\1')) + Segment(0xDA, "\1\1\0\0\x3F\0") +
           std::string("ab\xFF\0cd\xFF\xD9", 8);
}
inline std::string JPEGOf(const std::vector<std::string>& segments) {
    return "\xFF\xD8" + Join(segments) + Scan();
}

/// An image resource as Photoshop writes it; @p name with its length is padded to an even size.
inline std::string Resource(int number, std::string_view data, std::string_view name = {},
                            std::string_view signature = "8BIM") {
    std::string bytes = std::string(signature) + NumberBytes(static_cast<std::uint64_t>(number), 2);
    bytes.append(1, static_cast<char>(name.size())).append(name).append(name.size() % 2 == 0 ? 1 : 0, '\0');
    return (bytes + NumberBytes(data.size(), 4)).append(data).append(data.size() % 2, '\0');
}

/// The file that an edit makes; empty, with a failure, when there is no such edit.
inline std::string Edited(const Container& container, const std::string& bytes, const BlockChanges& changes) {
    const auto source = std::make_shared<MemorySource>(bytes);
    const PlannedEdit edit = container.PlanEdit(source, changes);
    EXPECT_EQ(edit.mStatus, FileStatus::kFileStatus_Success) << edit.mDetail;
    std::optional<std::string> made = Carried(edit.mPlan, *source);
    EXPECT_TRUE(made.has_value());
    return made.value_or(std::string());
}

inline BlockChanges XMPChange(std::string element, std::string extended = {}) {
    BlockChanges changes;
    changes.mXMP = std::move(element);
    changes.mExtendedXMP = std::move(extended);
    return changes;
}
inline BlockChanges IIMChange(std::string datasets) {
    BlockChanges changes;
    changes.mIIM = std::move(datasets);
    return changes;
}
inline BlockChanges ExifChange(std::string artist) {
    BlockChanges changes;
    changes.mExif = {{TiffDirectory::kMain, 0x013B, TiffType::kAscii, std::move(artist)}};
    return changes;
}

}  // namespace zephmetadata::media::testing_support
