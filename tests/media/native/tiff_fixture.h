#pragma once

#include <string>
#include <vector>

#include "media/native/tiff/tiff_stream.h"

/// TIFF streams made piece by piece.
namespace zephmetadata::media {

class TiffBuilder {
public:
    struct Entry {
        std::uint16_t mTag;
        TiffType mType;
        std::string mBytes;  // each value big-endian
    };

    explicit TiffBuilder(ByteOrder order = ByteOrder::kBig, bool isBig = false) : mOrder(order), mIsBig(isBig) {
        mStream = order == ByteOrder::kBig ? "MM" : "II";
        mStream += NumberBytes(isBig ? 43 : 42, 2, order);
        mStream += isBig ? NumberBytes(8, 2, order) + NumberBytes(0, 10, order) : NumberBytes(0, 4, order);
    }

    ByteOrder Order() const { return mOrder; }
    std::size_t Wide() const { return mIsBig ? 8 : 4; }
    /// A pointer or another number, as the value of an entry.
    Entry Pointer(std::uint16_t tag, std::uint64_t value) const {
        return {tag, mIsBig ? TiffType::kLong8 : TiffType::kLong, NumberBytes(value, Wide())};
    }
    std::uint64_t Put(const std::string& bytes) {
        mStream.resize((mStream.size() + 1) / 2 * 2, '\0');
        mStream += bytes;
        return mStream.size() - bytes.size();
    }
    std::uint64_t PutDirectory(const std::vector<Entry>& entries, std::uint64_t next = 0) {
        std::string bytes = NumberBytes(entries.size(), mIsBig ? 8 : 2, mOrder);
        for (const Entry& entry : entries) {
            std::string values = InOrder(entry);
            bytes +=
                NumberBytes(entry.mTag, 2, mOrder) + NumberBytes(static_cast<std::uint64_t>(entry.mType), 2, mOrder);
            const std::size_t each = std::max<std::size_t>(TiffTypeBytes(entry.mType), 1);
            bytes += NumberBytes(values.size() / each, Wide(), mOrder);
            if (values.size() > Wide()) {
                values = NumberBytes(Put(values), Wide(), mOrder);
            }
            values.resize(Wide(), '\0');
            bytes += values;
        }
        return Put(bytes + NumberBytes(next, Wide(), mOrder));
    }
    std::string Made(std::uint64_t first) {
        PutNumber(mStream, mIsBig ? 8 : 4, first, Wide(), mOrder);
        return mStream;
    }

private:
    std::string InOrder(const Entry& entry) const {
        std::string values = entry.mBytes;
        const bool isRational = entry.mType == TiffType::kRational || entry.mType == TiffType::kSRational;
        const std::size_t unit = isRational ? 4 : std::max<std::size_t>(TiffTypeBytes(entry.mType), 1);
        for (std::size_t at = 0; mOrder == ByteOrder::kLittle && at + unit <= values.size(); at += unit) {
            values.replace(at, unit,
                           std::string(values.rbegin() + static_cast<std::ptrdiff_t>(values.size() - at - unit),
                                       values.rend() - static_cast<std::ptrdiff_t>(at)));
        }
        return values;
    }

    ByteOrder mOrder;
    bool mIsBig;
    std::string mStream;
};

}  // namespace zephmetadata::media
