#include "media/sidecars.h"

#include <algorithm>
#include <filesystem>

#include "media/mirroring/tree_values.h"
#include "zephcore/files.h"
#include "zephcore/text.h"

namespace zephmetadata::media {

namespace {

namespace fs = std::filesystem;
using toolkit::PacketFile;
using toolkit::Place;

constexpr std::string_view kExtension = ".xmp";
const UTF8String& PhotoshopNamespace() {
    static const UTF8String uri = "http://ns.adobe.com/photoshop/1.0/";
    return uri;
}
constexpr const char* kForExtension = "SidecarForExtension";

/// ASCII letters in lower case: extensions are compared so.
std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; });
    return text;
}

/// Without its dot.
std::string ExtensionOf(const fs::path& path) {
    const std::string extension = path.extension().string();
    return extension.empty() ? extension : extension.substr(1);
}

fs::path LongName(const fs::path& media) {
    return fs::path(media).concat(kExtension);
}

fs::path ShortName(const fs::path& media) {
    return fs::path(media).replace_extension(kExtension);
}

XMPMetaPtr TreeOf(const PacketFile& file) {
    XMPMetaPtr tree = toolkit::NewTree();
    return toolkit::ParsePacket(tree.get(), file.Packet()) ? tree : nullptr;
}

/// Whether another file of the folder has the same name but for its extension, and so may own the sidecar.
bool HasNamesake(const fs::path& media) {
    std::error_code ignored;  // a folder that cannot be read shows no namesake
    const fs::path folder = media.has_parent_path() ? media.parent_path() : ".";
    const fs::directory_iterator entries(folder, ignored);
    return std::any_of(begin(entries), end(entries), [&](const fs::directory_entry& entry) {
        const fs::path other = entry.path().filename();
        return other.stem() == media.stem() && other != media.filename() &&
               Lower(other.extension().string()) != kExtension;
    });
}

/// Whether a sidecar that is named without the media file's extension belongs to that file.
bool IsSidecarOf(const PacketFile& sidecar, const fs::path& media, bool canBeWritten) {
    const XMPMetaPtr tree = TreeOf(sidecar);
    const auto owner = tree ? toolkit::GetProperty(tree.get(), PhotoshopNamespace(), kForExtension) : std::nullopt;
    if (owner && !owner->mValue.empty()) {
        return Lower(owner->mValue) == Lower(ExtensionOf(media));
    }
    return !canBeWritten || !HasNamesake(media);
}

UTF16String AsPath(const fs::path& path) {
    return zephcore::PathFromNative(path.string());
}

/// What a new sidecar begins with: what does not stand in the file's native metadata.
XMPMetaPtr FirstTree(XMPMetaHandle file, const fs::path& media, bool isRaw) {
    XMPMetaPtr tree = toolkit::CloneTree(file);
    for (const toolkit::Node& node : toolkit::Nodes(file, {}, {}, toolkit::Walk::kSubtree)) {
        if (!node.mPath.empty() && node.mPath.find_first_of("/[") == UTF8String::npos &&
            toolkit::IsNative(file, node.mSchema, node.mPath)) {
            toolkit::DeleteProperty(tree.get(), node.mSchema, node.mPath);
        }
    }
    if (isRaw) {
        toolkit::SetProperty(tree.get(), PhotoshopNamespace(), kForExtension, ExtensionOf(media));
    }
    return tree;
}

XMPMetaPtr OwnOrNew(XMPMetaPtr tree) {
    return tree ? std::move(tree) : toolkit::NewTree();
}

WriteOutcome Refused(UTF8String detail) {
    return {FileStatus::kFileStatus_NotWritten, std::move(detail), {}};
}

WriteOutcome Store(Sidecar& sidecar, XMPMetaHandle tree) {
    const UTF8String packet = toolkit::SerializePacket(tree);
    const XMPMetaPtr readBack = toolkit::NewTree();
    if (!toolkit::ParsePacket(readBack.get(), packet) || !toolkit::TreesEqual(readBack.get(), tree)) {
        return Refused("the written metadata does not read back");
    }
    if (sidecar.mFile) {
        return sidecar.mFile->Write(packet);
    }
    WriteOutcome outcome = CreateMedia(zephcore::PathToNative(sidecar.mPath), packet);
    if (outcome.mStatus == FileStatus::kFileStatus_Success) {
        sidecar.mFile = std::make_unique<PacketFile>(sidecar.mPath);
    }
    return outcome;
}

}  // namespace

Sidecar FindSidecar(const UTF16String& path, const MediaReading& media) {
    const fs::path native(zephcore::PathToNative(path));
    for (const fs::path& candidate : {LongName(native), ShortName(native)}) {
        std::error_code ignored;  // what cannot be looked at is not there
        if (candidate == native || !fs::is_regular_file(candidate, ignored)) {
            continue;
        }
        auto file = std::make_unique<PacketFile>(AsPath(candidate));
        const bool canBeWritten = media.mWriteStatus == FileStatus::kFileStatus_Success;
        if (candidate == LongName(native) || IsSidecarOf(*file, native, canBeWritten)) {
            return {AsPath(candidate), std::move(file)};
        }
    }
    const bool isRaw = media.mFormat != nullptr && media.mFormat->mIsRaw;
    std::error_code ignored;
    const bool isShortTaken = fs::exists(ShortName(native), ignored);
    return {AsPath(isRaw && !isShortTaken ? ShortName(native) : LongName(native)), nullptr};
}

void LaySidecarOver(XMPMetaHandle tree, XMPMetaHandle sidecar) {
    for (const toolkit::Node& node : toolkit::Nodes(sidecar, {}, {}, toolkit::Walk::kSubtree)) {
        if (!node.mPath.empty() && node.mPath.find_first_of("/[") == UTF8String::npos) {
            CopyProperty(sidecar, tree, {node.mSchema, node.mPath});
        }
    }
}

WriteOutcome WriteSidecar(Sidecar& sidecar, const UTF16String& path, const FileStamp& stamp, XMPMetaHandle wanted) {
    const MediaReading media = ReadMedia(path);
    if (!(media.mStamp == stamp)) {
        return {FileStatus::kFileStatus_Changed, {}, {}};
    }
    const XMPMetaPtr file = OwnOrNew(media.mTree);
    const XMPMetaPtr old = sidecar.mFile ? TreeOf(*sidecar.mFile) : nullptr;
    const XMPMetaPtr before = toolkit::CloneTree(file.get());
    if (old) {
        LaySidecarOver(before.get(), old.get());
    }
    const std::vector<Place> changed = ChangedProperties(TreeContent(before.get()), TreeContent(wanted));
    if (changed.empty()) {
        return {FileStatus::kFileStatus_Success, {}, stamp};
    }
    const bool isRaw = media.mFormat != nullptr && media.mFormat->mIsRaw;
    const XMPMetaPtr tree =
        old ? toolkit::CloneTree(old.get()) : FirstTree(file.get(), zephcore::PathToNative(path), isRaw);
    for (const Place& property : changed) {
        CopyProperty(wanted, tree.get(), property);
        if (!toolkit::PropertyExists(wanted, property.mSchema, property.mPath) &&
            toolkit::PropertyExists(file.get(), property.mSchema, property.mPath)) {
            return Refused(property.mPath + " stands in the file itself; a sidecar cannot take it away");
        }
    }
    WriteOutcome outcome = Store(sidecar, tree.get());
    outcome.mStamp = stamp;
    return outcome;
}

}  // namespace zephmetadata::media
