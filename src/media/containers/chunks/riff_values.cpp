#include "media/containers/chunks/riff_values.h"

#include <algorithm>
#include <array>

#include "media/native/exif/exif_texts.h"
#include "media/native/namespaces.h"

namespace zephmetadata::media {

namespace {

struct Row {
    std::string_view mField;
    std::string_view mNamespace;
    std::string_view mProperty;
    ValueForm mForm = ValueForm::kSimple;
    bool mIsInFilms = true;     // in AVI files as well as in WAVE files
    bool mIsSeparated = false;  // into keywords
};

constexpr std::array kRows = {
    Row{"IART", kXMPDM, "artist"},
    Row{"ICMT", kXMPDM, "logComment"},
    Row{"ICOP", kDC, "rights", ValueForm::kLangAlt},
    Row{"ICRD", kXMP, "CreateDate"},
    Row{"IENG", kXMPDM, "engineer"},
    Row{"IGNR", kXMPDM, "genre"},
    Row{"INAM", kDC, "title", ValueForm::kLangAlt},
    Row{"ISFT", kXMP, "CreatorTool"},
    Row{"IMED", kDC, "source"},
    Row{"ISRF", kDC, "type", ValueForm::kBag},
    Row{"INAM", kRiffInfo, "name", ValueForm::kLangAlt, false},
    Row{"IPRD", kRiffInfo, "product", ValueForm::kSimple, false},
    Row{"IARL", kRiffInfo, "archivalLocation", ValueForm::kSimple, false},
    Row{"ICMS", kRiffInfo, "commissioned", ValueForm::kSimple, false},
    Row{"IKEY", kDC, "subject", ValueForm::kBag, false, true},
    Row{"ISBJ", kDC, "description", ValueForm::kLangAlt, false},
    Row{"ISRC", kRiffInfo, "source", ValueForm::kSimple, false},
    Row{"ITCH", kRiffInfo, "technician", ValueForm::kSimple, false},
};
constexpr Row kDisplayRow = {"DISP", kDC, "title", ValueForm::kLangAlt};

constexpr std::uint64_t kMaxTextBytes = std::uint64_t{1} << 20U;

/// The fields of all INFO lists.
std::vector<Chunk> InfoFields(const ByteSource& file, const Form& form) {
    std::vector<Chunk> fields;
    for (const Chunk& chunk : form.mChunks.mChunks) {
        if (chunk.Type() != "LIST" || ReadUpTo(file, chunk.mData.mOffset, 4) != "INFO" || chunk.mData.mSize < 4) {
            continue;
        }
        const Chunks inner = ReadChunks(file, {chunk.mData.mOffset + 4, chunk.mData.mSize - 4}, form.mLayout);
        fields.insert(fields.end(), inner.mChunks.begin(), inner.mChunks.end());
    }
    return fields;
}

/// The text of a field from its byte @p from on; empty when there is none.
std::string TextOf(const ByteSource& file, const Chunk& field, std::uint64_t from) {
    if (field.mData.mSize < from || field.mData.mSize > kMaxTextBytes) {
        return {};
    }
    const auto bytes = ReadRange(file, {field.mData.mOffset + from, field.mData.mSize - from});
    return bytes ? CleanText(std::string_view(*bytes).substr(0, bytes->find('\0'))) : std::string();
}

std::vector<NativeItem> Separated(std::string_view text) {
    std::vector<NativeItem> items;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find_first_of(";,"), text.size());
        const std::string_view part = text.substr(0, end);
        const std::size_t first = part.find_first_not_of(' ');
        if (first != std::string_view::npos) {
            items.push_back({{}, std::string(part.substr(first, part.find_last_not_of(' ') + 1 - first))});
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return items;
}

void Add(std::vector<NativeValue>& values, const Row& row, const std::string& text) {
    NativeValue value{row.mNamespace, row.mProperty, row.mForm, {}};
    if (row.mIsSeparated) {
        value.mItems = Separated(text);
    } else if (!text.empty()) {
        value.mItems = {{row.mForm == ValueForm::kLangAlt ? "x-default" : "", text}};
    }
    if (!value.mItems.empty()) {
        values.push_back(std::move(value));
    }
}

}  // namespace

std::vector<NativeValue> RiffValues(const ByteSource& file, const Form& form) {
    constexpr std::uint64_t kClipboardFormatBytes = 4;
    const bool isSound = form.mName == "WAVE";
    std::vector<NativeValue> values;
    std::string display;
    if (const Chunk* const chunk = form.mChunks.Find("DISP")) {
        // 1 is plain text; pictures are others.
        const std::string format = ReadUpTo(file, chunk->mData.mOffset, kClipboardFormatBytes);
        display = format == std::string_view("\1\0\0\0", 4) ? TextOf(file, *chunk, kClipboardFormatBytes) : "";
        Add(values, kDisplayRow, display);
    }
    const std::vector<Chunk> fields = InfoFields(file, form);
    for (const Row& row : kRows) {
        const bool isTitle = row.mNamespace == kDC && row.mProperty == "title";
        // The last of repeated fields goes.
        const auto found = std::find_if(fields.rbegin(), fields.rend(),
                                        [&](const Chunk& field) { return field.Type() == row.mField; });
        if (found != fields.rend() && (isSound || row.mIsInFilms) && !(isTitle && !display.empty())) {
            Add(values, row, TextOf(file, *found, 0));
        }
    }
    return values;
}

}  // namespace zephmetadata::media
