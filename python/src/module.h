#pragma once

#include <pybind11/pybind11.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "zephcore/text.h"
#include "zephmetadata/languages.h"
#include "zephmetadata/types.h"

namespace zephpython {

/// A text of a file or a definition. Bytes that are no UTF-8 become lone surrogates, as in names of files.
inline pybind11::str Text(std::string_view text) {
    PyObject* const decoded =
        PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "surrogateescape");
    if (decoded == nullptr) {
        throw pybind11::error_already_set();
    }
    return pybind11::reinterpret_steal<pybind11::str>(decoded);
}

/// A localised text as people see it.
pybind11::str Shown(const zephmetadata::UTF16String& text);

/// Texts come in a language, or, for an empty code, in the user's own. To be made with the GIL held, which is kept.
class InLanguage {
public:
    explicit InLanguage(const std::string& code);
    /// Has texts read anew that are asked for later.
    static void Forget();

private:
    std::shared_ptr<const zephmetadata::Language> mLanguage;
    std::optional<zephmetadata::LanguageScope> mScope;
};

void AddDefinitions(pybind11::module_& module);
void AddPackages(pybind11::module_& module);
void AddMedia(pybind11::module_& module);

}  // namespace zephpython
