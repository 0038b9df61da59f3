// Localisation files, and the texts that they hold.
#include "support.h"
#include "zephcore/localizer.h"
#include "zephcore/text.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    zephcore::Localizer localizer;
    localizer.LoadBuffer(fuzz::Text(data, size));
    // The last line as a key finds whatever the file says of it.
    const std::u16string text = zephcore::UTF8to16(fuzz::Text(data, size));
    const std::u16string lastLine = text.substr(text.find_last_of(u'\n') + 1);
    localizer.Translate(lastLine);
    fuzz::Require(localizer.Translate(u"plain") == u"plain", "a text that is no key stays");

    zephcore::ResolveDisplayEscapes(text);
    zephcore::ReplaceInString(text, {u"@1", lastLine});
    fuzz::Require(zephcore::ReplaceInString(u"@0", {text}) == text, "an argument is put in as it is");

    // A file in UTF-16 as the bytes stand.
    localizer.Clear();
    localizer.LoadBuffer("\xFF\xFE" + std::string(fuzz::Text(data, size)));
    fuzz::Require(localizer.Translate(u"$$$/none=default") != u"$$$/none=default", "a key is never shown");
    return 0;
}
