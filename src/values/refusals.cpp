#include "values/refusals.h"

#include <algorithm>
#include <utility>

#include "values/text_access.h"
#include "xmp/core/xmp_paths.h"
#include "zephcore/localizer.h"
#include "zephcore/text.h"

namespace zephmetadata {

namespace {

constexpr std::u16string_view kNoDefinition = u"$$$/zephmetadata/value/NoDefinition=no definition describes it";
constexpr std::u16string_view kNoList = u"$$$/zephmetadata/edit/NoList=it is no list; set its value";
constexpr std::u16string_view kNoLanguages = u"$$$/zephmetadata/edit/NoLanguages=it holds no texts in languages";
constexpr std::u16string_view kNoLanguageTag =
    u"$$$/zephmetadata/edit/NoLanguageTag=#{quot}@0#{quot} is not a language tag such as de, en-US or x-default";
constexpr std::u16string_view kEmptyItem = u"$$$/zephmetadata/edit/EmptyItem=an item cannot be empty";
constexpr std::u16string_view kEmptyValue =
    u"$$$/zephmetadata/edit/EmptyValue=a value cannot be empty; delete it instead";
constexpr std::u16string_view kNoSource = u"$$$/zephmetadata/edit/NoSource=there is nothing to copy from";
constexpr std::u16string_view kNoTree = u"$$$/zephmetadata/edit/NoTree=there is no metadata to change";
constexpr std::u16string_view kCannot = u"$$$/zephmetadata/edit/Cannot=it cannot be changed like this";

Refusal Because(EditRefusal kind, std::u16string_view key) {
    return {kind, zephcore::ZString(key)};
}

/// The form of RFC 5646: up to eight letters, then up to eight letters and digits behind each hyphen.
bool IsLanguageTag(std::string_view text) {
    constexpr std::size_t kMostLetters = 8;
    const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
    const auto isAllowed = [&](char c) { return isLetter(c) || (c >= '0' && c <= '9'); };
    for (std::size_t begin = 0;; ++begin) {
        const std::string_view part = text.substr(begin, text.find('-', begin) - begin);
        const bool isGood = begin == 0 ? std::all_of(part.begin(), part.end(), isLetter)
                                       : std::all_of(part.begin(), part.end(), isAllowed);
        if (part.empty() || part.size() > kMostLetters || !isGood) {
            return false;
        }
        begin += part.size();
        if (begin == text.size()) {
            return true;
        }
    }
}

/// What would not be written, or as a tag that no reader looks for. One that is there already can be deleted.
Refusal ConsiderLanguage(const ValueEdit& edit) {
    const auto ofPath = toolkit::LanguageItemAt(edit.mPath.mPathDescription);
    const UTF8String language = ofPath && edit.mLanguage.empty() ? ofPath->mLanguage : edit.mLanguage;
    if (edit.mKind != EditKind::kEditKind_Set || (!ofPath && language.empty()) || IsLanguageTag(language)) {
        return {};
    }
    return {EditRefusal::kEditRefusal_NotAllowed, zephcore::ZString(kNoLanguageTag, {zephcore::UTF8to16(language)})};
}

/// Not every format keeps an empty value, and an empty one says nothing.
Refusal ConsiderText(const Path& path, const UTF8String& text, std::u16string_view whyNotEmpty) {
    if (text.empty()) {
        return Because(EditRefusal::kEditRefusal_NotAllowed, whyNotEmpty);
    }
    UTF16String reason = WhyNotAllowed(path, text);
    if (reason.empty()) {
        return {};
    }
    const sp<EntryDefinition> entry = PathEntryDefinition(path);
    const bool hasShape = entry && PrimitiveTypeOfPath(path) && TakesText(*entry);
    return {hasShape ? EditRefusal::kEditRefusal_NotAllowed : EditRefusal::kEditRefusal_NoSuchShape, std::move(reason)};
}

Refusal ConsiderItem(const ValueEdit& edit, const UTF8String& item) {
    return ConsiderText(CreatePathFromArrayItem(edit.mPath, -1), item, kEmptyItem);
}

}  // namespace

Refusal NoTree() {
    return Because(EditRefusal::kEditRefusal_NoTree, kNoTree);
}

Refusal Cannot() {
    return Because(EditRefusal::kEditRefusal_NotAllowed, kCannot);
}

Refusal NoPlace() {
    return Because(EditRefusal::kEditRefusal_NoSuchShape, kCannot);
}

Refusal ConsiderValue(const Path& path, const UTF8String& value) {
    return ConsiderText(path, value, kEmptyValue);
}

Refusal Consider(const ValueEdit& edit) {
    if (!PathEntryDefinition(edit.mPath)) {
        return Because(EditRefusal::kEditRefusal_NoDefinition, kNoDefinition);
    }
    if (!edit.mLanguage.empty() && PrimitiveTypeOfPath(edit.mPath) != kPrimitiveType_Alt) {
        return Because(EditRefusal::kEditRefusal_NoSuchShape, kNoLanguages);
    }
    if (Refusal refusal = ConsiderLanguage(edit); !refusal.IsNone()) {
        return refusal;
    }
    const bool isAboutItems = edit.mKind == EditKind::kEditKind_Add || edit.mKind == EditKind::kEditKind_Remove ||
                              edit.mKind == EditKind::kEditKind_Rename;
    if (isAboutItems && !IsPathAnArray(edit.mPath, true)) {
        return Because(EditRefusal::kEditRefusal_NoSuchShape, kNoList);
    }
    switch (edit.mKind) {
        case EditKind::kEditKind_Set:
            return ConsiderValue(edit.mPath, edit.mValue);
        case EditKind::kEditKind_Add:
            return ConsiderItem(edit, edit.mValue);
        case EditKind::kEditKind_Rename:
            return ConsiderItem(edit, edit.mNewValue);
        case EditKind::kEditKind_Copy:
            return edit.mSource ? Refusal() : Because(EditRefusal::kEditRefusal_NotAllowed, kNoSource);
        default:
            return {};
    }
}

EditOutcome Refused(Refusal why) {
    return {EditResult::kEditResult_Refused, std::move(why.mReason), why.mKind};
}

UTF8String Describe(const EditOutcome& outcome) {
    return zephcore::UTF16to8(zephcore::ResolveDisplayEscapes(outcome.mReason));
}

UTF16String WhyRefused(const ValueEdit& edit) {
    return Consider(edit).mReason;
}

}  // namespace zephmetadata
