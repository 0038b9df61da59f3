#include "media/containers/documents/svg.h"

#include <algorithm>

#include "media/containers/documents/svg_document.h"

namespace zephmetadata::media {

namespace {

/// Drawings with pictures in them are large, but a document is read as a whole.
constexpr std::uint64_t kMaxDocumentBytes = std::uint64_t{512} << 20U;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

/// What shows in a text of any UTF: the characters of ASCII.
std::string WithoutNULs(std::string_view text) {
    std::string plain(text);
    std::erase(plain, '\0');
    return plain;
}

bool IsWideUTF(std::string_view head) {
    return head.starts_with("\xFE\xFF") || head.starts_with("\xFF\xFE") ||
           head.substr(0, 4).find('\0') != std::string_view::npos;
}

/// Behind what may come before the root element; the end when that does not end.
std::size_t RootPlace(std::string_view text) {
    std::size_t at = 0;
    while ((at = std::min(text.find_first_not_of(" \t\r\n", at), text.size())) < text.size()) {
        const std::string_view rest = text.substr(at);
        std::size_t end = 0;
        if (rest.starts_with("<!--")) {
            end = text.find("-->", at + 4);
        } else if (rest.starts_with("<?")) {
            end = text.find("?>", at);
        } else if (rest.starts_with("<!DOCTYPE")) {
            const std::size_t subset = text.find('[', at);
            end = text.find('>', at);
            end = subset < end ? text.find(']', subset) : end;
            end = end == std::string_view::npos ? end : text.find('>', end);
        } else {
            return at;
        }
        at = end == std::string_view::npos ? text.size() : end + 1;
        at += text.substr(std::min(at, text.size())).starts_with(">") ? 1 : 0;   // of "?>"
        at += text.substr(std::min(at, text.size())).starts_with("->") ? 2 : 0;  // of "-->"
    }
    return text.size();
}

bool HasOtherEncoding(std::string_view text) {
    if (!text.starts_with("<?xml ")) {
        return false;
    }
    std::string declaration(text.substr(0, text.find("?>")));
    std::transform(declaration.begin(), declaration.end(), declaration.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; });
    return declaration.find("encoding") != std::string::npos && declaration.find("utf-8") == std::string::npos &&
           declaration.find("us-ascii") == std::string::npos;
}

struct Loaded {
    std::string mText;
    SVGDocument mDocument;
};

std::optional<Loaded> Load(const ByteSource& file) {
    if (file.Size() > kMaxDocumentBytes) {
        return std::nullopt;
    }
    std::optional<std::string> text = ReadRange(file, {0, file.Size()});
    if (!text) {
        return std::nullopt;
    }
    SVGDocument document = ReadSVG(*text);
    return Loaded{*std::move(text), std::move(document)};
}

std::string Part(const std::string& text, const Range& range) {
    return text.substr(range.mOffset, range.mSize);
}

/// The element as a document of its own, which it may not be where drawing programs declare all prefixes in the root.
std::string WholeXMP(std::string element, const std::string& inherited) {
    if (!ReadSVG(element).mDamage.empty()) {
        element.insert(std::min(element.find_first_of(" \t\r\n/>"), element.size()), inherited);
    }
    return element;
}

std::string WhyReadOnly(const Loaded& loaded) {
    std::string_view text = loaded.mText;
    if (IsWideUTF(text)) {
        return "the document is not in UTF-8";
    }
    text.remove_prefix(text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0);
    if (HasOtherEncoding(text)) {
        return "the document is not in UTF-8";
    }
    return loaded.mDocument.mHasEntities ? "the document has entities or other declarations of its own" : "";
}

/// What is to be inserted at @p place, with its packet behind the bytes that readers know a document by: one that begins
/// as any XML passes for a sidecar when XMP is among them.
std::string BehindHead(const Loaded& loaded, std::uint64_t place, std::string inserted) {
    constexpr std::size_t kHeadBytes = 256;
    const std::string_view text = loaded.mText;
    const bool beginsAsXML = text.starts_with("<?xml") || text.starts_with(std::string(kByteOrderMark) + "<?xml");
    const std::size_t packet = inserted.find("<?xpacket");
    if (beginsAsXML && place + packet < kHeadBytes) {
        inserted.insert(packet, kHeadBytes - place - packet, ' ');
    }
    return inserted;
}

/// Puts a metadata element into a root that has none.
void InsertMetadata(const Loaded& loaded, const std::string& packet, Plan& plan) {
    const SVGDocument& document = loaded.mDocument;
    const std::string name = document.mPrefix + "metadata";
    const std::string element = "\n<" + name + ">" + packet + "</" + name + ">";
    if (!document.mIsRootEmpty) {
        const std::uint64_t place = document.mRootTag.End();
        plan.Insert(place, BehindHead(loaded, place, element), Touch::kBlock);
        return;
    }
    const std::string tag = Part(loaded.mText, document.mRootTag);
    const std::string_view rootName = std::string_view(tag).substr(1, tag.find_first_of(" \t\r\n/>") - 1);
    const Range slash{document.mRootTag.End() - 2, 2};
    std::string opened = BehindHead(loaded, slash.mOffset, ">" + element);
    plan.Replace(slash, std::move(opened) + "\n</" + std::string(rootName) + ">", Touch::kBlock);
}

void FillMetadata(const Loaded& loaded, const std::string& packet, Plan& plan) {
    const SVGDocument& document = loaded.mDocument;
    if (document.mMetadata) {
        const std::uint64_t place = document.mMetadata->mOffset;
        plan.Insert(place, BehindHead(loaded, place, packet), Touch::kBlock);
        return;
    }
    const std::string tag = Part(loaded.mText, *document.mEmptyMetadata);
    const std::string_view name = std::string_view(tag).substr(1, tag.find_first_of(" \t\r\n/>") - 1);
    const Range slash{document.mEmptyMetadata->End() - 2, 2};
    std::string opened = BehindHead(loaded, slash.mOffset, ">" + packet);
    plan.Replace(slash, std::move(opened) + "</" + std::string(name) + ">", Touch::kBlock);
}

class SVG : public Container {
public:
    FileBlocks Read(const std::shared_ptr<const ByteSource>& file) const override {
        FileBlocks blocks;
        const std::optional<Loaded> loaded = Load(*file);
        if (!loaded) {
            blocks.mStatus = FileStatus::kFileStatus_DamagedFile;
            blocks.mDetail = "the document cannot be read as a whole";
            return blocks;
        }
        const SVGDocument& document = loaded->mDocument;
        const bool isWide = IsWideUTF(loaded->mText);
        if (document.mXMP && !isWide) {
            blocks.mXMP = WholeXMP(Part(loaded->mText, *document.mXMP), document.mInherited);
        }
        blocks.mWhyReadOnly = WhyReadOnly(*loaded);
        blocks.mDetail = document.mDamage.empty() && !document.mIsSVG ? "the root element is no svg" : document.mDamage;
        blocks.mStatus = blocks.mDetail.empty() ? FileStatus::kFileStatus_Success : FileStatus::kFileStatus_DamagedFile;
        return blocks;
    }
    PlannedEdit PlanEdit(const std::shared_ptr<const ByteSource>& file, const BlockChanges& changes) const override {
        PlannedEdit edit;
        if (!changes.mXMP) {
            return edit;
        }
        const std::optional<Loaded> loaded = Load(*file);
        if (!loaded || !loaded->mDocument.mDamage.empty()) {
            return RefusedEdit(FileStatus::kFileStatus_DamagedFile, loaded ? loaded->mDocument.mDamage : "");
        }
        const SVGDocument& document = loaded->mDocument;
        if (document.mXMP) {
            edit.mPlan.Replace(*document.mXMP, *changes.mXMP, Touch::kBlock);
        } else if (document.mMetadata || document.mEmptyMetadata) {
            FillMetadata(*loaded, ShortPacket(*changes.mXMP), edit.mPlan);
        } else {
            InsertMetadata(*loaded, ShortPacket(*changes.mXMP), edit.mPlan);
        }
        return edit;
    }
};

}  // namespace

bool IsSVG(std::string_view head) {
    const bool isWide = IsWideUTF(head);
    const std::string plain = isWide ? WithoutNULs(head) : std::string();
    std::string_view text = isWide ? std::string_view(plain) : head;
    for (const std::string_view mark : {kByteOrderMark, std::string_view("\xFE\xFF"), std::string_view("\xFF\xFE")}) {
        text.remove_prefix(text.starts_with(mark) ? mark.size() : 0);
    }
    std::string_view root = text.substr(RootPlace(text));
    if (!root.starts_with("<")) {
        return false;
    }
    root = root.substr(1, root.find_first_of(" \t\r\n/>") - 1);
    const std::size_t colon = root.find(':');
    return (colon == std::string_view::npos ? root : root.substr(colon + 1)) == "svg";
}

const Container& SVGContainer() {
    static const SVG container;
    return container;
}

}  // namespace zephmetadata::media
