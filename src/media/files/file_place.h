#pragma once

#include <sys/stat.h>

#include <optional>

#include "media/files/open_file.h"

namespace zephmetadata::media {

/// A name in a folder, and the hidden names beside it that a write uses for instants. They follow from the name and the
/// file alone, so that whoever comes next recognises what a killed process left.
class FilePlace {
public:
    /// Where a native path leads, through all symbolic links. The last name need not exist when @p mayBeNew; a link that
    /// leads nowhere is a name that exists.
    static std::optional<FilePlace> At(const std::string& nativePath, bool mayBeNew = false);

    int Folder() const { return mFolder.Number(); }
    const std::string& Name() const { return mName; }
    std::string PathOf(const std::string& name) const { return mFolderPath + "/" + name; }

    /// New content on its way to the name, and what it took the place of on the way out.
    std::string PassingName() const;
    /// The journal of a file whose bytes are written over.
    static std::string JournalName(std::uint64_t inode);
    /// The same in the making, where the system has no unnamed files.
    static std::string NewJournalName(std::uint64_t inode) { return JournalName(inode) + ".new"; }

    /// What stands at a name of the folder itself, not where a link there leads to.
    std::optional<struct stat> StatusOf(const std::string& name) const;
    /// Whether a name of the folder is that of the open file.
    bool IsNameOf(const std::string& name, int file) const;
    OpenFile Open(const std::string& name, int flags) const;
    bool Remove(const std::string& name) const;
    /// Makes the system keep what changed in the folder. Where that is not possible there is nothing to be done.
    void Sync() const;

private:
    std::string mFolderPath;
    std::string mName;
    OpenFile mFolder;
};

/// The real path of a file; empty, with errno, when it leads nowhere.
std::string RealPath(const std::string& nativePath);

}  // namespace zephmetadata::media
