#pragma once

#include <cstddef>
#include <initializer_list>
#include <span>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "zephcore/base.h"

namespace zephcore {

/// The process-wide translations of localisation keys. A key is "$$$/group/name=Default text"; its part before the
/// first "=" finds the translation. Not thread-safe: loaded and read by one thread at a time.
class Localizer {
public:
    static Localizer& Get();

    /// The translation of @p key, its default text when there is none, and a text that is no key unchanged.
    UTF16String Translate(std::u16string_view key) const;

    /// Loads a localisation file (docs/localisation.md describes its format). Entries replace earlier ones of the same
    /// key; lines that are no entry are skipped. False when the file cannot be read.
    /// Entries whose key begins with @p keptGroup, when one is given, are left out.
    bool LoadFile(const UTF16String& path, std::u16string_view keptGroup = {});
    /// The same for the bytes of such a file.
    void LoadBuffer(std::string_view bytes, std::u16string_view keptGroup = {});
    /// What is loaded from here on belongs to a layer of its own, above the earlier ones.
    std::size_t BeginLayer();
    /// Takes out what belongs to that layer; what it replaced is back. Cost: linear in all translations.
    void RemoveLayer(std::size_t layer);
    void Clear();

private:
    struct LayerText {
        std::size_t mLayer;
        UTF16String mText;
    };

    std::size_t mLayer = 0;
    std::unordered_map<UTF16String, std::vector<LayerText>> mTranslations;  // the last text of a key holds
};

/// @p textTemplate with @0 to @9 replaced by @p arguments, in one pass: an argument's own "@1" is not replaced.
/// Missing arguments are empty; "@" before anything else stays.
UTF16String ReplaceInString(std::u16string_view textTemplate, std::initializer_list<UTF16String> arguments);
UTF16String ReplaceInString(std::u16string_view textTemplate, std::span<const UTF16String> arguments);

/// The same, but ResolveDisplayEscapes gives the arguments back as they are: they are texts of files, no messages.
UTF16String ReplaceForDisplay(std::u16string_view textTemplate, std::span<const UTF16String> arguments);

/// The translation of @p key with its arguments put in as ReplaceForDisplay does.
UTF16String ZString(std::u16string_view key, std::initializer_list<UTF16String> arguments = {});

/// @p text as it is shown to people: the escapes #{quot}, #{amp}, #{lt}, #{gt}, #{apos} and #{U+XXXX} resolved (1 to 6
/// hexadecimal digits naming a Unicode scalar value); anything else stays.
ZEPHCORE_EXPORT UTF16String ResolveDisplayEscapes(std::u16string_view text);

}  // namespace zephcore
