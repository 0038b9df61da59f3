#pragma once

#include <pybind11/pybind11.h>

#include <string_view>

#include "zephcore/text.h"
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

void AddDefinitions(pybind11::module_& module);
void AddMedia(pybind11::module_& module);

}  // namespace zephpython
