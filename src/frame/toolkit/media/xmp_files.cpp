#include "frame/toolkit/media/xmp_files.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <map>

#include "frame/toolkit/exempi_handles.h"
#include "frame/toolkit/media/deep_stack.h"
#include "frame/toolkit/media/file_replacement.h"
#include "frame/toolkit/media/jpeg_segments.h"
#include "frame/toolkit/media/media_formats.h"
#include "frame/toolkit/media/packet_depth.h"
#include "frame/toolkit/packet_scan.h"
#include "frame/toolkit/packet_text.h"
#include "frame/toolkit/xmp_alternatives.h"
#include "frame/toolkit/xmp_meta_handle.h"
#include "frame/toolkit/xmp_tree.h"

namespace zephmetadata::toolkit {

namespace {

/// A media file while the toolkit has it open. Nothing is written unless Close is called on one opened for update.
class ToolkitFile {
public:
    ToolkitFile(const std::string& nativePath, XmpOpenFileOptions options) : mHandle(xmp_files_new()) {
        const QuietToolkit quiet;
        mIsOpen = xmp_files_open(mHandle.get(), nativePath.c_str(), options);
    }

    bool IsOpen() const { return mIsOpen; }
    XmpFilePtr Get() const { return mHandle.get(); }
    bool Close() {
        const QuietToolkit quiet;
        mIsOpen = false;
        return xmp_files_close(mHandle.get(), XMP_CLOSE_NOOPTION);
    }

private:
    FileHandle mHandle;
    bool mIsOpen = false;
};

FileXMP ReadFailure(FileStatus status, UTF8String detail = {}) {
    FileXMP failure;
    failure.mStatus = status;
    failure.mDetail = std::move(detail);
    return failure;
}

bool IsDamagedPacket(int toolkitError) {
    constexpr std::array kPacketErrors = {XMPErr_BadXML, XMPErr_BadRDF, XMPErr_BadXMP, XMPErr_BadUnicode,
                                          XMPErr_BadParse};
    return std::find(kPacketErrors.begin(), kPacketErrors.end(), toolkitError) != kPacketErrors.end();
}

/// What the toolkit found: its tree, the text of the packet, and whether there was a packet that it could not read.
struct ToolkitRead {
    XMPMetaPtr mTree;  ///< null when the toolkit found nothing
    UTF8String mPacket;
    bool mIsDamaged = false;
};

ToolkitRead ReadWithToolkit(const ToolkitFile& file) {
    const QuietToolkit quiet;
    ToolkitRead read;
    read.mTree = NewTree();
    const bool found = xmp_files_get_xmp(file.Get(), Native(read.mTree.get()));
    read.mIsDamaged = !found && IsDamagedPacket(xmp_get_error());
    const ToolkitString packet;
    if (xmp_files_get_xmp_xmpstring(file.Get(), packet.Get(), nullptr)) {
        read.mPacket = packet.Text();
    }
    if (!found) {
        read.mTree = nullptr;
        read.mIsDamaged = read.mIsDamaged || !read.mPacket.empty();
    }
    return read;
}

/// Puts texts back that the toolkit lost while it parsed @p packet; false when the packet cannot be read.
bool RepairFromPacket(XMPMetaHandle tree, const std::string& packet) {
    if (!MayNeedWidening(packet)) {
        return true;
    }
    try {
        // Most packets hold nothing that the toolkit loses; those need no second tree.
        if (WidenPacket(packet) == packet) {
            return true;
        }
    } catch (const XMPError&) {
        return false;
    }
    const XMPMetaPtr right = NewTree();
    if (!ParsePacket(right.get(), packet)) {
        return false;
    }
    NarrowTree(tree);
    RestoreLostTexts(tree, right.get());
    return true;
}

/// The tree of a file as its packets mean it; false when one of them cannot be read.
bool Repair(const ToolkitRead& read, const std::vector<std::string>& extended) {
    if (read.mPacket.empty()) {
        return true;
    }
    const XMPMetaHandle tree = read.mTree.get();
    if (!extended.empty() || read.mPacket.find(kUndeterminedLanguage) != std::string::npos) {
        NarrowTree(tree);
    }
    return RepairFromPacket(tree, read.mPacket) &&
           std::all_of(extended.begin(), extended.end(),
                       [&](const std::string& packet) { return RepairFromPacket(tree, packet); });
}

FileStatus StatusWithoutXMP(std::uint32_t format, const std::string& nativePath) {
    const bool isMedium = format != XMP_FT_UNKNOWN || IsReadOnlyMedium(nativePath);
    return isMedium ? FileStatus::kFileStatus_NoXMP : FileStatus::kFileStatus_UnknownFormat;
}

/// Formats whose lengths the toolkit (2.6.3) trusts: it reads beyond the end of a damaged FLV file and crashes, and goes
/// round for ever in an ASF object of length 0.
bool IsUnsafeFormat(const std::string& nativePath) {
    constexpr std::string_view kFLV = "FLV";
    constexpr std::string_view kASF = "\x30\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9";  // its header object
    std::array<char, kASF.size()> start{};
    const int file = open(nativePath.c_str(), O_RDONLY | O_CLOEXEC);
    const ssize_t size = file < 0 ? 0 : read(file, start.data(), start.size());
    if (file >= 0) {
        close(file);
    }
    const std::string_view bytes(start.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    return bytes.starts_with(kFLV) || bytes.starts_with(kASF);
}

/// The format that the toolkit found; valid while the file is open.
std::uint32_t FormatOf(const ToolkitFile& file) {
    XmpFileType format = XMP_FT_UNKNOWN;
    return xmp_files_get_file_info(file.Get(), nullptr, nullptr, &format, nullptr) ? format : XMP_FT_UNKNOWN;
}

/// On a stack that holds what the toolkit makes of the file. A tree that it returns is no deeper than kMaxPacketDepth.
FileXMP ReadWithEnoughStack(const std::string& nativePath) {
    const QuietToolkit quiet;
    if (IsUnsafeFormat(nativePath)) {
        return ReadFailure(FileStatus::kFileStatus_UnknownFormat);
    }
    const ToolkitFile file(nativePath, XMP_OPEN_READ);
    if (!file.IsOpen()) {
        const bool isMedium = xmp_files_check_file_format(nativePath.c_str()) != XMP_FT_UNKNOWN;
        return ReadFailure(isMedium ? FileStatus::kFileStatus_DamagedFile : FileStatus::kFileStatus_UnknownFormat);
    }
    const std::uint32_t format = FormatOf(file);
    const ToolkitRead read = ReadWithToolkit(file);
    // The property by which the first packet of a JPEG file refers to the others.
    const bool isExtended = format == XMP_FT_JPEG && read.mPacket.find("HasExtendedXMP") != UTF8String::npos;
    const ExtendedPackets extended = isExtended ? ExtendedJpegPackets(nativePath) : ExtendedPackets();
    if (read.mIsDamaged || (read.mTree && !Repair(read, extended.mTexts))) {
        return ReadFailure(FileStatus::kFileStatus_DamagedXMP);
    }
    FileXMP result;
    const MediaFormat* const known = FindMediaFormat(format);
    result.mIsWhole = extended.mIsComplete;
    result.mCanWrite = known != nullptr && known->mCanWrite && result.mIsWhole;
    const bool isEmpty =
        !read.mTree || (read.mPacket.empty() && Nodes(read.mTree.get(), {}, {}, Walk::kJustChildren).empty());
    result.mStatus = isEmpty ? StatusWithoutXMP(format, nativePath) : FileStatus::kFileStatus_Success;
    result.mTree = isEmpty ? nullptr : read.mTree;
    return result;
}

FileXMP ReadNativePath(const std::string& nativePath, std::uint64_t size) {
    if (size > kCoveredFileBytes && IsNestedTooDeep(nativePath)) {
        return ReadFailure(FileStatus::kFileStatus_DamagedXMP, "nested too deep");
    }
    if (size <= kHarmlessFileBytes) {
        return ReadWithEnoughStack(nativePath);
    }
    FileXMP file;
    if (!RunWithStack(StackFor(size), [&] { file = ReadWithEnoughStack(nativePath); })) {
        return ReadFailure(FileStatus::kFileStatus_Unreadable, "not enough memory");
    }
    return file;
}

/// Namespaces that the toolkit keeps in step with native metadata, in which numbers come back in another form: a
/// coordinate is stored as rationals, a text is cut to what the Exif tag can hold.
bool IsNativeNamespace(const UTF8String& schema) {
    static const std::array<UTF8String, 4> namespaces = {
        "http://ns.adobe.com/tiff/1.0/", "http://ns.adobe.com/exif/1.0/", "http://ns.adobe.com/exif/1.0/aux/",
        "http://cipa.jp/exif/1.0/"};
    return std::find(namespaces.begin(), namespaces.end(), schema) != namespaces.end();
}

/// Whether a value may come back in another form: rationals are reduced, coordinates are kept to a thousandth of a
/// minute.
bool IsNativeNumber(const Node& node) {
    return IsNativeNamespace(node.mSchema) &&
           node.mValue.find_first_not_of("0123456789+-./,NSEW") == UTF8String::npos &&
           node.mValue.find('-', 1) == UTF8String::npos;  // a date is no number
}

/// The first node of @p wanted that @p found lacks or has another value for; empty when there is none.
UTF8String FirstMissing(XMPMetaHandle wanted, XMPMetaHandle found) {
    std::map<UTF8String, UTF8String> values;  // expressions have their prefix, so they are unique in a tree
    for (Node& node : Nodes(found, {}, {}, Walk::kSubtree)) {
        values.emplace(std::move(node.mPath), std::move(node.mValue));
    }
    for (const Node& node : Nodes(wanted, {}, {}, Walk::kSubtree)) {
        const auto match = values.find(node.mPath);
        if (match == values.end() || (match->second != node.mValue && !IsNativeNumber(node))) {
            return node.mPath;
        }
    }
    return {};
}

WriteOutcome WriteFailure(FileStatus status, UTF8String detail = {}) {
    return {status, std::move(detail), {}};
}

bool PutTree(const std::string& workingCopy, XMPMetaHandle tree) {
    const QuietToolkit quiet;
    const XMPMetaPtr wide = CloneTree(tree);
    WidenTree(wide.get());
    ToolkitFile file(workingCopy, XMP_OPEN_FORUPDATE);
    if (!file.IsOpen() || !xmp_files_can_put_xmp(file.Get(), Native(wide.get()))) {
        return false;
    }
    const bool put = xmp_files_put_xmp(file.Get(), Native(wide.get()));
    return file.Close() && put;
}

/// Why the working copy is not what the file is to become; empty when it is.
UTF8String Verify(const MediaFormat& format, const std::string& original, const std::string& workingCopy,
                  XMPMetaHandle tree) {
    const FileXMP written = ReadNativePath(workingCopy, StampOf(workingCopy).mSize);
    if (!written.mTree) {
        return "the written metadata does not read back";
    }
    const UTF8String missing = FirstMissing(tree, written.mTree.get());
    if (!missing.empty()) {
        return missing + " does not read back as it was written";
    }
    const bool sameImage = format.mSameImage == nullptr || format.mSameImage(original, workingCopy);
    return sameImage ? UTF8String() : "the image data would not stay the same";
}

WriteOutcome Committed(FileReplacement& replacement, const std::string& nativePath) {
    if (!replacement.Commit()) {
        return WriteFailure(replacement.Status(), replacement.Detail());
    }
    return {FileStatus::kFileStatus_Success, {}, StampOf(nativePath)};
}

WriteOutcome WriteNativePath(const MediaPath& target, XMPMetaHandle tree) {
    const FileXMP current = ReadNativePath(target.mNative, target.mStamp.mSize);
    if (current.mStatus != FileStatus::kFileStatus_Success && current.mStatus != FileStatus::kFileStatus_NoXMP) {
        return WriteFailure(current.mStatus, current.mDetail);
    }
    if (!current.mIsWhole) {
        return WriteFailure(FileStatus::kFileStatus_DamagedXMP, "a part of its extended XMP is missing");
    }
    const MediaFormat* const format = FindMediaFormat(xmp_files_check_file_format(target.mNative.c_str()));
    if (format == nullptr || !format->mCanWrite) {
        return WriteFailure(FileStatus::kFileStatus_CannotCarryXMP);
    }
    FileReplacement replacement(target);
    if (!replacement.CopyTarget()) {
        return WriteFailure(replacement.Status(), replacement.Detail());
    }
    const bool prepared = format->mPrepare == nullptr || format->mPrepare(replacement.WorkingCopy());
    if (!prepared || !PutTree(replacement.WorkingCopy(), tree)) {
        return WriteFailure(FileStatus::kFileStatus_NotWritten, "the toolkit could not write it");
    }
    const UTF8String reason = Verify(*format, target.mNative, replacement.WorkingCopy(), tree);
    if (!reason.empty()) {
        return WriteFailure(FileStatus::kFileStatus_NotWritten, reason);
    }
    return Committed(replacement, target.mNative);
}

}  // namespace

FileXMP ReadFileXMP(const UTF16String& path) {
    const MediaPath resolved = ResolveMediaPath(path);
    if (resolved.mStatus != FileStatus::kFileStatus_Success) {
        return ReadFailure(resolved.mStatus, resolved.mDetail);
    }
    FileXMP file;
    try {
        file = ReadNativePath(resolved.mNative, resolved.mStamp.mSize);
    } catch (const XMPError& error) {
        file = ReadFailure(FileStatus::kFileStatus_DamagedXMP, error.what());
    }
    file.mStamp = resolved.mStamp;
    return file;
}

WriteOutcome WriteFileXMP(const UTF16String& path, XMPMetaHandle tree, const FileStamp& stamp) {
    const MediaPath target = ResolveUnchanged(path, stamp);
    if (target.mStatus != FileStatus::kFileStatus_Success) {
        return WriteFailure(target.mStatus, target.mDetail);
    }
    try {
        return WriteNativePath(target, tree);
    } catch (const XMPError& error) {
        return WriteFailure(FileStatus::kFileStatus_NotWritten, error.what());
    }
}

}  // namespace zephmetadata::toolkit
