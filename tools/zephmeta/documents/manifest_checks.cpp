#include <algorithm>
#include <charconv>
#include <filesystem>

#include "documents/document_checks.h"
#include "zephcore/files.h"
#include "zephcore/text.h"
#include "zephmetadata/zephmetadata.h"

namespace zephmeta {

namespace {

namespace fs = std::filesystem;
using namespace zephmetadata;

/// The native name beside the manifest.
fs::path Beside(const DocumentCheck& check, const fs::path& name) {
    return fs::path(check.File()).parent_path() / name;
}

/// Whether a manifest may name a file this way: one in its own folder.
bool IsFileName(const UTF16String& name) {
    return name.find(u'/') == UTF16String::npos && name != u"." && name != u"..";
}

bool HasDocuments(const fs::path& folder) {
    const auto files = zephcore::Dir(zephcore::PathFromNative(folder.native())).Files();
    return std::any_of(files.begin(), files.end(), [](const auto& file) { return file.GetExtension(true) == u".xml"; });
}

bool IsNumber(const std::string& text) {
    float number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
    const bool isDecimal = text.find_first_not_of("-.0123456789") == std::string::npos;
    return error == std::errc() && end == text.data() + text.size() && isDecimal;
}

std::string Quoted(const UTF16String& text) {
    return "\"" + zephcore::UTF16to8(text) + "\"";
}

/// Whether the root element is one that is read; reports it when not.
bool IsInNamespace(DocumentCheck& check, const UTF8String& uri) {
    const RootElement root = RootOf(check.Text());
    if (root.mNamespace != uri) {
        check.Report("the element " + root.mName + " is not read, as it is not in the namespace \"" + uri + "\"");
    }
    return root.mNamespace == uri;
}

void CheckVersion(DocumentCheck& check, const UTF16String& version) {
    if (version.empty()) {
        check.Report("has no version");
    } else if (!IsNumber(zephcore::UTF16to8(version))) {
        check.Report("the version " + Quoted(version) + " is no number; write one such as 1.5");
    }
}

}  // namespace

void CheckExtensionManifest(DocumentCheck& check) {
    ExtensionManifestParser::ManifestInfo info;
    if (!ParseExtensionManifestFromDocument(check.Path(), info) || !IsInNamespace(check, ExtensionNamespaceURI)) {
        return;
    }
    if (info.name.empty()) {
        check.Report("has no name");
    }
    CheckVersion(check, info.version);
    if (!IsFileName(info.locFilePrefix)) {
        check.Report("the locFilePrefix " + Quoted(info.locFilePrefix) + " is no beginning of a file name");
    }
    if (!info.locFilePrefix.empty() && !fs::is_directory(Beside(check, "loc"))) {
        check.Report("has a locFilePrefix, but the package has no folder \"loc\"");
    }
    if (!HasDocuments(Beside(check, "schema")) && !HasDocuments(Beside(check, "view"))) {
        check.Report("the package has no .xml file, neither in \"schema\" nor in \"view\"");
    }
}

void CheckPanelManifest(DocumentCheck& check) {
    GenericPanelManifestParser::ManifestInfo info;
    if (!ParseManifestFromDocument(check.Path(), info) || !IsInNamespace(check, QuilletNamespaceURI)) {
        return;
    }
    // The newest hosts looked at the type, the older ones at library and class.
    const bool isGeneric = info.type == u"generic" || (info.panelLibrary == u"generic" &&
                                                       info.panelClass == u"examples.panels.generic.GenericPanel");
    if (!isGeneric) {
        check.Report("the panel is not generic, so no extension package can be made of it");
    }
    const UTF16String& file = info.propertyDescriptionFile;
    if (file.empty()) {
        check.Report("has no propertyDescriptionFile");
    } else if (!IsFileName(file) || !fs::is_regular_file(Beside(check, zephcore::PathToNative(file)))) {
        check.Report("the propertyDescriptionFile " + Quoted(file) + " is not in the folder of the panel");
    }
}

}  // namespace zephmeta
