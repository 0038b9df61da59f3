#include "module.h"

#include "zephmetadata/extensions.h"
#include "zephmetadata/library.h"

PYBIND11_MODULE(_core, module) {
    module.doc() = "The library as the package zephmetadata needs it. Not for use from elsewhere.";
    // Never stopped again: threads that still read when the interpreter goes would have the ground taken from under them.
    try {
        zephmetadata::Initialize();
    } catch (const zephmetadata::XMPError& error) {
        throw pybind11::import_error(error.what());
    }
    zephmetadata::RegisterBundledPackages();
    module.attr("__version__") = zephmetadata::GetLibraryVersion();
    zephpython::AddDefinitions(module);
    zephpython::AddPackages(module);
    zephpython::AddMedia(module);
}
