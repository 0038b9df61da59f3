#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "media/media_store.h"
#include "support/temp_folder.h"
#include "xmp/tree/xmp_tree.h"
#include "zephcore/files.h"

namespace zephmetadata {

inline void PrintTo(FileStatus status, std::ostream* out) {
    *out << "FileStatus " << static_cast<int>(status);
}

namespace media {

using namespace toolkit;

inline constexpr const char* kDC = "http://purl.org/dc/elements/1.1/";
inline constexpr const char* kXMP = "http://ns.adobe.com/xap/1.0/";

/// A test with the toolkit running over a folder of its own.
class MediaTest : public ::testing::Test {
protected:
    MediaTest() { Start(); }
    ~MediaTest() override { Stop(); }

    static std::filesystem::path Fixture(const std::string& name) {
        return std::filesystem::path(ZEPHMETADATA_SOURCE_DIR "/tests/data") / name;
    }
    std::filesystem::path Copy(const std::string& fixture) const {
        return mFolder.Write(fixture, support::ReadFile(Fixture(fixture)));
    }
    static MediaReading Read(const std::filesystem::path& path) {
        return ReadMedia(zephcore::PathFromNative(path.string()));
    }
    static WriteOutcome Write(const std::filesystem::path& path, const MediaReading& file, XMPMetaHandle tree) {
        return WriteMedia(zephcore::PathFromNative(path.string()), tree, file.mStamp);
    }
    /// Reads a file, sets one property and writes it back.
    static WriteOutcome Edit(const std::filesystem::path& path, const std::string& value) {
        const MediaReading file = Read(path);
        const XMPMetaPtr tree = file.mTree ? file.mTree : NewTree();
        SetProperty(tree.get(), kXMP, "Label", value);
        return Write(path, file, tree.get());
    }
    static std::string Value(const MediaReading& file, const char* schema, const char* path) {
        const auto property = file.mTree ? GetProperty(file.mTree.get(), schema, path) : std::nullopt;
        return property ? property->mValue : "<none>";
    }
    /// The names in the test's folder: a working copy that was left behind shows.
    std::vector<std::string> FolderNames() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(mFolder.Path())) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    support::TempFolder mFolder;
};

}  // namespace media
}  // namespace zephmetadata
