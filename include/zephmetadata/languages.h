#pragma once

#include <memory>

#include "zephmetadata/definitions.h"

/// Texts in other languages than that of the user interface, for hosts that serve several readers at once.
namespace zephmetadata {

/// The texts of one language: the built-in ones, those of the packages that are loaded from folders and of custom
/// definitions, as they are when it is made. What has no text in it is English, or what its document says. To be made between Initialize and Terminate,
/// by one thread at a time, as it reads files; afterwards any thread may use it, also after Terminate.
class ZEPHMETADATA_EXPORT Language {
public:
    /// @p code is one such as "de" or "de_AT".
    explicit Language(const UTF8String& code);
    ~Language();
    Language(const Language&) = delete;
    Language& operator=(const Language&) = delete;

private:
    friend class LanguageScope;

    struct Texts;
    std::unique_ptr<Texts> mTexts;
};

/// While it lives, its thread gets texts in another language: labels by the functions below and of views, display texts
/// and dates, messages. Scopes may be nested. Documents and packages are not to be loaded in one: definitions keep the
/// labels of the language that they were read in. To be destroyed by the thread that made it, the innermost first, and
/// before its language.
class ZEPHMETADATA_EXPORT LanguageScope {
public:
    explicit LanguageScope(const Language& language) noexcept;
    ~LanguageScope();
    LanguageScope(const LanguageScope&) = delete;
    LanguageScope& operator=(const LanguageScope&) = delete;

private:
    Language::Texts* mOuter;
};

/// A text for display in the language of the calling thread; that of the user interface without a scope. Escapes stay as
/// in the definition (zephcore::ResolveDisplayEscapes).
ZEPHMETADATA_EXPORT UTF16String LabelOf(const LocalizedTexts& texts);
ZEPHMETADATA_EXPORT UTF16String LabelOf(const ChoiceDefinition& choice);
ZEPHMETADATA_EXPORT UTF16String DescriptionOf(const LocalizedTexts& texts);

}  // namespace zephmetadata
