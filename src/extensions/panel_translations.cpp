#include "extensions/panel_translations.h"

#include <cstdint>
#include <string_view>

#include "zephcore/text.h"

namespace zephmetadata {

namespace {

using zephcore::File;

/// Of a file that is read and of one that is written: the localizer reads no larger one.
constexpr std::uint64_t kMaxTranslationsBytes = 16U << 20U;

constexpr std::string_view kUTF8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kLittleEndianMark = "\xFF\xFE";
constexpr std::string_view kBigEndianMark = "\xFE\xFF";

bool WriteUTF16(const UTF16String& text, const File& target) {
    if (sizeof(char16_t) * (text.size() + 1) > kMaxTranslationsBytes) {
        return false;
    }
    zephcore::FileStream stream(target, zephcore::FileStream::Mode::kWrite);
    return stream.WriteText16(u"\uFEFF" + text);
}

/// Writes the localisation file of a package for the bytes of a panel's: UTF-16 stays as it is, UTF-8 becomes it. False
/// for bytes that are neither.
bool Write(std::string_view bytes, const File& target) {
    if (bytes.starts_with(kLittleEndianMark) || bytes.starts_with(kBigEndianMark)) {
        return zephcore::FileUtils::SimpleWriteStringToFile(target.FullPath(), UTF8String(bytes));
    }
    bytes.remove_prefix(bytes.starts_with(kUTF8Mark) ? kUTF8Mark.size() : 0);
    zephcore::TextError error = zephcore::TextError::kNone;
    const UTF16String text = zephcore::UTF8to16(bytes, &error);
    return error == zephcore::TextError::kNone && WriteUTF16(text, target);
}

bool ConvertFile(const File& source, const File& target) {
    const auto bytes = zephcore::FileUtils::ReadFileToString(source.FullPath(), kMaxTranslationsBytes);
    if (bytes && Write(*bytes, target)) {
        return true;
    }
    static_cast<void>(zephcore::FileUtils::RemoveFile(target.FullPath()));
    return false;
}

}  // namespace

bool ConvertTranslations(const PanelFolder& panel, const zephcore::Dir& package, ConversionLog& log) {
    const std::vector<File> sources = panel.Files(u"loc");
    if (sources.empty()) {
        return true;
    }
    const zephcore::Dir folder(package, u"loc");
    if (!folder.Create()) {
        log.Add(Conversion::kTranslationsFolderFailed, panel.FullPath(), folder.FullPath());
        return false;
    }
    bool areAllConverted = true;
    for (const File& source : sources) {
        const File target(folder, source.GetTitle() + u".dict");
        if (!ConvertFile(source, target)) {
            log.Add(Conversion::kTranslationsFailed, panel.FullPath(), target.FullPath());
            areAllConverted = false;
        }
    }
    if (!areAllConverted && folder.Files().empty()) {
        static_cast<void>(folder.Delete());
    }
    return areAllConverted;
}

}  // namespace zephmetadata
