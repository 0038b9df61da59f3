#include "media/files/file_attributes.h"

#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zephmetadata::media {

namespace {

/// The names of a file's extended attributes.
std::vector<std::string> AttributeNames(int file) {
    std::string names(static_cast<std::size_t>(std::max<ssize_t>(flistxattr(file, nullptr, 0), 0)), '\0');
    const ssize_t size = names.empty() ? 0 : flistxattr(file, names.data(), names.size());
    names.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    std::vector<std::string> list;
    for (std::size_t at = 0; at < names.size();) {
        list.emplace_back(names.c_str() + at);
        at += list.back().size() + 1;
    }
    return list;
}

std::optional<std::string> Attribute(int file, const std::string& name) {
    std::string value(static_cast<std::size_t>(std::max<ssize_t>(fgetxattr(file, name.c_str(), nullptr, 0), 0)), '\0');
    const ssize_t size = fgetxattr(file, name.c_str(), value.data(), value.size());
    if (size < 0) {
        return std::nullopt;
    }
    value.resize(static_cast<std::size_t>(size));
    return value;
}

bool SetAttribute(int file, const std::string& name, const std::string& value) {
    // A label that the new file got by itself may be one that nobody is allowed to set.
    return Attribute(file, name) == value || fsetxattr(file, name.c_str(), value.data(), value.size(), 0) == 0;
}

bool TakeOverExtended(int from, int to) {
    const std::vector<std::string> names = AttributeNames(from);
    for (const std::string& name : AttributeNames(to)) {
        // A control list that new files of the folder get by themselves.
        const bool isExtra = std::find(names.begin(), names.end(), name) == names.end();
        if (isExtra && !name.starts_with("security.") && fremovexattr(to, name.c_str()) != 0) {
            return false;
        }
    }
    return std::all_of(names.begin(), names.end(), [&](const std::string& name) {
        const auto value = Attribute(from, name);
        return value && SetAttribute(to, name, *value);
    });
}

}  // namespace

bool TakeOverAttributes(int from, int to) {
    struct stat old {};
    struct stat fresh {};
    if (fstat(from, &old) != 0 || fstat(to, &fresh) != 0) {
        return false;
    }
    const bool hasOwner = old.st_uid == fresh.st_uid && old.st_gid == fresh.st_gid;
    if ((!hasOwner && fchown(to, old.st_uid, old.st_gid) != 0) || !TakeOverExtended(from, to)) {
        return false;
    }
    // Last: a change of owner takes set-user-ID away, a control list changes the group's bits.
    constexpr mode_t kModeBits = 07777;
    return fchmod(to, old.st_mode & kModeBits) == 0;
}

}  // namespace zephmetadata::media
