#include <array>
#include <charconv>

#include "zephcore/localizer.h"
#include "zephcore/text.h"
#include "zephmetadata/languages.h"
#include "zephmetadata/views.h"

namespace zephmetadata {

namespace {

UTF8String NumberText(double value, int digits) {
    std::array<char, 64> buffer{};
    const auto [end, error] =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::general, digits);
    return error == std::errc() ? UTF8String(buffer.data(), end) : UTF8String();
}

/// @p text localised, else the text of the definition at @p path.
UTF16String TextOrDefinition(const UTF8String& text, const Path& path,
                             UTF16String (*ofDefinition)(const LocalizedTexts&)) {
    if (!text.empty()) {
        return zephcore::Localizer::Get().Translate(zephcore::UTF8to16(text));
    }
    const sp<EntryDefinition> entry = PathEntryDefinition(path);
    return entry ? ofDefinition(*entry) : UTF16String();
}

}  // namespace

namespace parameters {

UTF8String ToText(int value) {
    return std::to_string(value);
}

UTF8String ToText(bool value) {
    return value ? "true" : "false";
}

UTF8String ToText(float value) {
    constexpr int kDigits = 12;
    return NumberText(value, kDigits);
}

UTF8String ToText(double value) {
    constexpr int kDigits = 17;
    return NumberText(value, kDigits);
}

void FromText(const UTF8String& text, int& value) {
    std::string_view digits = text;
    digits.remove_prefix(std::min(digits.find_first_not_of(" \t\r\n\f\v"), digits.size()));
    const bool hasPlus = digits.starts_with('+') && !digits.starts_with("+-");
    digits.remove_prefix(hasPlus ? 1 : 0);
    value = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), value);
}

void FromText(const UTF8String& text, bool& value) {
    value = text == "true";
}

void FromText(const UTF8String& text, float& value) {
    value = static_cast<float>(zephcore::StringToNumber(zephcore::UTF8to16(text)));
}

void FromText(const UTF8String& text, double& value) {
    value = zephcore::StringToNumber(zephcore::UTF8to16(text));
}

}  // namespace parameters

ViewItem::ViewItem() = default;
ViewItem::ViewItem(Path path) : mPath(std::move(path)) {}
ViewItem::ViewItem(QualifiedName name) : mQualifiedName(std::move(name)) {}
ViewItem::ViewItem(UTF8String widgetName) : mWidgetName(std::move(widgetName)) {}
ViewItem::ViewItem(const ViewItem& other) = default;
ViewItem::ViewItem(ViewItem&& other) noexcept = default;
ViewItem& ViewItem::operator=(const ViewItem& other) = default;
ViewItem& ViewItem::operator=(ViewItem&& other) noexcept = default;
ViewItem::~ViewItem() = default;

void ViewItem::AddItem(sp<ViewItem> item) {
    mChildItems.push_back(std::move(item));
}

Path ViewItem::GetPath() const {
    return mPath;
}

UTF16String ViewItem::GetLabel() const {
    return TextOrDefinition(mLabel, mPath, LabelOf);
}

UTF16String ViewItem::GetDescription() const {
    return TextOrDefinition(mDescription, mPath, DescriptionOf);
}

ViewBuilderInterface::~ViewBuilderInterface() = default;

UTF16String LocalizedText(const UTF8String& text, const std::vector<UTF16String>& arguments) {
    UTF16String localized = zephcore::Localizer::Get().Translate(zephcore::UTF8to16(text));
    return arguments.empty() ? localized : zephcore::ReplaceForDisplay(localized, arguments);
}

}  // namespace zephmetadata
