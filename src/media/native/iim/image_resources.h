#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "media/files/byte_sources.h"
#include "media/plan.h"

/// Photoshop image resources ("8BIM"): a sequence of numbered blocks in PSD files, in APP13 segments of JPEG files and in
/// TIFF tag 34377.
namespace zephmetadata::media {

inline constexpr std::uint16_t kResourceIIM = 0x0404;
inline constexpr std::uint16_t kResourceExif = 0x0422;
inline constexpr std::uint16_t kResourceXMP = 0x0424;
inline constexpr std::uint16_t kResourceIIMDigest = 0x0425;

struct ImageResource {
    std::uint16_t mNumber = 0;
    Range mWhole;  ///< of the resource with its header and its padding byte
    Range mData;
};

struct ImageResources {
    std::vector<ImageResource> mResources;  ///< in their order
    bool mIsWhole = true;                   ///< false when the bytes end in something that is no resource

    /// The first of the number.
    const ImageResource* Find(std::uint16_t number) const;
};

/// Whether the bytes begin with the signature of a resource.
bool BeginsImageResource(std::string_view bytes);
ImageResources ReadImageResources(std::string_view bytes);
/// Reads only the headers of the resources.
ImageResources ReadImageResources(const ByteSource& bytes);

/// One resource to be set, or removed when absent.
struct ResourceChange {
    std::uint16_t mNumber = 0;
    std::optional<std::string> mData;
};
/// A plan for some resources to be replaced (the first of a number), removed (all of it) or added behind the last.
Plan PlanResourceChanges(const ImageResources& resources, std::span<const ResourceChange> changes);
/// The bytes with such a plan carried out; all other resources, in their order, stay byte for byte.
std::string EditedImageResources(std::string_view bytes, std::span<const ResourceChange> changes);

/// What is to change for new IIM datasets, with a digest that is there when it is to be renewed; empty ones are taken away.
std::vector<ResourceChange> IIMChanges(const ImageResources& resources, std::string_view datasets,
                                       bool renewsDigest = true);

/// The digest of IIM datasets as resource 1061 holds it: MD5 (RFC 1321), 16 bytes.
std::string IIMDigest(std::string_view datasets);

}  // namespace zephmetadata::media
