#include "documents/document_checks.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <set>

#include "console.h"
#include "zephcore/files.h"
#include "zephcore/text.h"
#include "zephmetadata/zephmetadata.h"

namespace zephmeta {

namespace {

namespace fs = std::filesystem;
using namespace zephmetadata;

/// The folder of the extension package that has @p file in its folder @p subfolder.
std::optional<zephcore::Dir> PackageOf(const std::string& file, const char* subfolder) {
    const fs::path folder = fs::absolute(file).lexically_normal().parent_path();
    if (folder.filename() != subfolder || !fs::is_regular_file(folder.parent_path() / "manifest.xml")) {
        return std::nullopt;
    }
    return zephcore::Dir(zephcore::PathFromNative(folder.parent_path().native()));
}

/// The documents of a folder in the order in which they are loaded; only those before @p end, when it is given.
std::vector<UTF16String> Documents(const zephcore::Dir& folder, const std::string& end = {}) {
    std::vector<UTF16String> paths;
    for (const zephcore::File& document : folder.Files()) {
        if (!end.empty() && zephcore::PathToNative(document.GetName()) == fs::path(end).filename()) {
            break;
        }
        if (document.GetExtension(true) == u".xml") {
            paths.push_back(document.FullPath());
        }
    }
    return paths;
}

/// Merging adds properties without a look at their types.
void CheckMergedTypes(Definitions parsed, const Definitions& registered, const UTF16String& path) {
    std::set<UTF8String> checked;
    for (const auto& schema : registered.first) {
        checked.insert(schema->mNamespace);
    }
    std::erase_if(parsed.first, [&](const auto& schema) { return checked.contains(schema->mNamespace); });
    CheckPropertyTypes(parsed.first, path);
}

/// Registers the schema documents of a package; only those before @p end, when it is given.
void RegisterSchemas(const zephcore::Dir& package, const std::string& end = {}) {
    for (const UTF16String& path : Documents(zephcore::Dir(package, u"schema"), end)) {
        RegisterPackageDefinitions(ParseDocumentForDefinitions(path), path);
    }
}

UTF16String NameOf(const zephcore::Dir& package) {
    ExtensionManifestParser::ManifestInfo manifest;
    ParseExtensionManifestFromDocument(zephcore::File(package, u"manifest.xml").FullPath(), manifest);
    return manifest.name;
}

/// The packages that are installed, but for the one that @p package would replace.
std::vector<zephcore::Dir> OtherPackages(const zephcore::Dir& package) {
    LoadAllViewDefinitions();
    const UTF16String name = NameOf(package);
    std::vector<zephcore::Dir> others;
    for (const ExtensionPackage& installed : ExtensionPackages()) {
        if (installed.name != name) {
            others.emplace_back(installed.path);
        }
    }
    return others;
}

/// The types that the library's own packages bring, where all others are loaded already. A package of the name of one of
/// them replaces that.
std::vector<sp<TypeDefinition>> BundledTypes(const zephcore::Dir& package) {
    std::set<UTF8String> known;
    for (const sp<TypeDefinition>& type : RegisteredTypeDefinitions()) {
        known.insert(type->mName);
    }
    RegisterBundledPackages();
    const auto& packages = ExtensionPackages();
    if (std::any_of(packages.begin(), packages.end(), [name = NameOf(package)](const ExtensionPackage& bundled) {
            return bundled.bundled && bundled.name == name;
        })) {
        for (const UTF16String& path : Documents(zephcore::Dir(package, u"schema"))) {
            for (const sp<TypeDefinition>& type : ParseDocumentForDefinitions(path).second) {
                known.insert(type->mName);
            }
        }
    }
    std::vector<sp<TypeDefinition>> types = RegisteredTypeDefinitions();
    std::erase_if(types, [&](const sp<TypeDefinition>& type) { return known.contains(type->mName); });
    return types;
}

/// Starts the library anew, with what comes before the document in its package and with all that other packages define.
void StartWithOtherDefinitions(const zephcore::Dir& package, const std::string& document) {
    const std::vector<zephcore::Dir> others = OtherPackages(package);
    const std::vector<sp<TypeDefinition>> bundled = BundledTypes(package);
    Terminate();
    Initialize();
    RegisterPackageDefinitions({{}, bundled}, {});
    for (const zephcore::Dir& other : others) {
        RegisterSchemas(other);
    }
    RegisterSchemas(package, document);
}

/// Registers the types of the installed packages, but for those that the document @p parsed defines itself.
void RegisterInstalledTypes(const Definitions& parsed) {
    RegisterBundledPackages();
    const std::vector<sp<TypeDefinition>> installed = RegisteredTypeDefinitions();
    Terminate();
    Initialize();
    std::set<UTF8String> known;
    for (const sp<TypeDefinition>& type : parsed.second) {
        known.insert(type->mName);
    }
    for (const sp<TypeDefinition>& type : installed) {
        if (!known.contains(type->mName) && !TypeIdDefinition(type->mName)) {
            RegisterTypeDefinition(type, {});
        }
    }
}

/// The names of the registered views, but for those of an installed package of the same name as @p package, which the
/// package would replace.
std::set<UTF8String> TakenViewNames(const std::optional<zephcore::Dir>& package) {
    std::set<UTF8String> names;
    for (const sp<ViewDefinition>& view : CommonViewDefinitions()) {
        names.insert(view->mName);
    }
    if (!package) {
        return names;
    }
    const UTF16String name = NameOf(*package);
    for (const ExtensionPackage& installed : ExtensionPackages()) {
        if (installed.name == name) {
            std::for_each(installed.views.begin(), installed.views.end(), [&](const auto& view) { names.erase(view); });
        }
    }
    return names;
}

std::string TextOf(const LeafPathFinding& finding) {
    const std::string path = "the path \"" + ExpressionForPath(finding.mPath) + "\" ";
    switch (finding.mProblem) {
        case LeafPathProblem::kUndefined:
            return path + "is not defined";
        case LeafPathProblem::kNotALeaf:
            return path + "has paths below it, of which it says nothing";
        case LeafPathProblem::kRepeated:
            return path + "is there before";
        case LeafPathProblem::kInvalidXML:
            return "invalid XML.";
    }
    return {};
}

/// The value of the attribute @p name in a start tag.
std::string AttributeOf(const std::string& tag, const std::string& name) {
    for (std::size_t at = tag.find(name, 1); at != std::string::npos; at = tag.find(name, at + 1)) {
        const std::size_t equals = tag.find_first_not_of(" \t\r\n", at + name.size());
        const std::size_t quote = equals == std::string::npos ? equals : tag.find_first_of("\"'", equals);
        const bool isWhole = std::string_view(" \t\r\n").find(tag[at - 1]) != std::string_view::npos;
        if (isWhole && quote != std::string::npos && tag[equals] == '=') {
            return tag.substr(quote + 1, tag.find(tag[quote], quote + 1) - quote - 1);
        }
    }
    return {};
}

/// Where the tag that begins at @p start ends; a value in quotes may hold the sign that ends a tag.
std::size_t TagEnd(const std::string& text, std::size_t start) {
    std::size_t end = text.find_first_of("\"'>", start);
    while (end != std::string::npos && text[end] != '>') {
        const std::size_t close = text.find(text[end], end + 1);
        end = close == std::string::npos ? close : text.find_first_of("\"'>", close + 1);
    }
    return std::min(end, text.size());
}

/// The document as UTF-8 where a mark says that it is UTF-16, which is read too.
std::string AsUTF8(const std::string& bytes) {
    const bool isBig = bytes.starts_with("\xFE\xFF");
    if (!isBig && !bytes.starts_with("\xFF\xFE")) {
        return bytes;
    }
    UTF16String text;
    for (std::size_t at = 2; at + 1 < bytes.size(); at += 2) {
        const auto high = static_cast<unsigned char>(bytes[isBig ? at : at + 1]);
        const auto low = static_cast<unsigned char>(bytes[isBig ? at + 1 : at]);
        text += static_cast<char16_t>((high << 8U) | low);
    }
    return zephcore::UTF16to8(text);
}

}  // namespace

RootElement RootOf(const std::string& bytes) {
    const std::string text = AsUTF8(bytes);
    std::size_t at = text.find('<');
    while (at != std::string::npos && at + 1 < text.size() && (text[at + 1] == '?' || text[at + 1] == '!')) {
        const std::string_view end = text.compare(at, 4, "<!--") == 0 ? "-->" : ">";
        at = text.find('<', std::min(text.find(end, at), text.size()));
    }
    if (at == std::string::npos) {
        return {};
    }
    const std::string tag = text.substr(at + 1, TagEnd(text, at) - at - 1);
    const std::string name = tag.substr(0, tag.find_first_of(" \t\r\n/"));
    const std::size_t colon = name.find(':');
    const std::string declaration = colon == std::string::npos ? "xmlns" : "xmlns:" + name.substr(0, colon);
    return {name.substr(colon + 1), AttributeOf(tag, declaration)};
}

DocumentCheck::DocumentCheck(const std::string& file, const std::string& text) : mFile(file), mText(text) {
    Begin();
}

UTF16String DocumentCheck::Path() const {
    return zephcore::PathFromNative(mFile);
}

void DocumentCheck::Begin() {
    mBefore = GetErrorInfos().size();
}

DocumentProblems DocumentCheck::Problems() const {
    DocumentProblems problems = mOwn;
    const std::vector<ErrorInfo> infos = GetErrorInfos();
    for (std::size_t i = mBefore; i < infos.size(); ++i) {
        problems.push_back({infos[i].line, Shown(infos[i].message)});
    }
    std::stable_sort(problems.begin(), problems.end(), [](const DocumentProblem& left, const DocumentProblem& right) {
        return left.mLine < right.mLine;
    });
    return problems;
}

void CheckDefinitions(DocumentCheck& check) {
    const auto package = PackageOf(check.File(), "schema");
    if (package) {
        StartWithOtherDefinitions(*package, check.File());
    } else {
        RegisterInstalledTypes(ParseDocumentForDefinitions(check.Path()));
    }
    check.Begin();
    const Definitions parsed = ParseDocumentForDefinitions(check.Path());
    if (package) {
        CheckMergedTypes(parsed, RegisterPackageDefinitions(parsed, check.Path()), check.Path());
    } else {
        RegisterDefinitions(parsed, check.Path(), false);
    }
    if (parsed.first.empty() && parsed.second.empty() && check.Problems().empty()) {
        check.Report("defines nothing");
    }
}

void CheckViews(DocumentCheck& check) {
    RegisterBundledPackages();
    const auto package = PackageOf(check.File(), "view");
    std::set<UTF8String> names = TakenViewNames(package);
    if (package) {
        RegisterSchemas(*package);
        for (const UTF16String& earlier : Documents(zephcore::Dir(*package, u"view"), check.File())) {
            for (const sp<ViewDefinition>& view : ParseViewDefinitionsFromDocument(earlier)) {
                names.insert(view->mName);
            }
        }
    }
    check.Begin();
    for (const sp<ViewDefinition>& view : ParseViewDefinitionsFromDocument(check.Path())) {
        if (!names.insert(view->mName).second) {
            check.Report("a view named \"" + view->mName + "\" already exists", view->mLine);
        }
    }
}

void CheckPaths(DocumentCheck& check) {
    RegisterBundledPackages();  // with the packages, whose properties have paths too
    check.Begin();
    for (const LeafPathFinding& finding : CheckIncludedLeafPathsFile(check.Path())) {
        check.Report(TextOf(finding), finding.mLine);
    }
}

}  // namespace zephmeta
