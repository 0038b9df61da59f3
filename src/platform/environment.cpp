#include "zephcore/environment.h"

#include <algorithm>
#include <cstdlib>
#include <mutex>

#include "platform/environment_locale.h"
#include "platform/thread_language.h"
#include "zephcore/text.h"

namespace zephcore {

namespace {

constexpr std::string_view kEnglish = "en_US";

struct ClientName {
    std::mutex mMutex;
    UTF16String mName = u"zephmetadata";
};

ClientName& Client() {
    static ClientName client;
    return client;
}

}  // namespace

UTF16String GetSuiteClientName() {
    ClientName& client = Client();
    const std::lock_guard lock(client.mMutex);
    return client.mName;
}

void SetSuiteClientName(const UTF16String& name) {
    ClientName& client = Client();
    const std::lock_guard lock(client.mMutex);
    client.mName = name;
}

std::string EnvironmentLocale(std::initializer_list<const char*> variables) {
    if (const ThreadLanguage* const language = CurrentThreadLanguage()) {
        return language->mCode;
    }
    for (const char* const variable : variables) {
        const char* const value = std::getenv(variable);
        std::string_view code = value == nullptr ? "" : value;
        // language[_territory][.encoding][@modifier]
        code = code.substr(0, code.find_first_of(".@"));
        if (!code.empty()) {
            return std::string(code == "C" || code == "POSIX" ? kEnglish : code);
        }
    }
    return std::string(kEnglish);
}

UTF16String Locale::ApplicationLangauge() {
    return UTF8to16(EnvironmentLocale({"ZEPHCORE_LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"}));
}

}  // namespace zephcore
