#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "zephcore/base.h"

namespace zephcore {

/// File names are bytes, paths in this interface UTF-16: a byte that is no UTF-8 travels as the lone surrogate
/// U+DC80 + (byte - 0x80), so that every name survives the way there and back.
ZEPHCORE_EXPORT UTF16String PathFromNative(std::string_view nativePath);
ZEPHCORE_EXPORT std::string PathToNative(std::u16string_view path);

class File;

/// A folder, existing or not. Copyable; holds nothing but its path.
class ZEPHCORE_EXPORT Dir {
public:
    explicit Dir(UTF16String path);
    /// The folder @p name below @p parent; @p name may hold slashes.
    Dir(const Dir& parent, const UTF16String& name);

    UTF16String FullPath() const;  ///< as given, without a trailing slash (but for the root)
    UTF16String GetName() const;
    bool Exists() const;
    bool IsReadable() const;  ///< whether what is in it can be listed
    bool Create() const;      ///< this folder only; true when it exists afterwards
    bool Delete() const;      ///< the folder and all that is in it, links not followed; true when it is gone

    /// The files (subfolders) of the folder, links to such included, in byte order of their names. An unreadable folder
    /// has none.
    std::vector<File> Files() const;
    std::vector<Dir> Subfolders() const;

    // The base folders; each may be set by an environment variable.
    static Dir PrefDir();  ///< per user: ZEPHCORE_PREF_DIR, else as GlobalPrefDir
    /// Per user: ZEPHCORE_GLOBAL_PREF_DIR, else $XDG_CONFIG_HOME/zephcore, else ~/.config/zephcore.
    static Dir GlobalPrefDir();
    /// Machine-wide: ZEPHCORE_SYSTEM_DIR, else the installed data folder; 44 is the only id.
    static Dir SystemDir(int id);
    static Dir PluginsDir();  ///< ZEPHCORE_PLUGINS_DIR, else the installed library folder
    static Dir TempDir();     ///< $TMPDIR, else /tmp
    static Dir AppDir();      ///< the folder of the running program

private:
    UTF16String mPath;
};

/// A file, existing or not. Copyable; holds nothing but its path.
class ZEPHCORE_EXPORT File {
public:
    explicit File(UTF16String path);
    File(const Dir& folder, const UTF16String& name);

    UTF16String FullPath() const;
    UTF16String GetName() const;
    UTF16String GetTitle() const;  ///< the name without its extension; a leading dot begins no extension
    UTF16String GetExtension(bool withDot) const;
    Dir Parent() const;   ///< "." for a bare name
    bool Exists() const;  ///< as a regular file, links followed
    bool Create() const;  ///< empty, unless it is there already; its folder must exist; true when it exists afterwards

private:
    UTF16String mPath;
};

/// A byte stream on a regular file, the only kind that opens; closes it at its end. Not copyable.
class FileStream {
public:
    enum class Mode { kRead, kWrite /**< begins empty */, kAppend };

    FileStream(const File& file, Mode mode);
    ~FileStream();
    FileStream(const FileStream&) = delete;
    FileStream& operator=(const FileStream&) = delete;

    bool IsOpen() const;
    std::uint64_t Length() const;  ///< in bytes
    /// Reads up to @p size bytes, fewer only at the end of the file; the number read.
    std::size_t ReadBlock(void* bytes, std::size_t size);
    /// True when all @p size bytes were written.
    bool WriteBlock(const void* bytes, std::size_t size);
    /// Writes the code units of @p text, little endian, without a byte-order mark.
    bool WriteText16(std::u16string_view text);

private:
    struct State;
    std::unique_ptr<State> mState;
};

namespace FileUtils {

bool EnsureDirectoryExists(const UTF16String& path);  ///< with all missing parents
bool FileOrDirExists(const UTF16String& path);
bool FileExists(const UTF16String& path);
bool IsDir(const UTF16String& path);
bool IsLink(const UTF16String& path);  ///< whether @p path itself is a symbolic link, to anything or nothing
/// The length in bytes of a regular file, links followed; absent for anything else.
std::optional<std::uint64_t> FileLength(const UTF16String& path);
/// The absolute path of what is at @p path, with every link followed; absent when there is nothing.
std::optional<UTF16String> CanonicalPath(const UTF16String& path);
/// Copies a regular file's bytes; replaces @p to whole or not at all.
bool Copy(const UTF16String& from, const UTF16String& to);
bool RemoveFile(const UTF16String& path);
/// The bytes of a regular file of at most @p maxBytes; absent when it cannot be read or is larger.
std::optional<UTF8String> ReadFileToString(const UTF16String& path, std::uint64_t maxBytes);
/// Writes @p text to @p path whole or not at all: into a temporary file beside it, which then takes its place (with the
/// old file's mode; links followed). False, also for a write-protected file, leaves the old file as it was.
bool SimpleWriteStringToFile(const UTF16String& path, const UTF8String& text);

}  // namespace FileUtils

}  // namespace zephcore
