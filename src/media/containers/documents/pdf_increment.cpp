#include "media/containers/documents/pdf_increment.h"

#include <map>

#include "media/bytes.h"

namespace zephmetadata::media {

namespace {

constexpr std::uint64_t kMaxTableOffset = 9'999'999'999;  // ten digits

struct Entry {
    std::uint64_t mOffset = 0;
    int mGeneration = 0;
};
using Entries = std::map<std::uint64_t, Entry>;  // by object number

std::string ObjectHead(const PDFObjectId& id) {
    return std::to_string(id.mNumber) + " " + std::to_string(id.mGeneration) + " obj\n";
}

/// The dictionary with more entries at its end.
std::string WithEntries(std::string_view dictionary, const std::string& entries) {
    return std::string(dictionary.substr(0, dictionary.rfind(">>"))).append(entries).append(" >>");
}

std::string Padded(std::uint64_t number, std::size_t digits) {
    const std::string text = std::to_string(number);
    return text.size() < digits ? std::string(digits - text.size(), '0') + text : text;
}

std::string SectionEntries(const PDFIncrement& increment) {
    return "/Prev " + std::to_string(increment.mPrevious) + " /Size " + std::to_string(increment.mSize);
}

std::string Table(const PDFIncrement& increment, const Entries& entries) {
    std::string text = "xref\n";
    for (const auto& [number, entry] : entries) {
        text += std::to_string(number) + " 1\n" + Padded(entry.mOffset, 10) + " " +
                Padded(static_cast<std::uint64_t>(entry.mGeneration), 5) + " n \n";
    }
    return text + "trailer\n" + WithEntries(increment.mTrailer, SectionEntries(increment)) + "\n";
}

/// ISO 32000-2, 7.5.8; not compressed, since it is short.
std::string Stream(const PDFIncrement& increment, Entries entries, std::uint64_t offset) {
    const std::uint64_t number = increment.mSize - 1;
    entries[number] = {offset, 0};
    const std::size_t offsetBytes = offset < std::uint64_t{1} << 32U ? 4 : 8;
    std::string index;
    std::string data;
    for (const auto& [object, entry] : entries) {
        index += (index.empty() ? "" : " ") + std::to_string(object) + " 1";
        data.append(1, '\1').append(NumberBytes(entry.mOffset, offsetBytes));
        data += NumberBytes(static_cast<std::uint64_t>(entry.mGeneration), 2);
    }
    const std::string dictionary = SectionEntries(increment) + " /Type /XRef /W [1 " + std::to_string(offsetBytes) +
                                   " 2] /Index [" + index + "] /Length " + std::to_string(data.size());
    return ObjectHead({static_cast<int>(number), 0}) + WithEntries(increment.mTrailer, dictionary) + "\nstream\n" +
           data + "\nendstream\nendobj\n";
}

}  // namespace

std::string PDFPacketHead(const PDFIncrement& increment, std::size_t packetBytes) {
    return ObjectHead(increment.mMetadata) +
           WithEntries(increment.mMetadataDictionary, "/Length " + std::to_string(packetBytes)) + "\nstream\n";
}

std::optional<std::string> PDFIncrementText(const PDFIncrement& increment, std::string_view packet) {
    Entries entries;
    std::string text = PDFPacketHead(increment, packet.size());
    text.append(packet).append("\nendstream\nendobj\n");
    entries[static_cast<std::uint64_t>(increment.mMetadata.mNumber)] = {increment.mAt, increment.mMetadata.mGeneration};
    if (const auto& catalog = increment.mCatalog) {
        entries[static_cast<std::uint64_t>(catalog->mId.mNumber)] = {increment.mAt + text.size(),
                                                                     catalog->mId.mGeneration};
        text.append(ObjectHead(catalog->mId)).append(catalog->mDictionary).append("\nendobj\n");
    }
    const std::uint64_t offset = increment.mAt + text.size();
    if (!increment.mIsCrossReferenceStream && offset > kMaxTableOffset) {
        return std::nullopt;
    }
    text +=
        increment.mIsCrossReferenceStream ? Stream(increment, std::move(entries), offset) : Table(increment, entries);
    return text.append("startxref\n").append(std::to_string(offset)).append("\n%%EOF\n");
}

}  // namespace zephmetadata::media
