#pragma once

#include <string_view>
#include <vector>

#include "zephcore/base.h"

namespace zephcore {

/// The debug settings store: a small JSON file "debug.json" in PrefDir, read at each call, replaced at each write.
/// A missing or damaged file reads as empty.
class DebugDatabase {
public:
    static constexpr std::string_view kTrue = "true";
    static constexpr std::string_view kFalse = "false";

    static DebugDatabase& Instance();
    UTF8String GetEntry(const UTF8String& key, const UTF8String& defaultValue) const;
    /// False when the file could not be written.
    bool SetEntry(const UTF8String& key, const UTF8String& value);
};

/// The name of the host program, written into the history of the files it changes; "zephmetadata" until the host
/// says otherwise. Kept for the life of the process.
ZEPHCORE_EXPORT UTF16String GetSuiteClientName();
ZEPHCORE_EXPORT void SetSuiteClientName(const UTF16String& name);

namespace Locale {
/// The user-interface language as a code such as "en_US", without an encoding or modifier: ZEPHCORE_LANGUAGE, else
/// LC_ALL, LC_MESSAGES, LANG, else "en_US". "C" and "POSIX" count as not set.
ZEPHCORE_EXPORT UTF16String ApplicationLangauge();
}  // namespace Locale

/// The module whose resources are read; the library has one.
enum class Module { kOwn };

/// The names of the documents of @p type ("xml", "dat") built into the module, in byte order.
std::vector<UTF8String> GetResourceNames(Module module, std::string_view type);
/// Fills @p bytes with the named document; false when there is none. A view into static storage.
bool GetBinaryFromModule(Module module, std::string_view name, std::string_view type, std::string_view& bytes);

}  // namespace zephcore
