#include "zephmetadata/languages.h"

#include <algorithm>

#include "definitions/loading.h"
#include "extensions/packages.h"
#include "frame/initialization.h"
#include "frame/translations.h"
#include "platform/thread_language.h"
#include "zephcore/xml.h"

namespace zephmetadata {

namespace {

constexpr std::size_t kMaxCodeBytes = 32;

/// The code as files are named by it. What cannot be one, and could lead elsewhere as a part of a path, means English.
std::string PlainCode(std::string code) {
    std::replace(code.begin(), code.end(), '-', '_');
    const bool isCode =
        !code.empty() && code.size() <= kMaxCodeBytes && std::all_of(code.begin(), code.end(), [](char c) {
            return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
        });
    return isCode ? code : "en_US";
}

UTF16String TextInEffect(const UTF16String& key, const UTF16String& loaded) {
    if (zephcore::CurrentThreadLanguage() == nullptr || !key.starts_with(u"$$$/")) {
        return loaded;
    }
    return zephcore::DecodeReservedCharacters(zephcore::Localizer::Get().Translate(key));
}

}  // namespace

struct Language::Texts : zephcore::ThreadLanguage {};

Language::Language(const UTF8String& code) : mTexts(std::make_unique<Texts>()) {
    mTexts->mCode = PlainCode(code);
    const LanguageScope scope(*this);  // what loads texts takes them for this thread's
    if (IsInitialized()) {
        LoadBuiltInTranslations();
        LoadCustomTranslations();
        LoadPackageTranslations();
    }
}

Language::~Language() = default;

LanguageScope::LanguageScope(const Language& language) noexcept
    : mOuter(static_cast<Language::Texts*>(zephcore::CurrentThreadLanguage())) {
    zephcore::CurrentThreadLanguage() = language.mTexts.get();
}

LanguageScope::~LanguageScope() {
    zephcore::CurrentThreadLanguage() = mOuter;
}

UTF16String LabelOf(const LocalizedTexts& texts) {
    return TextInEffect(texts.mLabelZString, texts.mLabel);
}

UTF16String LabelOf(const ChoiceDefinition& choice) {
    return TextInEffect(choice.mLabelZString, choice.mLabel);
}

UTF16String DescriptionOf(const LocalizedTexts& texts) {
    return TextInEffect(texts.mDescriptionZString, texts.mDescription);
}

}  // namespace zephmetadata
