#include "media/native/iim/image_resources.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "media/bytes.h"
#include "media/native/iim/md5.h"

namespace zephmetadata::media {

namespace {

// Photoshop's own, and those of programs that keep resources of theirs among them.
constexpr std::array<std::string_view, 5> kSignatures = {"8BIM", "MeSa", "AgHg", "PHUT", "DCSR"};
constexpr std::size_t kSignatureBytes = 4;
constexpr std::size_t kNumberBytes = 2;
constexpr std::size_t kSizeBytes = 4;
constexpr std::size_t kMaxResources = 65536;

/// Bytes that another owns.
class ViewSource final : public ByteSource {
public:
    explicit ViewSource(std::string_view bytes) : mBytes(bytes) {}

    std::uint64_t Size() const override { return mBytes.size(); }
    bool ReadAt(std::uint64_t offset, void* into, std::size_t size) const override {
        const bool isThere = IsWithin({offset, size}, mBytes.size());
        if (isThere && size > 0) {
            std::memcpy(into, mBytes.data() + offset, size);
        }
        return isThere;
    }

private:
    std::string_view mBytes;
};

bool BeginsResource(const ByteSource& bytes, std::uint64_t at) {
    return BeginsImageResource(ReadUpTo(bytes, at, kSignatureBytes));
}

/// Behind data that ends at @p end: an odd one is followed by a padding byte, which some writers leave out.
std::uint64_t BehindPadding(const ByteSource& bytes, std::uint64_t end, std::uint64_t size) {
    const bool isPadded = size % 2 != 0 && end < bytes.Size() && !BeginsResource(bytes, end);
    return isPadded ? end + 1 : end;
}

std::optional<ImageResource> ResourceAt(const ByteSource& bytes, std::uint64_t at) {
    const std::string head = ReadUpTo(bytes, at, kSignatureBytes + kNumberBytes + 1);
    if (head.size() <= kSignatureBytes + kNumberBytes || !BeginsResource(bytes, at)) {
        return std::nullopt;
    }
    // The name is a Pascal string, which an even one with its length makes odd: then a byte more.
    const std::uint64_t name = (Get8(head, kSignatureBytes + kNumberBytes) + std::uint64_t{2}) / 2 * 2;
    const std::uint64_t sizeAt = at + kSignatureBytes + kNumberBytes + name;
    const std::optional<std::string> sizeBytes = ReadRange(bytes, {sizeAt, kSizeBytes});
    if (!sizeBytes) {
        return std::nullopt;
    }
    const Range data{sizeAt + kSizeBytes, Get32(*sizeBytes, 0)};
    if (!IsWithin(data, bytes.Size())) {
        return std::nullopt;
    }
    const std::uint64_t end = BehindPadding(bytes, data.End(), data.mSize);
    return ImageResource{Get16(head, kSignatureBytes), {at, end - at}, data};
}

/// Whether there is nothing more than the few zero bytes some writers close with.
bool IsRestEmpty(const ByteSource& bytes, std::uint64_t at) {
    constexpr std::size_t kMaxClosing = 8;
    const std::string rest = ReadUpTo(bytes, at, kMaxClosing + 1);
    return rest.size() <= kMaxClosing && rest.find_first_not_of('\0') == std::string::npos;
}

/// Whether a resource lacks the padding byte that has to stand before what is put behind it.
bool LacksPadding(const ImageResource& resource) {
    return resource.mData.mSize % 2 != 0 && resource.mWhole.End() == resource.mData.End();
}

std::string SizedData(const std::string& data) {
    std::string bytes = NumberBytes(data.size(), kSizeBytes) + data;
    return data.size() % 2 == 0 ? bytes : bytes + '\0';
}

std::string NewResource(std::uint16_t number, const std::string& data) {
    constexpr std::size_t kEmptyName = 2;
    std::string head = std::string(kSignatures.front()) + NumberBytes(number, kNumberBytes);
    return head.append(kEmptyName, '\0') + SizedData(data);
}

void RemoveAll(const ImageResources& resources, std::uint16_t number, Plan& plan) {
    for (const ImageResource& resource : resources.mResources) {
        if (resource.mNumber == number) {
            plan.Remove(resource.mWhole, Touch::kBlock);
        }
    }
}

}  // namespace

const ImageResource* ImageResources::Find(std::uint16_t number) const {
    const auto found = std::find_if(mResources.begin(), mResources.end(),
                                    [&](const ImageResource& resource) { return resource.mNumber == number; });
    return found == mResources.end() ? nullptr : &*found;
}

bool BeginsImageResource(std::string_view bytes) {
    return std::find(kSignatures.begin(), kSignatures.end(), bytes.substr(0, kSignatureBytes)) != kSignatures.end();
}

ImageResources ReadImageResources(std::string_view bytes) {
    return ReadImageResources(ViewSource(bytes));
}

ImageResources ReadImageResources(const ByteSource& bytes) {
    ImageResources resources;
    std::uint64_t at = 0;
    while (resources.mResources.size() < kMaxResources) {
        const std::optional<ImageResource> resource = ResourceAt(bytes, at);
        if (!resource) {
            break;
        }
        resources.mResources.push_back(*resource);
        at = resource->mWhole.End();
    }
    resources.mIsWhole = IsRestEmpty(bytes, at);
    return resources;
}

Plan PlanResourceChanges(const ImageResources& resources, std::span<const ResourceChange> changes) {
    Plan plan;
    std::string added;
    const ImageResource* const last = resources.mResources.empty() ? nullptr : &resources.mResources.back();
    bool lacksPadding = last != nullptr && LacksPadding(*last);
    for (const ResourceChange& change : changes) {
        const ImageResource* const first = resources.Find(change.mNumber);
        if (change.mData && first != nullptr) {
            // With its name and number as they are.
            const std::uint64_t sizeAt = first->mData.mOffset - kSizeBytes;
            plan.Replace({sizeAt, first->mWhole.End() - sizeAt}, SizedData(*change.mData), Touch::kBlock);
            lacksPadding = lacksPadding && first != last;
        } else if (change.mData) {
            added += NewResource(change.mNumber, *change.mData);
        } else {
            RemoveAll(resources, change.mNumber, plan);
            lacksPadding = lacksPadding && last->mNumber != change.mNumber;
        }
    }
    if (!added.empty()) {
        plan.Insert(last == nullptr ? 0 : last->mWhole.End(), lacksPadding ? '\0' + added : added, Touch::kBlock);
    }
    return plan;
}

std::string EditedImageResources(std::string_view bytes, std::span<const ResourceChange> changes) {
    const ViewSource source(bytes);
    return Carried(PlanResourceChanges(ReadImageResources(source), changes), source).value_or(std::string(bytes));
}

std::vector<ResourceChange> IIMChanges(const ImageResources& resources, std::string_view datasets, bool renewsDigest) {
    if (datasets.empty()) {
        return {{kResourceIIM, std::nullopt}, {kResourceIIMDigest, std::nullopt}};
    }
    std::vector<ResourceChange> changes = {{kResourceIIM, std::string(datasets)}};
    if (renewsDigest && resources.Find(kResourceIIMDigest) != nullptr) {
        changes.push_back({kResourceIIMDigest, IIMDigest(datasets)});
    }
    return changes;
}

std::string IIMDigest(std::string_view datasets) {
    return MD5(datasets);
}

}  // namespace zephmetadata::media
