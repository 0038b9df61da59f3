#pragma once

#include <gtest/gtest.h>
#include <zlib.h>

#include <memory>
#include <string>
#include <string_view>

#include "media/bytes.h"
#include "media/containers/container.h"

/// Files of chunks, made of parts, and edits of them in memory.
namespace zephmetadata::media::chunk_files {

inline constexpr std::string_view kElement = "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">new</x:xmpmeta>";

inline std::string Text(std::string_view text) {
    return std::string(text);
}

/// A literal with all its zero bytes.
template <std::size_t kSize>
std::string Bytes(const char (&literal)[kSize]) {
    return {literal, kSize - 1};
}

inline std::string PngChunk(const std::string& type, const std::string& data) {
    const std::string counted = type + data;
    const auto sum = crc32_z(0, reinterpret_cast<const Bytef*>(counted.data()), counted.size());
    return NumberBytes(data.size(), 4) + counted + NumberBytes(sum, 4);
}
inline std::string PaddedChunk(const std::string& type, const std::string& data, ByteOrder order) {
    return type + NumberBytes(data.size(), 4, order) + data + std::string(data.size() % 2, '\0');
}
inline std::string RiffChunk(const std::string& type, const std::string& data) {
    return PaddedChunk(type, data, ByteOrder::kLittle);
}
inline std::string Riff(const std::string& form, const std::string& chunks) {
    return RiffChunk("RIFF", form + chunks);
}

inline FileBlocks ReadBytes(const Container& container, const std::string& file) {
    return container.Read(std::make_shared<MemorySource>(file));
}

/// The file after the edit; empty when it is refused.
inline std::string Edited(const Container& container, const std::string& file, const BlockChanges& changes) {
    const auto source = std::make_shared<MemorySource>(file);
    const PlannedEdit edit = container.PlanEdit(source, changes);
    return edit.mStatus == FileStatus::kFileStatus_Success ? Carried(edit.mPlan, *source).value_or("") : std::string();
}

inline BlockChanges NewPacket(std::string_view element = kElement) {
    BlockChanges changes;
    changes.mXMP = element;
    return changes;
}
/// Sets the description of the main directory.
inline BlockChanges NewDescription(const std::string& text) {
    BlockChanges changes;
    changes.mExif = {{TiffDirectory::kMain, 0x010E, TiffType::kAscii, text + '\0'}};
    return changes;
}
inline std::string ExifSaying(const std::string& text) {
    return NewTiff(NewDescription(text).mExif);
}
/// The descriptions in the Exif streams, with a comma behind each.
inline std::string Descriptions(const FileBlocks& blocks) {
    std::string texts;
    for (const ExifStream& exif : blocks.mExif) {
        const TiffFields fields = ReadTiff(*exif.mSource, exif.mFirst);
        const TiffField* const field = fields.Find(TiffDirectory::kMain, 0x010E);
        texts += (field != nullptr ? std::string(field->mBytes.c_str()) : std::string("none")) + ",";
    }
    return texts;
}

/// That every cut of the file, which is longer than @p atLeast bytes, is either found damaged or read and edited without
/// harm, and that the whole one is sound.
inline void ExpectCutsToBeFound(const Container& container, const std::string& file, std::size_t sound) {
    for (std::size_t size = 0; size < sound; ++size) {
        EXPECT_EQ(ReadBytes(container, file.substr(0, size)).mStatus, FileStatus::kFileStatus_DamagedFile) << size;
        EXPECT_EQ(Edited(container, file.substr(0, size), NewPacket()), "") << size;
    }
    EXPECT_EQ(ReadBytes(container, file.substr(0, sound)).mStatus, FileStatus::kFileStatus_Success);
}

/// That edits with packets of different sizes, one after another, leave a file about as large as the last one asks for.
inline void ExpectNoGrowth(const Container& container, std::string file, std::size_t most) {
    for (std::size_t i = 0; i < 30; ++i) {
        file = Edited(container, file,
                      NewPacket(std::string("<x:xmpmeta>") + std::string(i % 7 * 40, 'x') + "</x:xmpmeta>"));
        ASSERT_FALSE(file.empty()) << i;
        EXPECT_LE(file.size(), most) << i;
    }
}

}  // namespace zephmetadata::media::chunk_files
