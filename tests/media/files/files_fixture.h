#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "media/files/file_replacement.h"
#include "media/files/media_write.h"
#include "small_disk.h"
#include "support/temp_folder.h"

namespace zephmetadata {

inline void PrintTo(FileStatus status, std::ostream* out) {
    *out << "FileStatus " << static_cast<int>(status);
}

namespace media {

inline constexpr FileStatus kSuccess = FileStatus::kFileStatus_Success;
inline constexpr FileStatus kChanged = FileStatus::kFileStatus_Changed;

class FilesTest : public ::testing::Test {
protected:
    /// Puts @p bytes in place of all that follows the first @p kept ones.
    static WriteOutcome Replace(const std::filesystem::path& path, const FileStamp& expected, const std::string& bytes,
                                const SystemMeans& means = {}, std::uint64_t kept = 0) {
        FileReplacement replacement(path.string(), expected, means);
        if (!replacement.Opened().IsSuccess()) {
            return replacement.Opened();
        }
        const WriteOutcome outcome = replacement.Make(PlanOf(*replacement.Old(), bytes, kept));
        return outcome.IsSuccess() ? replacement.Commit() : outcome;
    }
    static WriteOutcome Replace(const std::filesystem::path& path, const std::string& bytes,
                                const SystemMeans& means = {}) {
        return Replace(path, StampOf(path.string()), bytes, means);
    }
    static Plan PlanOf(const ByteSource& old, const std::string& bytes, std::uint64_t kept = 0) {
        Plan plan;
        plan.Replace({kept, old.Size() - kept}, bytes, Touch::kBlock);
        return plan;
    }
    static struct stat Status(const std::filesystem::path& path) {
        struct stat status {};
        EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
        return status;
    }
    /// The names in the test's folder: what was left behind shows.
    std::vector<std::string> FolderNames() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(mFolder.Path())) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }
    static std::string Bytes(const std::filesystem::path& path) { return support::ReadFile(path); }

    support::TempFolder mFolder;
};

/// What file systems offer, from all to nothing.
inline constexpr SystemMeans kAllMeans[] = {{true, true}, {true, false}, {false, true}, {false, false}};

}  // namespace media
}  // namespace zephmetadata
