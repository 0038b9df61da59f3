#include "media/mirroring/read_state.h"

#include <functional>

#include "xmp/packet/packet_aliases.h"

namespace zephmetadata::media {

namespace {

/// Of one text after the other, and of where one ends and the next begins.
class Digest {
public:
    void Add(const std::optional<std::string>& text) {
        Mix(text ? text->size() + 1 : 0);
        Mix(text ? std::hash<std::string>()(*text) : 0);
    }
    std::size_t Value() const { return mValue; }

private:
    // The constant of Knuth's multiplicative hashing in 64 bits spreads what comes first over the whole number.
    void Mix(std::size_t number) { mValue = (mValue ^ number) * 0x9E3779B97F4A7C15U + (mValue >> 29U); }

    std::size_t mValue = 0;
};

}  // namespace

bool CanKeepState(const FileBlocks& blocks, XMPMetaHandle tree) {
    return blocks.mExtendedXMP.empty() && !toolkit::HasAliases(tree);
}

std::size_t DigestOf(const FileBlocks& blocks) {
    Digest digest;
    digest.Add(blocks.mXMP);
    digest.Add(blocks.mIIM);
    digest.Add(blocks.mIIMDigest);
    return digest.Value();
}

}  // namespace zephmetadata::media
