#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

#include "commands/commands.h"
#include "console.h"
#include "zephcore/environment.h"
#include "zephcore/files.h"
#include "zephcore/text.h"
#include "zephmetadata/zephmetadata.h"

namespace zephmeta {

namespace {

namespace fs = std::filesystem;
using namespace zephmetadata;

constexpr std::size_t kMostNameBytes = 255;  // of one file name, on the usual file systems
constexpr std::size_t kMostPrefixLetters = 24;

/// Whether a folder can have this name, and a manifest can carry it.
bool IsFolderName(const std::string& name) {
    zephcore::TextError error = zephcore::TextError::kNone;
    zephcore::UTF8to16(name, &error);
    const bool isPlain = std::none_of(
        name.begin(), name.end(), [](char c) { return c == '/' || static_cast<unsigned char>(c) < 0x20 || c == 0x7F; });
    return !name.empty() && name.size() <= kMostNameBytes && name.front() != '.' && isPlain &&
           error == zephcore::TextError::kNone;
}

/// The letters and digits of @p name as a prefix of XML names.
std::string PrefixOf(const std::string& name) {
    std::string prefix;
    for (const char c : name) {
        const char lower = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        if (((lower >= 'a' && lower <= 'z') || (lower >= '0' && lower <= '9')) && prefix.size() < kMostPrefixLetters) {
            prefix += lower;
        }
    }
    const bool canBegin = !prefix.empty() && prefix.front() >= 'a' && !prefix.starts_with("xml");
    return canBegin ? prefix : "my" + prefix;
}

/// What the package calls its parts; none of the names is taken.
struct PackageNames {
    std::string mPackage;
    std::string mPrefix;

    explicit PackageNames(const std::string& name) : mPackage(name), mPrefix(PrefixOf(name)) {
        const std::string first = mPrefix;
        for (int number = 2; IsTaken(); ++number) {
            mPrefix = first + std::to_string(number);
        }
    }

    std::string Namespace() const { return "http://example.org/" + mPrefix + "/1.0/"; }
    std::string View() const { return "org.example.view." + mPrefix; }

private:
    bool IsTaken() const {
        return !NamespaceForPrefix(mPrefix).empty() || NamespaceDefinition(Namespace()) ||
               GetViewDefinitionForName(View());
    }
};

/// The texts of the package, as keys for its documents and as lines for its localisation file.
class PackageTexts {
public:
    explicit PackageTexts(std::string prefix) : mPrefix(std::move(prefix)) {}

    UTF16String Key(const std::string& name, const std::string& text) {
        const std::string entry = "$$$/" + mPrefix + "/" + name + "=" + text;
        mLines += '"';
        for (const char c : entry) {
            mLines += c == '"' || c == '\\' ? std::string{'\\', c} : std::string{c};
        }
        mLines += "\"\n";
        return zephcore::UTF8to16(entry);
    }

    std::string File() const {
        return "# The texts of this package. Copy the file for each other language, with its code in the name, and "
               "translate what\n# follows the first \"=\" of each line.\n" +
               mLines;
    }

private:
    std::string mPrefix;
    std::string mLines;
};

sp<ChoiceDefinition> Choice(const std::string& value, const UTF16String& label) {
    auto choice = std::make_shared<ChoiceDefinition>();
    choice->mRawValue = value;
    choice->mLabelZString = label;
    return choice;
}

/// A schema with one property of each kind that panels show differently.
sp<SchemaDefinition> ExampleSchema(const PackageNames& names, PackageTexts& texts) {
    const auto property = [&](PrimitiveType type, const std::string& name, const std::string& label,
                              const std::string& description) {
        const UTF16String labelKey = texts.Key(name, label);
        const UTF16String descriptionKey = texts.Key(name + "/description", description);
        return CreateNewProperty(type, name, labelKey, {}, descriptionKey, {});
    };
    sp<SchemaDefinition> schema =
        CreateNewSchema(names.Namespace(), names.mPrefix, texts.Key("schema", names.mPackage), {}, {}, {});
    const auto note = property(kPrimitiveType_Text, "note", "Note", "A few words about the picture.");
    const auto count = property(kPrimitiveType_Integer, "count", "Count", "How many there are; not below zero.");
    count->mMin = 0;
    const auto state = property(kPrimitiveType_ClosedChoice, "state", "State", "How far the work is.");
    state->mElementType = kTypeText;
    state->mChoices = {Choice("draft", texts.Key("state/draft", "Draft")),
                       Choice("final", texts.Key("state/final", "Final"))};
    schema->mProperties = {note, count, state};
    return schema;
}

bool WriteText(const fs::path& path, const std::string& text) {
    std::error_code ignored;
    fs::create_directories(path.parent_path(), ignored);
    std::ofstream out(path, std::ios::binary);
    out << text;
    out.close();
    return out.good();
}

using ManifestInfo = GenericPanelManifestParser::ManifestInfo;

ManifestInfo Manifest(const PackageNames& names) {
    ManifestInfo info;
    info.name = zephcore::UTF8to16(names.mPackage);
    info.version = u"1.0";
    info.localizationFile = zephcore::UTF8to16(names.mPrefix);
    return info;
}

/// What the writer of views takes for the attributes of the view.
ManifestInfo ViewAttributes(const PackageNames& names, PackageTexts& texts) {
    ManifestInfo info;
    info.name = zephcore::UTF8to16(names.View());
    info.label = texts.Key("view", names.mPackage);
    info.description = texts.Key("view/description", "The note, the count and the state of a picture.");
    return info;
}

/// A built-in property among those of the package: views may show any.
sp<SchemaDefinition> TitleAlone() {
    auto schema = std::make_shared<SchemaDefinition>();
    const sp<SchemaDefinition> builtIn = NamespaceDefinition(StandardSchemaNamespace(kStandardSchema_DC));
    schema->mNamespace = builtIn->mNamespace;
    schema->mPrefix = builtIn->mPrefix;
    std::copy_if(builtIn->mProperties.begin(), builtIn->mProperties.end(), std::back_inserter(schema->mProperties),
                 [](const auto& property) { return property->mName == "title"; });
    return schema;
}

/// Writes all files below @p folder; whether all are there.
bool WritePackage(const PackageNames& names, const fs::path& folder) {
    PackageTexts texts(names.mPrefix);
    const auto path = [&](const fs::path& name) { return zephcore::PathFromNative((folder / name).native()); };
    const fs::path document = names.mPrefix + ".xml";
    const fs::path language = zephcore::PathToNative(zephcore::Locale::ApplicationLangauge());
    const sp<SchemaDefinition> schema = ExampleSchema(names, texts);
    const ManifestInfo view = ViewAttributes(names, texts);
    const bool haveFolders =
        WriteExtensionManifest(Manifest(names), path("manifest.xml")) &&
        WriteSchemaFile({{schema}, {}}, zephcore::File(path("schema" / document))) &&
        WriteViewDefinitionsFileFromSchema({schema, TitleAlone()}, {}, view, path("view" / document)) &&
        WriteText(folder / "loc" / (names.mPrefix + "_" + language.native() + ".dict"), texts.File());
    const auto files = std::to_array<fs::path>({"manifest.xml", "schema" / document, "view" / document});
    return haveFolders &&
           std::all_of(files.begin(), files.end(), [&](const auto& file) { return fs::exists(folder / file); });
}

void PrintNextSteps(const PackageNames& names, const fs::path& folder, bool isInstalled) {
    std::cout << OneLine(folder.native()) << ": written\n"
              << "  schema/" << names.mPrefix << ".xml says what the values are, view/" << names.mPrefix
              << ".xml how panels show them,\n  loc/ holds their texts; \"zephmeta check\" reads each of them.\n";
    if (!isInstalled) {
        std::cout << "  To install it, copy or link the folder into\n    "
                  << OneLine(zephcore::PathToNative(CustomExtensionsUserDirectory())) << '\n';
    }
    std::cout << "Next:\n  zephmeta packages\n  zephmeta set FILE " << names.mPrefix << ":note=\"...\"\n"
              << "  zephmeta panel FILE --view " << names.View() << '\n';
}

/// Why there can be no such package; empty when there can.
std::string Objection(const std::string& name, const fs::path& folder) {
    if (!IsFolderName(name)) {
        return "\"" + name + "\" cannot be the name of a folder";
    }
    std::error_code ignored;
    if (fs::exists(fs::symlink_status(folder, ignored))) {
        return folder.native() + " exists already";
    }
    for (const ExtensionPackage& package : ExtensionPackages()) {
        if (zephcore::UTF16to8(package.name) == name) {
            return package.bundled ? "a package of this name comes with the library"
                                   : "a package of this name is installed in " + zephcore::PathToNative(package.path);
        }
    }
    return {};
}

}  // namespace

int NewPackage(const PackageRequest& request) {
    Problems problems;
    problems.ReportCollected({});
    const fs::path user = zephcore::PathToNative(CustomExtensionsUserDirectory());
    const fs::path parent = request.mFolder.empty() ? user : fs::path(request.mFolder);
    const fs::path folder = parent / request.mName;
    if (const std::string objection = Objection(request.mName, folder); !objection.empty()) {
        problems.Report({}, objection);
        return problems.ExitStatus();
    }
    const PackageNames names(request.mName);
    std::error_code error;
    const bool isMade = fs::create_directories(folder, error);
    if (isMade && WritePackage(names, folder)) {
        PrintNextSteps(names, folder, fs::equivalent(parent, user, error));
        return problems.ExitStatus();
    }
    if (isMade) {
        fs::remove_all(folder, error);
    }
    problems.Report(folder.native(), "could not be written");
    return problems.ExitStatus();
}

}  // namespace zephmeta
