#include <algorithm>

#include "media/native/exif/exif_codecs.h"
#include "media/native/exif/exif_numbers.h"
#include "media/native/exif/exif_texts.h"

namespace zephmetadata::media {

namespace {

constexpr std::string_view kDefaultLanguage = "x-default";

NativeItems TextItems(const ExifRow& row, std::string text) {
    if (text.empty()) {
        return {};
    }
    return {{row.mForm == ValueForm::kLangAlt ? std::string(kDefaultLanguage) : std::string{}, std::move(text)}};
}

/// The text that a field can carry of a value: the default language, or the first where none is.
std::optional<std::string_view> CarriedText(const NativeItems& items) {
    const auto found =
        std::find_if(items.begin(), items.end(), [](const NativeItem& item) { return item.mName == kDefaultLanguage; });
    if (found != items.end()) {
        return found->mText;
    }
    return items.empty() ? std::nullopt : std::optional<std::string_view>(items[0].mText);
}

bool TextsAgree(const TiffFields& /*fields*/, const ExifRow& /*row*/, const NativeItems& native,
                const NativeItems& packet) {
    const auto text = CarriedText(packet);
    return text && IsTextOf(native[0].mText, *text);
}

/// Text with its NUL in the type that the field has; a text of blanks alone says nothing, and the field goes.
TiffEdits TextEdits(const TiffFields& fields, const ExifRow& row, std::string_view text) {
    TiffEdits edits;
    if (Stripped(text).empty()) {
        RemoveField(fields, row.mDirectory, row.mTag, edits);
        return edits;
    }
    const TiffField* const field = fields.Find(row.mDirectory, row.mTag);
    const bool isUTF8 = field != nullptr && field->mType == TiffType::kUTF8;
    edits.push_back({row.mDirectory, row.mTag, isUTF8 ? TiffType::kUTF8 : row.mType, std::string(text) + '\0'});
    return edits;
}

NativeItems ReadText(const TiffFields& fields, const ExifRow& row) {
    const TiffField* const field = fields.Find(row.mDirectory, row.mTag);
    return field == nullptr ? NativeItems{} : TextItems(row, FieldText(*field));
}

std::optional<TiffEdits> WriteText(const TiffFields& fields, const ExifRow& row, const NativeItems& items) {
    const auto text = CarriedText(items);
    return text && text->find('\0') == std::string_view::npos ? std::optional(TextEdits(fields, row, *text))
                                                              : std::nullopt;
}

NativeItems ReadCopyright(const TiffFields& fields, const ExifRow& row) {
    const TiffField* const field = fields.Find(row.mDirectory, row.mTag);
    std::string text = field == nullptr ? std::string{} : FieldText(*field);
    if (field == nullptr || (field->mType != TiffType::kAscii && field->mType != TiffType::kUTF8)) {
        return TextItems(row, std::move(text));
    }
    const std::size_t end = field->mBytes.find('\0');
    if (end != std::string::npos) {
        const std::string_view rest = std::string_view(field->mBytes).substr(end + 1);
        const std::string editor = CleanText(rest.substr(0, rest.find('\0')));
        // A photographer who is not named is a space.
        text += editor.empty() ? "" : (text.empty() ? " \n" : "\n") + editor;
    }
    return TextItems(row, std::move(text));
}

/// The first line is the photographer's, what follows the editor's: the guidelines' form of the two parts.
std::optional<TiffEdits> WriteCopyright(const TiffFields& fields, const ExifRow& row, const NativeItems& items) {
    auto edits = WriteText(fields, row, items);
    if (!edits || edits->empty()) {
        return edits;
    }
    std::string& bytes = edits->front().mBytes;
    const std::size_t line = bytes.find('\n');
    if (line != std::string::npos && line > 0 &&
        !Stripped(std::string_view(bytes).substr(line, bytes.size() - line - 1)).empty()) {
        bytes[line] = '\0';
    }
    return edits;
}

// ---- creators

/// One name from the front of the list; a name in quotation marks may hold semicolons, and a mark is doubled in it.
std::string TakeCreator(std::string_view& list) {
    std::string name;
    const std::size_t first = list.find_first_not_of(" \t\r\n");
    list.remove_prefix(std::min(first, list.size()));
    if (!list.starts_with('"')) {
        const std::size_t end = std::min(list.find(';'), list.size());
        name = Stripped(list.substr(0, end));
        list.remove_prefix(std::min(end + 1, list.size()));
        return name;
    }
    std::size_t at = 1;
    for (; at < list.size(); ++at) {
        if (list[at] == '"' && (at + 1 == list.size() || list[at + 1] != '"')) {
            break;
        }
        at += list[at] == '"' ? 1 : 0;
        name += list[at];
    }
    list.remove_prefix(std::min(at, list.size()));
    const std::size_t end = std::min(list.find(';'), list.size());
    list.remove_prefix(std::min(end + 1, list.size()));
    return name;
}

NativeItems SplitCreators(std::string_view list) {
    NativeItems items;
    while (!list.empty() && items.size() < kMaxExifItems) {
        std::string name = TakeCreator(list);
        if (!name.empty()) {
            items.push_back({{}, std::move(name)});
        }
    }
    return items;
}

std::string JoinedCreators(const NativeItems& items) {
    std::string list;
    for (const NativeItem& item : items) {
        const std::string_view name = Stripped(item.mText);
        if (name.empty()) {
            continue;
        }
        list += list.empty() ? "" : "; ";
        if (name.find(';') == std::string_view::npos && name[0] != '"') {
            list += name;
            continue;
        }
        list += '"';
        for (const char c : name) {
            list.append(c == '"' ? 2 : 1, c);
        }
        list += '"';
    }
    return list;
}

NativeItems ReadCreators(const TiffFields& fields, const ExifRow& row) {
    const TiffField* const field = fields.Find(row.mDirectory, row.mTag);
    return field == nullptr ? NativeItems{} : SplitCreators(FieldText(*field));
}

bool CreatorsAgree(const TiffFields& fields, const ExifRow& row, const NativeItems& native, const NativeItems& packet) {
    const NativeItems flat = SplitCreators(JoinedCreators(packet));  // several names in one item count as several
    const TiffField* const field = fields.Find(row.mDirectory, row.mTag);
    const bool isSame = std::equal(native.begin(), native.end(), flat.begin(), flat.end(),
                                   [](const NativeItem& a, const NativeItem& b) { return IsTextOf(a.mText, b.mText); });
    return isSame || (packet.size() == 1 && IsTextOf(FieldText(*field), packet[0].mText));
}

std::optional<TiffEdits> WriteCreators(const TiffFields& fields, const ExifRow& row, const NativeItems& items) {
    const std::string list = JoinedCreators(items);
    return list.find('\0') == std::string::npos ? std::optional(TextEdits(fields, row, list)) : std::nullopt;
}

// ---- texts that name their character set

constexpr std::size_t kCharsetBytes = 8;
constexpr std::string_view kAsciiName{"ASCII\0\0\0", kCharsetBytes};
constexpr std::string_view kUnicodeName{"UNICODE\0", kCharsetBytes};
constexpr std::string_view kJISName{"JIS\0\0\0\0\0", kCharsetBytes};
constexpr std::string_view kNoName{"\0\0\0\0\0\0\0\0", kCharsetBytes};

std::string CharsetText(std::string_view bytes, ByteOrder order) {
    if (bytes.starts_with(kUnicodeName)) {
        return TextOfUTF16(bytes.substr(kCharsetBytes), order);
    }
    const bool isJIS = bytes.starts_with(kJISName);
    if (isJIS || bytes.starts_with(kAsciiName) || bytes.starts_with(kNoName)) {
        bytes.remove_prefix(
            kCharsetBytes);  // any other beginning is of the text itself: some writers leave the name out
    }
    bytes = bytes.substr(0, bytes.find('\0'));
    // JIS X 0208 comes with escape sequences; what has none is ASCII, and only that is understood.
    const bool isUnknown = isJIS && (!IsAscii(bytes) || bytes.find('\x1B') != std::string_view::npos);
    return isUnknown ? std::string{} : CleanText(bytes);
}

NativeItems ReadCharsetText(const TiffFields& fields, const ExifRow& row) {
    return TextItems(row, CharsetText(FieldBytes(fields, row), InnerOrder(fields)));
}

std::optional<TiffEdits> WriteCharsetText(const TiffFields& fields, const ExifRow& row, const NativeItems& items) {
    const auto text = CarriedText(items);
    if (!text || text->find('\0') != std::string_view::npos) {
        return std::nullopt;
    }
    TiffEdits edits;
    if (Stripped(*text).empty()) {
        RemoveField(fields, row.mDirectory, row.mTag, edits);
        return edits;
    }
    std::string bytes = IsAscii(*text) ? std::string(kAsciiName) + std::string(*text)
                                       : std::string(kUnicodeName) + UTF16OfText(*text, InnerOrder(fields));
    edits.push_back({row.mDirectory, row.mTag, TiffType::kUndefined, std::move(bytes)});
    return edits;
}

// ---- versions

constexpr std::size_t kVersionBytes = 4;

NativeItems ReadVersion(const TiffFields& fields, const ExifRow& row) {
    const std::string_view bytes = FieldBytes(fields, row).substr(0, kVersionBytes);
    const bool isText = std::all_of(bytes.begin(), bytes.end(), [](char c) { return c > ' ' && c <= '~'; });
    return isText ? TextItems(row, std::string(bytes)) : NativeItems{};
}

std::optional<TiffEdits> WriteVersion(const TiffFields& /*fields*/, const ExifRow& row, const NativeItems& items) {
    if (items.size() != 1 || items[0].mText.size() != kVersionBytes || !IsAscii(items[0].mText)) {
        return std::nullopt;
    }
    return TiffEdits{{row.mDirectory, row.mTag, row.mType, items[0].mText}};
}

NativeItems ReadDottedVersion(const TiffFields& fields, const ExifRow& row) {
    const TiffField* const field = fields.Find(row.mDirectory, row.mTag);
    if (field == nullptr || field->mBytes.size() != kVersionBytes) {
        return {};
    }
    std::string text;
    for (const char byte : field->mBytes) {
        // "2300" in letters is found as well as the numbers 2 3 0 0.
        const auto number = static_cast<unsigned char>(byte);
        text += (text.empty() ? "" : ".") + std::to_string(number >= '0' && number <= '9' ? number - '0' : number);
    }
    return TextItems(row, text);
}

std::optional<TiffEdits> WriteDottedVersion(const TiffFields& /*fields*/, const ExifRow& row,
                                            const NativeItems& items) {
    TiffEdit edit{row.mDirectory, row.mTag, row.mType, {}};
    std::string_view text = items.size() == 1 ? std::string_view(items[0].mText) : std::string_view{};
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('.'), text.size());
        const auto number = ParseInteger(text.substr(0, end));
        if (!number || *number < 0 || *number >= '0') {
            return std::nullopt;
        }
        edit.mBytes += static_cast<char>(*number);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return edit.mBytes.size() == kVersionBytes ? std::optional(TiffEdits{edit}) : std::nullopt;
}

}  // namespace

const ExifCodec kTextCodec = {"text", &ReadText, &TextsAgree, &WriteText};
const ExifCodec kCopyrightCodec = {"photographer and editor", &ReadCopyright, &TextsAgree, &WriteCopyright};
const ExifCodec kCreatorsCodec = {"names, \"; \" between", &ReadCreators, &CreatorsAgree, &WriteCreators};
const ExifCodec kCharsetTextCodec = {"text with character set", &ReadCharsetText, &TextsAgree, &WriteCharsetText};
const ExifCodec kVersionCodec = {"version", &ReadVersion, &TextsAgree, &WriteVersion};
const ExifCodec kDottedVersionCodec = {"dotted version", &ReadDottedVersion, &TextsAgree, &WriteDottedVersion};

}  // namespace zephmetadata::media
