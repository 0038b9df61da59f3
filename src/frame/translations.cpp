#include "frame/translations.h"

#include <algorithm>
#include <string_view>

#include "zephcore/environment.h"
#include "zephcore/localizer.h"
#include "zephcore/text.h"

namespace zephmetadata {

namespace {

void LoadLanguage(std::string_view language) {
    std::string_view texts;
    if (zephcore::GetBinaryFromModule(zephcore::Module::kOwn, language, "dat", texts)) {
        zephcore::Localizer::Get().LoadBuffer(texts);
    }
}

}  // namespace

void LoadBuiltInTranslations() {
    zephcore::UTF8String language = zephcore::UTF16to8(zephcore::Locale::ApplicationLangauge());
    std::replace(language.begin(), language.end(), '-', '_');
    const std::size_t base = language.find('_');
    LoadLanguage(std::string_view(language).substr(0, base));
    if (base != std::string_view::npos) {
        LoadLanguage(language);
    }
}

}  // namespace zephmetadata
