#include <algorithm>
#include <array>
#include <charconv>
#include <iostream>
#include <map>
#include <string_view>

#include "commands/commands.h"
#include "console.h"
#include "json.h"
#include "zephcore/files.h"
#include "zephcore/text.h"
#include "zephmetadata/zephmetadata.h"

namespace zephmeta {

namespace {

using namespace zephmetadata;

/// The names of the kinds of records, in the order of their numbers.
constexpr auto kKindNames = std::to_array<std::string_view>({
    "DefinitionParsingError",
    "DefinitionRegistrationError",
    "ErrorReadingXMP",
    "ErrorWritingXMP",
    "ViewDefinitionParsingError",
    "ViewDefinitionRegistrationError",
    "GenericPanelManifestError",
    "ExtensionManifestParsingError",
    "ExtensionPackageRegistrationError",
});
static_assert(kKindNames.size() == ErrorKind::ExtensionPackageRegistrationError + 1);

/// The shortest text that is this number: 2024.1, not what lies nearest to it.
std::string VersionText(float version) {
    std::array<char, 64> text{};
    const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), version);
    return {text.data(), end};
}

bool LiesIn(const UTF16String& path, const UTF16String& folder) {
    return path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == u'/';
}

/// Whether a record is about packages, by its kind or by the file that it is about.
bool ConcernsPackages(const ErrorInfo& info) {
    return info.kind == ErrorKind::ExtensionManifestParsingError ||
           info.kind == ErrorKind::ExtensionPackageRegistrationError ||
           LiesIn(info.context, CustomExtensionsGlobalDirectory()) ||
           LiesIn(info.context, CustomExtensionsUserDirectory());
}

Json FieldsOf(const ExtensionPackage& package) {
    Json fields = Json::array();
    for (const auto& [type, field] : package.fields) {
        fields.push_back(
            {{"type", type}, {"namespace", field->mNamespace}, {"prefix", field->mPrefix}, {"name", field->mName}});
    }
    return fields;
}

Json ToJson(const ExtensionPackage& package) {
    Json json = {{"name", zephcore::UTF16to8(package.name)},
                 {"version", std::stod(VersionText(package.version))},
                 {"locFilePrefix", zephcore::UTF16to8(package.locFilePrefix)},
                 {"schemas", package.schemas},
                 {"fields", FieldsOf(package)},
                 {"views", package.views}};
    if (!package.bundled) {
        json["path"] = zephcore::PathToNative(package.path);
    }
    return json;
}

void PrintPackagesAsJson() {
    Json packages = Json::array();
    Json bundled = Json::array();
    for (const ExtensionPackage& package : ExtensionPackages()) {
        (package.bundled ? bundled : packages).push_back(ToJson(package));
    }
    Json problems = Json::array();
    for (const ErrorInfo& info : GetErrorInfos()) {
        if (ConcernsPackages(info)) {
            const auto kind = static_cast<std::size_t>(info.kind);
            problems.push_back({{"kind", kKindNames.at(kind)},
                                {"message", Shown(info.message)},
                                {"context", zephcore::PathToNative(info.context)}});
        }
    }
    std::cout << JsonPage({{"packages", packages}, {"bundled", bundled}, {"problems", problems}}) << '\n';
}

std::string Count(std::size_t number, const std::string& thing, const std::string& things) {
    return std::to_string(number) + " " + (number == 1 ? thing : things);
}

/// The registered views by name.
std::map<UTF8String, sp<ViewDefinition>> ViewsByName() {
    std::map<UTF8String, sp<ViewDefinition>> views;
    for (const sp<ViewDefinition>& view : CommonViewDefinitions()) {
        views.emplace(view->mName, view);
    }
    return views;
}

void PrintPackage(const ExtensionPackage& package, const std::map<UTF8String, sp<ViewDefinition>>& views) {
    std::cout << OneLine(zephcore::UTF16to8(package.name)) << "  " << VersionText(package.version) << "  "
              << (package.bundled ? "bundled" : OneLine(zephcore::PathToNative(package.path))) << '\n';
    std::cout << "  " << Count(package.schemas.size(), "schema", "schemas") << '\n';
    for (const UTF8String& uri : package.schemas) {
        // What a package added to a schema of another one cannot be told from what was there.
        const sp<SchemaDefinition> schema = NamespaceDefinition(uri);
        std::cout << "    " << OneLine(schema ? schema->mPrefix : "") << "  " << OneLine(uri) << '\n';
    }
    if (!package.fields.empty()) {
        std::cout << "  " << Count(package.fields.size(), "field of a structure", "fields of structures") << '\n';
    }
    for (const auto& [type, field] : package.fields) {
        std::cout << "    " << OneLine(type) << "  " << OneLine(field->mPrefix + ":" + field->mName) << '\n';
    }
    std::cout << "  " << Count(package.views.size(), "view", "views") << '\n';
    for (const UTF8String& name : package.views) {
        const auto view = views.find(name);
        const std::size_t items = view == views.end() ? 0 : view->second->mItems.size();
        std::cout << "    " << OneLine(name) << "  " << Count(items, "item", "items") << '\n';
    }
}

void PrintPackages() {
    const auto views = ViewsByName();
    for (const ExtensionPackage& package : ExtensionPackages()) {
        PrintPackage(package, views);
    }
    if (std::ranges::all_of(ExtensionPackages(), &ExtensionPackage::bundled)) {
        std::cout << "no extension packages in these folders:\n";
        for (const UTF16String& folder : {CustomExtensionsGlobalDirectory(), CustomExtensionsUserDirectory()}) {
            std::cout << "  " << OneLine(zephcore::PathToNative(folder)) << '\n';
        }
    }
}

}  // namespace

int ShowPackages(bool json) {
    Problems problems;
    if (json) {
        PrintPackagesAsJson();
    } else {
        PrintPackages();
        problems.ReportCollected({});
    }
    return problems.ExitStatus();
}

}  // namespace zephmeta
