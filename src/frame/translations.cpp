#include "frame/translations.h"

#include <algorithm>
#include <string_view>

#include "zephcore/environment.h"
#include "zephcore/localizer.h"
#include "zephcore/text.h"

namespace zephmetadata {

std::vector<UTF16String> ApplicationLanguages() {
    const UTF16String exact = zephcore::Locale::ApplicationLangauge();
    const UTF16String base = exact.substr(0, exact.find_first_of(u"_-"));
    return base == exact ? std::vector{exact} : std::vector{base, exact};
}

void LoadBuiltInTranslations() {
    for (const UTF16String& language : ApplicationLanguages()) {
        UTF8String name = zephcore::UTF16to8(language);
        std::replace(name.begin(), name.end(), '-', '_');
        std::string_view texts;
        if (zephcore::GetBinaryFromModule(zephcore::Module::kOwn, name, "dat", texts)) {
            zephcore::Localizer::Get().LoadBuffer(texts);
        }
    }
}

}  // namespace zephmetadata
