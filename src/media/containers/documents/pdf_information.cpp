#include "media/containers/documents/pdf_information.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>

#include "media/native/iim/iim_dates.h"
#include "media/native/iim/iim_text.h"
#include "media/native/namespaces.h"

namespace zephmetadata::media {

namespace {

enum class Content : std::uint8_t { kText, kDate, kTrapped };

struct Row {
    const char* mKey;
    std::string_view mNamespace;
    std::string_view mProperty;
    ValueForm mForm;
    Content mContent;
};
constexpr auto kRows = std::to_array<Row>({
    {"/Title", kDC, "title", ValueForm::kLangAlt, Content::kText},
    {"/Author", kDC, "creator", ValueForm::kSeq, Content::kText},
    {"/Subject", kDC, "description", ValueForm::kLangAlt, Content::kText},
    {"/Keywords", kPDF, "Keywords", ValueForm::kSimple, Content::kText},
    {"/Creator", kXMP, "CreatorTool", ValueForm::kSimple, Content::kText},
    {"/Producer", kPDF, "Producer", ValueForm::kSimple, Content::kText},
    {"/CreationDate", kXMP, "CreateDate", ValueForm::kSimple, Content::kDate},
    {"/ModDate", kXMP, "ModifyDate", ValueForm::kSimple, Content::kDate},
    {"/Trapped", kPDF, "Trapped", ValueForm::kSimple, Content::kTrapped},
});

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

/// "D:20050718143045-04'00'" (ISO 32000-2, 7.9.4), of which only the year is sure to be there, as XMP has it.
std::string XMPDateOf(std::string_view text) {
    text.remove_prefix(text.starts_with("D:") ? 2 : 0);
    const auto* const end = std::find_if_not(text.begin(), text.end(), &IsDigit);
    std::string digits(text.begin(), end);
    std::string zone(end, text.end());
    std::erase(zone, '\'');
    zone.resize(zone.starts_with('Z') ? 1 : std::min<std::size_t>(zone.size(), 5));
    zone += zone.size() == 3 ? "00" : "";
    std::string time = digits.size() > 8 ? digits.substr(8) : std::string();
    time.resize(time.empty() ? 0 : 6, '0');
    digits.resize(8, '0');
    const std::optional<IIMDate> date = DateFromIIM(digits, time + (zone == "Z" ? "+0000" : zone));
    return date ? XMPDate(*date) : std::string();
}

std::string TextOf(QPDFObjectHandle value, Content content) {
    if (content == Content::kTrapped) {
        return value.isName() && value.getName() != "/Unknown" ? value.getName().substr(1) : std::string();
    }
    if (!value.isString()) {
        return {};
    }
    const std::string text = value.getUTF8Value();
    if (!IsUTF8(text)) {
        return {};
    }
    return content == Content::kDate ? XMPDateOf(text) : CleanedText(text);
}

}  // namespace

std::vector<NativeValue> PDFInformation(QPDFObjectHandle dictionary) {
    std::vector<NativeValue> values;
    if (!dictionary.isDictionary()) {
        return values;
    }
    for (const Row& row : kRows) {
        std::string text = TextOf(dictionary.getKey(row.mKey), row.mContent);
        if (!text.empty()) {
            const char* const name = row.mForm == ValueForm::kLangAlt ? "x-default" : "";
            values.push_back({row.mNamespace, row.mProperty, row.mForm, {{name, std::move(text)}}});
        }
    }
    return values;
}

}  // namespace zephmetadata::media
