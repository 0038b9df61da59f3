#include "media/containers/boxes/boxes.h"

#include <algorithm>
#include <cassert>
#include <cctype>
#include <limits>

#include "media/bytes.h"

namespace zephmetadata::media {

namespace {

constexpr std::uint64_t kShortHeader = 8;
constexpr std::uint64_t kLongHeader = 16;
constexpr std::uint64_t kUuidBytes = 16;
constexpr std::uint64_t kMaxShortSize = std::numeric_limits<std::uint32_t>::max();

/// The box whose header lies at the beginning of @p range; absent when it does not lie in the range as a whole.
std::optional<Box> ReadBox(const ByteSource& file, Range range) {
    const std::string head = ReadUpTo(file, range.mOffset, kLongHeader + kUuidBytes);
    const std::uint64_t there = std::min<std::uint64_t>(head.size(), range.mSize);
    if (there < kShortHeader) {
        return std::nullopt;
    }
    Box box;
    box.mType = head.substr(4, 4);
    box.mWhole = {range.mOffset, Get32(head, 0)};
    std::uint64_t headerBytes = kShortHeader;
    if (box.mWhole.mSize == 0) {
        box.mSize = BoxSize::kToEnd;
        box.mWhole.mSize = range.mSize;
    } else if (box.mWhole.mSize == 1) {
        if (there < kLongHeader) {
            return std::nullopt;
        }
        box.mSize = BoxSize::kLong;
        box.mWhole.mSize = Get64(head, kShortHeader);
        headerBytes = kLongHeader;
    }
    if (box.mType == "uuid" && headerBytes + kUuidBytes <= there) {
        box.mUuid = head.substr(headerBytes, kUuidBytes);
        headerBytes += kUuidBytes;
    }
    box.mHeaderBytes = static_cast<std::uint8_t>(headerBytes);
    const bool fits = headerBytes <= box.mWhole.mSize && box.mWhole.mSize <= range.mSize;
    return fits && (box.mType != "uuid" || !box.mUuid.empty()) ? std::optional(box) : std::nullopt;
}

class TreeReader {
public:
    TreeReader(const ByteSource& file, const ChildrenAt& childrenAt) : mFile(file), mChildrenAt(childrenAt) {}

    BoxList Read(Range range) {
        mList.mRest = Enter(range, kNoBox, 0);
        return std::move(mList);
    }

private:
    /// Boxes come into the list one by one, so that each stands before what it holds.
    Range Enter(Range range, std::size_t parent, std::size_t depth) {
        while (range.mSize > 0) {
            const std::optional<Box> box = ReadBox(mFile, range);
            // Zeros behind the last box would read as one to the end.
            if (!box || box->mType == std::string_view("\0\0\0\0", 4) || mList.mBoxes.size() >= kMaxBoxes) {
                break;
            }
            range = {box->mWhole.End(), range.mSize - box->mWhole.mSize};
            Add(*box, parent, depth);
        }
        return range;
    }

    void Add(const Box& box, std::size_t parent, std::size_t depth) {
        const std::size_t index = mList.mBoxes.size();
        mList.mBoxes.push_back(box);
        mList.mBoxes.back().mParent = parent;
        const std::optional<std::uint64_t> before = mChildrenAt(mFile, mList.mBoxes.back(), mList);
        if (!before) {
            return;
        }
        const Range contents = box.Contents();
        if (depth + 1 >= kMaxBoxDepth || *before > contents.mSize) {
            mList.mIsWhole = false;
            return;
        }
        const Range rest = Enter({contents.mOffset + *before, contents.mSize - *before}, index, depth + 1);
        mList.mIsWhole = mList.mIsWhole && (rest.mSize == 0 || IsZeroRest(mFile, rest));
    }

    const ByteSource& mFile;
    const ChildrenAt& mChildrenAt;
    BoxList mList;
};

}  // namespace

const Box* BoxList::Find(std::string_view type, std::size_t from) const {
    for (std::size_t i = from; i < mBoxes.size(); ++i) {
        if (mBoxes[i].mType == type) {
            return &mBoxes[i];
        }
    }
    return nullptr;
}

const Box* BoxList::FindUuid(std::string_view uuid) const {
    const auto found = std::find_if(mBoxes.begin(), mBoxes.end(), [uuid](const Box& box) { return box.IsUuid(uuid); });
    return found == mBoxes.end() ? nullptr : &*found;
}

const Box* BoxList::FindIn(std::size_t parent, std::string_view type) const {
    const auto found = std::find_if(mBoxes.begin(), mBoxes.end(),
                                    [&](const Box& box) { return box.mParent == parent && box.mType == type; });
    return found == mBoxes.end() ? nullptr : &*found;
}

const Box* BoxList::FindPath(std::initializer_list<std::string_view> types) const {
    const Box* box = nullptr;
    for (const std::string_view type : types) {
        box = FindIn(box == nullptr ? kNoBox : IndexOf(*box), type);
        if (box == nullptr) {
            return nullptr;
        }
    }
    return box;
}

BoxList ReadBoxes(const ByteSource& file, Range range) {
    return ReadBoxTree(file, range, [](const ByteSource&, const Box&, const BoxList&) { return std::nullopt; });
}

BoxList ReadBoxTree(const ByteSource& file, Range range, const ChildrenAt& childrenAt) {
    return TreeReader(file, childrenAt).Read(range);
}

std::uint64_t MetaChildrenAt(const ByteSource& file, const Box& meta) {
    // The box behind version and flags would be "hdlr" at 8; QuickTime has it at 4.
    const std::string head = ReadUpTo(file, meta.Contents().mOffset, kShortHeader);
    return head.size() == kShortHeader && head.substr(4) == "hdlr" ? 0 : 4;
}

bool IsZeroRest(const ByteSource& file, Range rest) {
    constexpr std::uint64_t kMostZeros = std::uint64_t{64} << 10U;
    if (rest.mSize > kMostZeros) {
        return false;
    }
    const std::optional<std::string> bytes = ReadRange(file, rest);
    return bytes && bytes->find_first_not_of('\0') == std::string::npos;
}

bool IsCutBox(const ByteSource& file, Range rest) {
    // A few zeros are the beginning of a size.
    if (rest.mSize < kShortHeader || IsZeroRest(file, rest)) {
        return rest.mSize > 0 && rest.mSize < kShortHeader;
    }
    const std::string head = ReadUpTo(file, rest.mOffset, kShortHeader);
    return head.size() < kShortHeader || std::all_of(head.begin() + 4, head.end(), [](char character) {
               return std::isprint(static_cast<unsigned char>(character)) != 0;
           });
}

std::optional<FullBoxHead> ReadFullBoxHead(const ByteSource& file, const Box& box) {
    if (box.Contents().mSize < 4) {
        return std::nullopt;
    }
    const std::optional<std::string> bytes = ReadRange(file, {box.Contents().mOffset, 4});
    return bytes ? std::optional(FullBoxHead{Get8(*bytes, 0), Get32(*bytes, 0) & 0xFFFFFFU}) : std::nullopt;
}

std::string BoxHeader(std::string_view type, std::uint64_t contentsSize) {
    assert(type.size() == 4);
    const bool isShort = contentsSize <= kMaxShortSize - kShortHeader;
    std::string header = NumberBytes(isShort ? contentsSize + kShortHeader : 1, 4).append(type);
    return isShort ? header : header.append(NumberBytes(contentsSize + kLongHeader, 8));
}

std::string BoxBytes(std::string_view type, std::string_view contents) {
    return BoxHeader(type, contents.size()).append(contents);
}

std::string UuidBoxBytes(std::string_view uuid, std::string_view contents) {
    assert(uuid.size() == kUuidBytes);
    return BoxHeader("uuid", kUuidBytes + contents.size()).append(uuid).append(contents);
}

std::string FullBoxBytes(std::string_view type, FullBoxHead head, std::string_view contents) {
    const std::string start = NumberBytes(head.mVersion, 1) + NumberBytes(head.mFlags, 3);
    return BoxHeader(type, start.size() + contents.size()).append(start).append(contents);
}

std::string FreeBox(std::uint64_t size) {
    assert(size >= kShortHeader && size <= kMaxShortSize);
    return BoxBytes("free", std::string(static_cast<std::size_t>(size - kShortHeader), '\0'));
}

bool ResizeBox(Plan& plan, const Box& box, std::uint64_t newSize) {
    const std::uint64_t offset = box.mWhole.mOffset;
    if (box.mSize == BoxSize::kLong) {
        plan.Replace({offset + kShortHeader, 8}, NumberBytes(newSize, 8), Touch::kStructure);
    } else if (box.mSize == BoxSize::kShort) {
        if (newSize > kMaxShortSize) {
            return false;
        }
        plan.Replace({offset, 4}, NumberBytes(newSize, 4), Touch::kStructure);
    }
    return true;
}

void MakeExplicit(Plan& plan, const Box& box, std::optional<std::uint64_t> newSize) {
    if (box.mSize != BoxSize::kToEnd) {
        return;
    }
    const std::uint64_t offset = box.mWhole.mOffset;
    const std::uint64_t size = newSize.value_or(box.mWhole.mSize);
    const bool isShort = size <= kMaxShortSize;
    plan.Replace({offset, 4}, NumberBytes(isShort ? size : 1, 4), Touch::kStructure);
    if (!isShort) {
        plan.Insert(offset + kShortHeader, NumberBytes(size + 8, 8), Touch::kStructure);
    }
}

}  // namespace zephmetadata::media
