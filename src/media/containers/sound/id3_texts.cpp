#include "media/containers/sound/id3_texts.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>

#include "media/bytes.h"
#include "media/native/exif/exif_texts.h"
#include "media/native/namespaces.h"

namespace zephmetadata::media {

namespace {

/// How the text stands in the frame; of several values with NULs between the first is taken.
enum class Layout : std::uint8_t {
    kText,         ///< encoding, text
    kDescription,  ///< encoding, language, description, NUL, text
    kLink,         ///< a URL in Latin-1
};

struct FrameRow {
    std::string_view mId;
    Layout mLayout;
    std::string_view mNamespace;
    std::string_view mProperty;
    ValueForm mForm;
};

constexpr auto kFrames = std::to_array<FrameRow>({
    {"TIT2", Layout::kText, kDC, "title", ValueForm::kLangAlt},
    {"TPE1", Layout::kText, kXMPDM, "artist", ValueForm::kSimple},
    {"TALB", Layout::kText, kXMPDM, "album", ValueForm::kSimple},
    {"TRCK", Layout::kText, kXMPDM, "trackNumber", ValueForm::kSimple},
    {"TCON", Layout::kText, kXMPDM, "genre", ValueForm::kSimple},
    {"TCOM", Layout::kText, kXMPDM, "composer", ValueForm::kSimple},
    {"TCOP", Layout::kText, kDC, "rights", ValueForm::kLangAlt},
    {"TDRC", Layout::kText, kXMP, "CreateDate", ValueForm::kSimple},
    {"TYER", Layout::kText, kXMP, "CreateDate", ValueForm::kSimple},
    {"TENG", Layout::kText, kXMPDM, "engineer", ValueForm::kSimple},
    {"COMM", Layout::kDescription, kXMPDM, "logComment", ValueForm::kSimple},
    {"WCOP", Layout::kLink, kXMPRights, "WebStatement", ValueForm::kSimple},
});

/// The encodings of ID3v2.4: Latin-1, UTF-16 with a byte order mark, UTF-16 big-endian, UTF-8.
std::string Decoded(unsigned encoding, std::string_view bytes) {
    const bool isWide = encoding == 1 || encoding == 2;
    return isWide ? TextOfUTF16(bytes, ByteOrder::kBig) : CleanText(bytes.substr(0, bytes.find('\0')));
}

std::string TextOf(const FrameRow& row, std::string_view data) {
    if (row.mLayout == Layout::kLink) {
        return Decoded(0, data);
    }
    const unsigned encoding = data.empty() ? 0U : Get8(data, 0);
    if (row.mLayout == Layout::kText) {
        return Decoded(encoding, data.substr(std::min<std::size_t>(1, data.size())));
    }
    constexpr std::size_t kTextAt = 4;  // behind the encoding and three letters of language
    if (data.size() < kTextAt) {
        return {};
    }
    const std::size_t unit = encoding == 1 || encoding == 2 ? 2 : 1;
    std::size_t at = kTextAt;
    while (at + unit <= data.size() && data.substr(at, unit).find_first_not_of('\0') != std::string_view::npos) {
        at += unit;
    }
    return Decoded(encoding, data.substr(std::min(at + unit, data.size())));
}

/// Dates are what ISO 8601 makes them, or any text at all.
bool BeginsWithYear(std::string_view text) {
    return text.size() >= 4 && text.substr(0, 4).find_first_not_of("0123456789") == std::string_view::npos;
}

}  // namespace

bool IsFrameId(std::string_view id) {
    return id.size() == 4 &&
           std::all_of(id.begin(), id.end(), [](char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); });
}

void ID3Texts::Add(std::string_view id, std::string_view data) {
    const auto* const row =
        std::find_if(kFrames.begin(), kFrames.end(), [id](const FrameRow& candidate) { return candidate.mId == id; });
    if (row == kFrames.end()) {
        return;
    }
    const bool isThere = std::any_of(mValues.begin(), mValues.end(), [row](const NativeValue& value) {
        return value.mNamespace == row->mNamespace && value.mProperty == row->mProperty;
    });
    std::string text = isThere ? std::string() : CleanText(TextOf(*row, data));
    if (!text.empty() && (row->mNamespace != kXMP || BeginsWithYear(text))) {
        const char* const name = row->mForm == ValueForm::kLangAlt ? "x-default" : "";
        mValues.push_back({row->mNamespace, row->mProperty, row->mForm, {{name, std::move(text)}}});
    }
}

}  // namespace zephmetadata::media
