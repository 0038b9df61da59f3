#include "zephcore/files.h"

#include <fcntl.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <utility>

#include "platform/file_descriptor.h"

namespace zephcore {

namespace {

namespace fs = std::filesystem;

UTF16String WithoutTrailingSlashes(UTF16String path) {
    while (path.size() > 1 && path.ends_with(u'/')) {
        path.pop_back();
    }
    return path;
}

UTF16String Joined(UTF16String parent, const UTF16String& name) {
    if (!parent.empty() && !parent.ends_with(u'/')) {
        parent += u'/';
    }
    return parent + name;
}

UTF16String LastComponent(const UTF16String& path) {
    return path.substr(path.rfind(u'/') + 1);
}

/// Where the extension of the file name begins, its dot included; the length of the name when it has none.
std::size_t ExtensionStart(const UTF16String& name) {
    const std::size_t dot = name.rfind(u'.');
    return dot == UTF16String::npos || dot == 0 || name == u".." ? name.size() : dot;
}

/// The sorted names of the entries of @p folder that @p isWanted accepts.
template <typename Predicate>
std::vector<std::string> EntryNames(const UTF16String& folder, Predicate isWanted) {
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator entry(SystemPath(folder), error), end; !error && entry != end; entry.increment(error)) {
        if (isWanted(*entry)) {
            names.push_back(entry->path().filename().native());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

template <typename Entry, typename Predicate>
std::vector<Entry> Entries(const Dir& folder, Predicate isWanted) {
    std::vector<Entry> entries;
    for (const std::string& name : EntryNames(folder.FullPath(), isWanted)) {
        entries.emplace_back(folder, PathFromNative(name));
    }
    return entries;
}

}  // namespace

Dir::Dir(UTF16String path) : mPath(WithoutTrailingSlashes(std::move(path))) {}

Dir::Dir(const Dir& parent, const UTF16String& name) : Dir(Joined(parent.mPath, name)) {}

UTF16String Dir::FullPath() const {
    return mPath;
}

UTF16String Dir::GetName() const {
    return LastComponent(mPath);
}

bool Dir::Exists() const {
    return FileUtils::IsDir(mPath);
}

bool Dir::IsReadable() const {
    std::error_code error;
    const fs::directory_iterator first(SystemPath(mPath), error);
    return !error;
}

bool Dir::Create() const {
    std::error_code ignored;
    fs::create_directory(SystemPath(mPath), ignored);
    return Exists();
}

bool Dir::Delete() const {
    std::error_code error;
    const fs::path path = SystemPath(mPath);
    if (!Exists()) {
        return !fs::exists(fs::symlink_status(path, error));
    }
    fs::remove_all(path, error);
    return !error;
}

std::vector<File> Dir::Files() const {
    return Entries<File>(*this, [](const fs::directory_entry& entry) {
        std::error_code ignored;
        return entry.is_regular_file(ignored);
    });
}

std::vector<Dir> Dir::Subfolders() const {
    return Entries<Dir>(*this, [](const fs::directory_entry& entry) {
        std::error_code ignored;
        return entry.is_directory(ignored);
    });
}

File::File(UTF16String path) : mPath(std::move(path)) {}

File::File(const Dir& folder, const UTF16String& name) : mPath(Joined(folder.FullPath(), name)) {}

UTF16String File::FullPath() const {
    return mPath;
}

UTF16String File::GetName() const {
    return LastComponent(mPath);
}

UTF16String File::GetTitle() const {
    const UTF16String name = GetName();
    return name.substr(0, ExtensionStart(name));
}

UTF16String File::GetExtension(bool withDot) const {
    const UTF16String name = GetName();
    const UTF16String extension = name.substr(ExtensionStart(name));
    return withDot || extension.empty() ? extension : extension.substr(1);
}

Dir File::Parent() const {
    const std::size_t slash = mPath.rfind(u'/');
    return Dir(slash == UTF16String::npos ? u"." : mPath.substr(0, std::max<std::size_t>(slash, 1)));
}

bool File::Exists() const {
    return FileUtils::FileExists(mPath);
}

bool File::Create() const {
    return FileDescriptor(SystemPath(mPath), O_WRONLY | O_CREAT).IsOpen() || Exists();
}

}  // namespace zephcore
