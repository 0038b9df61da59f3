#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>

#include "media/bytes.h"
#include "media/containers/boxes/boxes.h"
#include "media/containers/container.h"

/// Files in memory, read, edited, and checked for what an edit has to leave alone.
namespace zephmetadata::media {

inline std::string Element(std::string_view text, std::size_t padding = 0) {
    return std::string("<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">").append(text) + std::string(padding, '.') +
           "</x:xmpmeta>";
}

inline std::shared_ptr<const MemorySource> Source(std::string bytes) {
    return std::make_shared<MemorySource>(std::move(bytes));
}

inline FileBlocks ReadFile(const Container& container, std::string bytes) {
    return container.Read(Source(std::move(bytes)));
}

inline std::string XMPOf(const Container& container, const std::string& bytes) {
    return ReadFile(container, bytes).mXMP.value_or("<none>");
}

/// The bytes of the first Exif stream.
inline std::string ExifOf(const Container& container, const std::string& bytes) {
    const FileBlocks blocks = ReadFile(container, bytes);
    if (blocks.mExif.empty()) {
        return "<none>";
    }
    const ByteSource& stream = *blocks.mExif.front().mSource;
    return ReadRange(stream, {0, stream.Size()}).value_or("<unreadable>");
}

inline BlockChanges NewXMP(std::string element) {
    BlockChanges changes;
    changes.mXMP = std::move(element);
    return changes;
}

inline BlockChanges NewArtist(const std::string& name) {
    BlockChanges changes;
    changes.mExif.push_back({TiffDirectory::kMain, 0x013B, TiffType::kAscii, name + '\0'});
    return changes;
}

inline std::string ArtistOf(const Container& container, const std::string& bytes) {
    const MemorySource stream(ExifOf(container, bytes));
    const TiffFields fields = ReadTiff(stream);
    const TiffField* const field = fields.Find(TiffDirectory::kMain, 0x013B);
    return field == nullptr ? "<none>" : field->mBytes.substr(0, field->mBytes.find('\0'));
}

/// The file after the edit. Fails when what the file refers to is not where the plan moved it, or not the same.
inline std::string Edited(const Container& container, const std::string& bytes, const BlockChanges& changes) {
    const auto file = Source(bytes);
    const PlannedEdit planned = container.PlanEdit(file, changes);
    EXPECT_EQ(planned.mStatus, FileStatus::kFileStatus_Success) << planned.mDetail;
    const std::string result = Carried(planned.mPlan, *file).value_or("unsound plan");
    const std::vector<Range> before = container.References(*file);
    const std::vector<Range> after = container.References(MemorySource(result));
    EXPECT_EQ(before.size(), after.size());
    const OffsetMap map(planned.mPlan);
    for (std::size_t i = 0; i < before.size() && i < after.size(); ++i) {
        EXPECT_EQ(map.NewOffset(before[i].mOffset), after[i].mOffset) << i;
        EXPECT_EQ(ReadRange(*file, before[i]), ReadRange(MemorySource(result), after[i])) << i;
    }
    EXPECT_EQ(ReadFile(container, result).mStatus, FileStatus::kFileStatus_Success)
        << ReadFile(container, result).mDetail;
    return result;
}

inline FileStatus StatusOfEdit(const Container& container, const std::string& bytes, const BlockChanges& changes) {
    return container.PlanEdit(Source(bytes), changes).mStatus;
}

/// Reads and edits the file cut at every byte. What is left of it is either damaged or edited as if it were whole.
inline void CutEverywhere(const Container& container, const std::string& bytes) {
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        const std::string cut = bytes.substr(0, size);
        const FileBlocks blocks = ReadFile(container, cut);
        const PlannedEdit planned = container.PlanEdit(Source(cut), NewXMP(Element("new")));
        EXPECT_EQ(blocks.mStatus == FileStatus::kFileStatus_Success, planned.mStatus == FileStatus::kFileStatus_Success)
            << size;
        if (planned.mStatus == FileStatus::kFileStatus_Success) {
            const std::string result = Carried(planned.mPlan, MemorySource(cut)).value_or("");
            EXPECT_THAT(XMPOf(container, result), testing::HasSubstr(Element("new"))) << size;
        }
    }
}

inline std::vector<std::string> BoxTypes(const std::string& bytes) {
    const MemorySource file(bytes);
    std::vector<std::string> types;
    for (const Box& box : ReadBoxes(file, {0, file.Size()}).mBoxes) {
        types.push_back(box.mType);
    }
    return types;
}

/// A box that goes on to the end of the file.
inline std::string OpenBox(std::string_view type, std::string_view contents) {
    return NumberBytes(0, 4).append(type).append(contents);
}

}  // namespace zephmetadata::media
