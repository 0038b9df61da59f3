#include "command_line.h"

#include <array>
#include <cstdlib>
#include <map>
#include <memory>

#include "commands.h"
#include "media_file.h"
#include "session.h"
#include "zephcore/environment.h"

namespace zephmeta {

namespace {

/// The arguments of a command live as long as the command does, in what it runs.
template <typename Arguments>
std::shared_ptr<Arguments> Kept() {
    return std::make_shared<Arguments>();
}

using Texts = std::vector<std::string>;

}  // namespace

CommandLine::CommandLine(CLI::App& app) : mApp(app) {
    AddCommonOptions(app);
    AddReading();
    AddWriting();
    AddPanels();
    AddRegistry();
    AddAuthoring();
    AddPackages();
    AddConversion();
}

void CommandLine::AddCommonOptions(CLI::App& app) {
    app.add_flag("--json", mJson, "Print JSON instead of text");
    app.add_option("--lang", mLanguage, "Language of labels and texts, for example de or fr_FR")->type_name("LANG");
}

CLI::App* CommandLine::Add(CLI::App& parent, const char* name, const char* description, const char* example) {
    CLI::App* const command = parent.add_subcommand(name, description);
    command->footer(std::string("Example:\n  ") + example);
    AddCommonOptions(*command);
    return command;
}

void CommandLine::AddSidecarOption(CLI::App* command) {
    using namespace zephmetadata;
    static const std::map<std::string, SidecarPolicy> policies = {
        {"never", kSidecarPolicy_Never}, {"auto", kSidecarPolicy_Automatic}, {"always", kSidecarPolicy_Always}};
    command
        ->add_option("--sidecar", mSidecars,
                     "auto: read the sidecar beside a file and change it where there is one or where the format cannot "
                     "be written; never: the file alone; always: change sidecars only")
        ->transform(CLI::CheckedTransformer(policies))
        ->type_name("never|auto|always")
        ->default_str("auto");
}

void CommandLine::OnRunAlone(CLI::App* command, std::function<int()> run) {
    command->final_callback([this, run = std::move(run)] {
        if (!mLanguage.empty()) {
            setenv("ZEPHCORE_LANGUAGE", mLanguage.c_str(), 1);
        }
        zephcore::SetSuiteClientName(u"zephmeta");
        UseSidecars(mSidecars);
        mStatus = run();
    });
}

void CommandLine::OnRun(CLI::App* command, std::function<int()> run) {
    OnRunAlone(command, [run = std::move(run)] {
        const FullSession session;
        return run();
    });
}

void CommandLine::AddReading() {
    CLI::App* const dump = Add(mApp, "dump", "Print every value of the files", "zephmeta dump photo.jpg");
    const auto dumped = Kept<Texts>();
    dump->add_option("FILE", *dumped, "Media files and .xmp sidecars")->required();
    AddSidecarOption(dump);
    OnRun(dump, [this, dumped] { return Dump(*dumped, mJson); });

    struct GetRequest {
        Texts mArguments;
        bool mRaw = false;
    };
    CLI::App* const get =
        Add(mApp, "get", "Print the values at some paths, one a line; of several files what all share",
            "zephmeta get photo.jpg dc:title dc:subject[1] xmp:Rating");
    const auto wanted = Kept<GetRequest>();
    get->add_option("FILE|PATH", wanted->mArguments,
                    "Media files and .xmp sidecars, then prefix:name, prefix:name[2], prefix:struct/prefix:field")
        ->required();
    get->add_flag("--raw", wanted->mRaw, "Print the stored text instead of the display text");
    AddSidecarOption(get);
    OnRun(get, [this, wanted] { return Get(wanted->mArguments, wanted->mRaw, mJson); });

    CLI::App* const validate =
        Add(mApp, "validate", "Hold the XMP of files against the definitions", "zephmeta validate photo.jpg");
    const auto validated = Kept<Texts>();
    validate->add_option("FILE", *validated, "Media files and .xmp sidecars")->required();
    AddSidecarOption(validate);
    OnRun(validate, [this, validated] { return Validate(*validated, mJson); });
}

void CommandLine::AddWriting() {
    CLI::App* const set = Add(mApp, "set", "Change values and write the files",
                              "zephmeta set photo.jpg dc:title=\"New\" --add dc:subject=pier xmp:Rating=2");
    const auto edits = Kept<SetRequest>();
    set->add_option("FILE|PATH=VALUE", edits->mArguments, "Files to change, and values to set in each of them")
        ->required();
    set->add_option("--add", edits->mAdditions, "Append an item to a list")
        ->type_name("PATH=VALUE")
        ->allow_extra_args(false);
    set->add_option("--delete", edits->mDeletions, "Remove a value, an item or a language")
        ->type_name("PATH")
        ->allow_extra_args(false);
    AddSidecarOption(set);
    OnRun(set, [this, edits] { return Set(*edits, mJson); });

    using namespace zephmetadata;
    static const std::map<std::string, TemplateImportOptions> modes = {
        {"add", kTemplateImport_Add}, {"replace", kTemplateImport_Replace}, {"clear", kTemplateImport_ClearAndReplace}};
    CLI::App* const apply = Add(mApp, "apply", "Merge the XMP of a template into files and write them",
                                "zephmeta apply template.xmp photo.jpg --mode replace --dry-run");
    const auto merge = Kept<ApplyRequest>();
    apply->add_option("TEMPLATE", merge->mTemplate, "A sidecar, or a media file with the values to apply")->required();
    apply->add_option("FILE", merge->mFiles, "Files to change")->required();
    apply
        ->add_option("--mode", merge->mMode,
                     "add: only what a file lacks; replace: what the template has; clear: as replace, and remove "
                     "everything that people edit and the template lacks")
        ->transform(CLI::CheckedTransformer(modes))
        ->type_name("add|replace|clear")
        ->default_str("add");
    apply->add_flag("--dry-run", merge->mDryRun, "List what would change, and write nothing");
    AddSidecarOption(apply);
    OnRun(apply, [this, merge] { return Apply(*merge, mJson); });
}

void CommandLine::AddPanels() {
    CLI::App* const panel = Add(mApp, "panel", "Show files as a panel of an editor would, several as one",
                                "zephmeta panel photo.jpg --view camera");
    const auto request = Kept<PanelRequest>();
    panel->add_option("FILE", request->mFiles, "Media files and .xmp sidecars")->required();
    CLI::Option* const view = panel->add_option("--view", request->mView, "The view, for example basic, camera or gps")
                                  ->type_name("NAME")
                                  ->capture_default_str();
    panel->add_flag("--all", request->mAll, "Every view, one after the other")->excludes(view);
    panel->add_option("--format", request->mFormat, "text, html (one page to pass on) or json")
        ->check(CLI::IsMember({"text", "html", "json"}))
        ->type_name("FORMAT")
        ->capture_default_str();
    AddSidecarOption(panel);
    OnRun(panel, [this, request] {
        request->mFormat = mJson ? "json" : request->mFormat;
        return ShowPanel(*request);
    });
}

void CommandLine::AddRegistry() {
    CLI::App* const formats =
        Add(mApp, "formats", "List the media formats with what can be read and written", "zephmeta formats");
    OnRunAlone(formats, [this] { return ShowFormats(mJson); });

    struct ListRow {
        const char* mName;
        const char* mDescription;
        const char* mExample;
        const char* mArgument;
        const char* mArgumentDescription;
        int (*mShow)(const std::string& name, bool json);
    };
    static const auto rows = std::to_array<ListRow>({
        {"schemas", "List the schemas, or the properties of one", "zephmeta schemas dc", "PREFIX",
         "The prefix of one schema", ShowSchemas},
        {"types", "List the value types, or what one is made of", "zephmeta types thumbnail", "ID",
         "The id of one type", ShowTypes},
        {"views", "List the views, or the items of one", "zephmeta views camera", "NAME", "The name of one view",
         ShowViews},
    });
    for (const ListRow& row : rows) {
        CLI::App* const list = Add(mApp, row.mName, row.mDescription, row.mExample);
        const auto name = Kept<std::string>();
        list->add_option(row.mArgument, *name, row.mArgumentDescription);
        OnRun(list, [this, name, show = row.mShow] { return show(*name, mJson); });
    }
}

void CommandLine::AddAuthoring() {
    CLI::App* const check =
        Add(mApp, "check", "Report the problems of definitions, views, manifests and path documents",
            "zephmeta check my_schema.xml my_view.xml");
    const auto documents = Kept<Texts>();
    check->add_option("DOCUMENT", *documents, "Documents to read")->required();
    OnRunAlone(check, [this, documents] { return CheckDocuments(*documents, mJson); });

    CLI::App* const schema = mApp.add_subcommand("schema", "Write a definitions document without writing XML");
    schema->require_subcommand(1);
    CLI::App* const create = Add(*schema, "new", "Make a document with an empty schema",
                                 "zephmeta schema new tides.xml --namespace http://example.org/tides/ --prefix tides");
    const auto made = Kept<SchemaRequest>();
    create->add_option("DOCUMENT", made->mFile, "The file to make")->required();
    create->add_option("--namespace", made->mNamespace, "The namespace URI")->required();
    create->add_option("--prefix", made->mPrefix, "The prefix that people write")->required();
    create->add_option("--label", made->mLabel, "The name that panels show");
    create->add_option("--description", made->mDescription, "What the schema is for");
    OnRun(create, [made] { return NewSchema(*made); });

    CLI::App* const add = Add(*schema, "add-property", "Add a property to a schema of a document",
                              "zephmeta schema add-property tides.xml height --type real --label \"Tide Height\"");
    const auto property = Kept<PropertyRequest>();
    add->add_option("DOCUMENT", property->mFile, "The file to change")->required();
    add->add_option("NAME", property->mName, "The name of the property")->required();
    using TextOption = std::pair<const char*, std::pair<std::string*, const char*>>;
    const auto options = std::to_array<TextOption>({
        {"--type", {&property->mType, "Its type; \"zephmeta types\" lists them"}},
        {"--element-type", {&property->mElementType, "The type of an array's items or a choice's values"}},
        {"--label", {&property->mLabel, "The name that panels show"}},
        {"--description", {&property->mDescription, "What its values mean"}},
        {"--pattern", {&property->mPattern, "A regular expression that its values match"}},
        {"--min", {&property->mMin, "The least number"}},
        {"--max", {&property->mMax, "The greatest number"}},
        {"--prefix", {&property->mPrefix, "The schema, where the document has several"}},
    });
    for (const auto& [name, option] : options) {
        add->add_option(name, *option.first, option.second)->capture_default_str();
    }
    add->add_option("--choice", property->mChoices, "One value of a choice, with its label")
        ->type_name("VALUE=LABEL")
        ->allow_extra_args(false);
    add->add_flag("--internal", property->mInternal, "Kept by programs rather than edited by people");
    OnRun(add, [property] { return AddProperty(*property); });

    CLI::App* const show =
        Add(*schema, "show", "Print a document as it would be written", "zephmeta schema show tides.xml");
    const auto shown = Kept<std::string>();
    show->add_option("DOCUMENT", *shown, "A definitions document")->required();
    OnRun(show, [shown] { return ShowSchemaDocument(*shown); });
}

void CommandLine::AddPackages() {
    CLI::App* const packages =
        Add(mApp, "packages", "List the extension packages and what each brought", "zephmeta packages --json");
    OnRun(packages, [this] { return ShowPackages(mJson); });

    CLI::App* const package = mApp.add_subcommand("package", "Begin an extension package");
    package->require_subcommand(1);
    CLI::App* const create = Add(*package, "new", "Lay out a package that works, to be changed with an editor",
                                 "zephmeta package new \"Tide Table\"");
    const auto made = Kept<PackageRequest>();
    create->add_option("NAME", made->mName, "The name of the package and of its folder")->required();
    create->add_option("--folder", made->mFolder, "Where to put it instead of the folder for your own packages")
        ->type_name("DIR");
    OnRun(create, [made] { return NewPackage(*made); });
}

void CommandLine::AddConversion() {
    using namespace zephmetadata;
    static const std::map<std::string, OrbVersion> generations = {
        {"4.0", kOrbVersion_4_0}, {"3.0", kOrbVersion_3_0}, {"2.0", kOrbVersion_2_0}};
    CLI::App* const convert =
        Add(mApp, "convert-panels", "Make extension packages of the generic panels of older hosts", "");
    convert->footer(
        "Reads the subfolders of \"Corvid/XMP/Custom Quillet Panels/GENERATION/panels\" and writes a folder for each\n"
        "generic panel into \"Corvid/XMP/Metadata Extensions\": of your panels in your settings, of the machine-wide\n"
        "ones in the machine-wide folder. A package that is there already stays as it is.\n\n"
        "Example:\n  zephmeta convert-panels --generation 4.0");
    const auto generation = Kept<std::string>();
    convert->add_option("--generation", *generation, "The hosts that the panels were made for: 4.0, 3.0 or 2.0")
        ->required()
        ->check(CLI::IsMember(&generations))
        ->type_name("GENERATION");
    OnRun(convert, [this, generation] { return ConvertPanels(generations.at(*generation), mJson); });
}

}  // namespace zephmeta
