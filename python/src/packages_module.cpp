#include <pybind11/stl.h>

#include <map>

#include "module.h"
#include "zephcore/files.h"
#include "zephmetadata/extensions.h"

namespace zephpython {

namespace py = pybind11;
using namespace zephmetadata;

namespace {

/// By code; guarded by the GIL.
std::map<std::string, std::shared_ptr<const Language>>& Languages() {
    static std::map<std::string, std::shared_ptr<const Language>> languages;
    return languages;
}

py::list Texts(const std::vector<UTF8String>& texts) {
    py::list list;
    for (const UTF8String& text : texts) {
        list.append(Text(text));
    }
    return list;
}

py::tuple Described(const ExtensionPackage& package) {
    const std::string folder = package.bundled ? std::string() : zephcore::PathToNative(package.path);
    return py::make_tuple(Shown(package.name), package.version, Text(folder), Texts(package.schemas),
                          Texts(package.views), package.bundled);
}

py::list Packages() {
    py::list packages;
    for (const ExtensionPackage& package : ExtensionPackages()) {
        packages.append(Described(package));
    }
    return packages;
}

/// What was loaded, or None, with the problems.
template <typename Source>
py::tuple Load(const Source& source) {
    ErrorScope scope;
    const std::optional<ExtensionPackage> package = LoadExtensionPackage(source);
    InLanguage::Forget();
    py::list problems;
    for (const ErrorInfo& error : scope.Take()) {
        problems.append(Shown(error.message));
    }
    return py::make_tuple(package ? py::object(Described(*package)) : py::none(), problems);
}

py::tuple LoadDocuments(const std::vector<std::pair<std::string, std::string>>& named) {
    std::vector<PackageDocument> documents;
    documents.reserve(named.size());
    for (const auto& [name, text] : named) {
        documents.push_back({zephcore::UTF8to16(name), text});
    }
    return Load(documents);
}

}  // namespace

InLanguage::InLanguage(const std::string& code) {
    constexpr std::size_t kMaxLanguages = 32;
    if (code.empty()) {
        return;
    }
    auto& languages = Languages();
    if (languages.size() == kMaxLanguages && !languages.contains(code)) {
        languages.clear();
    }
    std::shared_ptr<const Language>& language = languages[code];
    if (language == nullptr) {
        language = std::make_shared<const Language>(code);
    }
    mLanguage = language;
    mScope.emplace(*mLanguage);
}

void InLanguage::Forget() {
    Languages().clear();
}

void AddPackages(py::module_& module) {
    module.def("packages", Packages);
    module.def("load_folder", [](const std::string& folder) { return Load(zephcore::PathFromNative(folder)); });
    module.def("load_documents", LoadDocuments);
    module.def("remove_package", [](const std::string& name) {
        InLanguage::Forget();
        return RemoveExtensionPackage(zephcore::UTF8to16(name));
    });
}

}  // namespace zephpython
