#include "command_line.h"

#include <array>
#include <cstdlib>
#include <map>
#include <memory>

#include "commands/commands.h"
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

/// Has one of some words stand for its value. The help says nothing of the values behind the words.
template <typename Value>
CLI::Validator OneOf(const std::map<std::string, Value>& values) {
    const auto replaced = [&values](std::string& word) {
        std::string words;
        for (const auto& [known, value] : values) {
            if (known == word) {
                word = std::to_string(static_cast<int>(value));
                return std::string();
            }
            words.append(words.empty() ? "" : ", ").append(known);
        }
        return "\"" + word + "\" is none of " + words;
    };
    return CLI::Validator(replaced, {});
}

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
    AddLanguageOption(app);
}

void CommandLine::AddLanguageOption(CLI::App& app) {
    app.add_option("--lang", mLanguage, "Language of labels and texts, for example de or fr_FR")->type_name("LANG");
}

CLI::App* CommandLine::Add(CLI::App& parent, const char* name, const char* description, const char* example) {
    CLI::App* const command = parent.add_subcommand(name, description);
    command->footer(std::string("Examples:\n  ") + example);
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
        ->transform(OneOf(policies))
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

void CommandLine::AddBatchOptions(CLI::App* command, BatchOptions& options, const char* files) {
    if (files != nullptr) {
        command
            ->add_option(files, options.mFiles.mNames,
                         "Media files, .xmp sidecars, folders with -r, @LIST, or - for a list on standard input")
            ->required();
    }
    command->add_flag("-r,--recursive", options.mFiles.mRecursive, "Take the files in folders, and in folders in them");
    command->add_option("--ext", options.mFiles.mExtensions, "Of the files in folders only those with these extensions")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->type_name("jpg,heic");
    command->add_flag("-0,--null", options.mFiles.mNulSeparated,
                      "Names in lists end with NUL bytes instead of line ends");
    AddWorkOptions(command, options);
}

void CommandLine::AddWorkOptions(CLI::App* command, BatchOptions& options) {
    command
        ->add_option("--if", options.mCondition,
                     "Only files for which this holds, for example: xmp:Rating>=4 and missing dc:rights")
        ->type_name("CONDITION");
    AddRunOptions(command, options);
    AddSidecarOption(command);
}

void CommandLine::AddRunOptions(CLI::App* command, BatchOptions& options) {
    command->add_option("-j,--jobs", options.mJobs, "How many files are worked on at once (as many as there are cores)")
        ->check(CLI::Range(1, 1024))
        ->type_name("N");
    command->add_flag("--ordered", options.mOrdered, "Print results in the order of the files");
    CLI::Option* const quiet = command->add_flag("-q,--quiet", options.mQuiet, "Print problems alone");
    command->add_flag("-v,--verbose", options.mVerbose, "Print every change, and a summary")->excludes(quiet);
}

void CommandLine::AddWritingOptions(CLI::App* command, WritingOptions& options) {
    command->add_flag("--dry-run", options.mDryRun, "Print what would change, and write nothing");
    command->add_flag("--backup{.orig}", options.mBackup, "Keep a copy of each file before it changes (FILE.orig)")
        ->type_name("SUFFIX");
    command->add_flag("--keep-time", options.mKeepTime, "Leave the modification time of the files as it is");
}

void CommandLine::AddReading() {
    CLI::App* const dump =
        Add(mApp, "dump", "Print every value of the files",
            "zephmeta dump photo.jpg\n  zephmeta dump --json -r Pictures\n  zephmeta dump --lang de *.heic");
    const auto dumped = Kept<BatchOptions>();
    AddBatchOptions(dump, *dumped, "FILE");
    OnRun(dump, [this, dumped] {
        dumped->mJson = mJson;
        return Dump(*dumped);
    });
    AddFind();
    CLI::App* const validate = Add(mApp, "validate", "Hold the XMP of files against the definitions",
                                   "zephmeta validate photo.jpg\n  zephmeta validate --native photo.jpg\n"
                                   "  zephmeta validate --json -r Pictures");
    const auto checked = Kept<BatchOptions>();
    const auto native = Kept<bool>();
    validate->add_flag("--native", *native, "Hold what stands in Exif and IPTC alone against them too");
    AddBatchOptions(validate, *checked, "FILE");
    OnRun(validate, [this, checked, native] {
        checked->mJson = mJson;
        return Validate(*checked, *native);
    });
    CLI::App* const get =
        Add(mApp, "get", "Print the values at some paths: one a line for one file, a line a file for several",
            "zephmeta get photo.jpg dc:title \"dc:subject[1]\" xmp:Rating\n"
            "  zephmeta get --csv -r Pictures exif:Model exif:FNumber\n"
            "  zephmeta get --together a.jpg b.jpg dc:rights");
    const auto wanted = Kept<GetRequest>();
    get->add_option("FILE|PATH", wanted->mArguments,
                    "Files, and paths as prefix:name, prefix:name[2], prefix:struct/prefix:field")
        ->required();
    get->add_flag("--raw", wanted->mRaw, "Print the stored text instead of the display text");
    CLI::Option* const csv = get->add_flag("--csv", wanted->mCSV, "Print a table with commas (RFC 4180) and a header");
    get->add_flag("--tsv", wanted->mTSV, "Print a table with tabs and a header")->excludes(csv);
    get->add_flag("--together", wanted->mTogether, "Print what all files share, and where they differ, as one answer");
    AddBatchOptions(get, wanted->mBatch, nullptr);
    OnRun(get, [this, wanted] {
        wanted->mBatch.mJson = mJson;
        return Get(*wanted);
    });

    CLI::App* const extract = Add(mApp, "extract", "Write the XMP of files as sidecars or templates",
                                  "zephmeta extract photo.jpg\n  zephmeta extract -r Pictures -o Templates\n"
                                  "  zephmeta extract scan.tif -o /tmp && zephmeta apply /tmp/scan.tif.xmp other.tif");
    const auto extracted = Kept<ExtractRequest>();
    AddBatchOptions(extract, extracted->mBatch, "FILE");
    extract->add_option("-o,--output", extracted->mFolder, "The folder for the sidecars; beside the files without it")
        ->type_name("FOLDER");
    OnRun(extract, [this, extracted] {
        extracted->mBatch.mJson = mJson;
        return ExtractPackets(*extracted);
    });
}

void CommandLine::AddFind() {
    CLI::App* const find = Add(mApp, "find", "Print the names of the files that meet a condition",
                               "zephmeta find -r Pictures --if \"dc:subject has sea and missing dc:rights\"\n"
                               "  zephmeta find -r -0 Pictures --if \"xmp:Rating>=4\" | xargs -0 ls -l\n"
                               "  zephmeta find --index pictures.db \"exif:DateTimeOriginal<2020\" --text harbour");
    const auto request = Kept<FindRequest>();
    find->add_option("FILE", request->mBatch.mFiles.mNames,
                     "Media files, .xmp sidecars, folders with -r, @LIST, or - for a list on standard input; with "
                     "--index the condition instead");
    CLI::Option* const index = find->add_option("--index", request->mIndex,
                                                "Ask this database, which \"export --sqlite\" made, and open no file");
    index->type_name("DATABASE");
    find->add_option("--text", request->mText,
                     "With --index: files with these words in their texts; \"two words\", wor*, a OR b, a NOT b")
        ->type_name("WORDS")
        ->needs(index);
    AddBatchOptions(find, request->mBatch, nullptr);
    OnRun(find, [this, request] {
        request->mBatch.mJson = mJson;
        return Find(*request);
    });
}

void CommandLine::AddWriting() {
    AddSet();
    AddApply();
    AddTables();
    AddUndo();
}

void CommandLine::AddSet() {
    CLI::App* const set =
        Add(mApp, "set", "Change values and write the files",
            "zephmeta set photo.jpg dc:title=\"New\" --add dc:subject=pier xmp:Rating=2\n"
            "  zephmeta set -r Pictures --if \"missing dc:rights\" \"dc:rights=(c) {exif:DateTimeOriginal:%Y} Jo\"\n"
            "  zephmeta set *.jpg --shift exif:DateTimeOriginal+1h --zone +02:00 --dry-run");
    const auto request = Kept<SetRequest>();
    set->add_option(
           "FILE|PATH=VALUE", request->mArguments,
           "Files to change, and values to set in each of them; {prefix:name} in a value stands for that value of "
           "the file, {prefix:name:%Y-%m-%d} for its date")
        ->required();
    using ListOption =
        std::pair<const char*, std::pair<std::vector<std::string>*, std::pair<const char*, const char*>>>;
    const auto lists = std::to_array<ListOption>({
        {"--add", {&request->mEdits.mAdditions, {"PATH=ITEM", "Append an item to a list"}}},
        {"--remove", {&request->mEdits.mRemovals, {"PATH=ITEM", "Take every such item out of a list"}}},
        {"--rename", {&request->mEdits.mRenames, {"PATH=OLD=NEW", "Change every such item of a list"}}},
        {"--delete", {&request->mEdits.mDeletions, {"PATH", "Remove a value, an item or a language"}}},
        {"--copy", {&request->mEdits.mCopies, {"TO=FROM", "Set a value to what stands at another path of the file"}}},
        {"--shift", {&request->mEdits.mShifts, {"PATH+1h30m", "Move a date; -2d12h, +00:45"}}},
        {"--only", {&request->mFromPaths, {"PATH", "With --from: copy this alone"}}},
    });
    for (const auto& [name, option] : lists) {
        set->add_option(name, *option.first, option.second.second)
            ->type_name(option.second.first)
            ->allow_extra_args(false);
    }
    set->add_option("--from", request->mFrom, "Copy properties from another file or sidecar")->type_name("FILE");
    set->add_option("--zone", request->mEdits.mZone, "State the zone of the dates of capture, for example +02:00")
        ->type_name("ZONE");
    set->add_option("--gps", request->mEdits.mPosition, "Set the position, for example 53.5461,9.9661,12m")
        ->type_name("LAT,LON[,ALT]");
    AddWritingOptions(set, request->mWriting);
    set->add_flag("--together", request->mTogether, "Edit all files as one, as an editor shows them");
    AddBatchOptions(set, request->mBatch, nullptr);
    OnRun(set, [this, request] {
        request->mBatch.mJson = mJson;
        return Set(*request);
    });
}

void CommandLine::AddTables() {
    // No command like the others: its --json has an argument.
    CLI::App* const exporting = mApp.add_subcommand("export", "Write the values of many files into one table");
    exporting->footer(
        "Examples:\n  zephmeta export -r Pictures --csv pictures.csv\n"
        "  zephmeta export -r Pictures --sqlite pictures.db --update\n"
        "  zephmeta export -r Pictures --json - | jq -c '.\"xmp:Rating\" = \"3\"' | zephmeta import -");
    AddLanguageOption(*exporting);
    const auto exported = Kept<ExportRequest>();
    AddBatchOptions(exporting, exported->mBatch, "FILE");
    CLI::Option* const json = exporting->add_option("--json", exported->mJson,
                                                    "Make this file: a JSON object a line (- for standard output)");
    json->type_name("TABLE");
    CLI::Option* const csv =
        exporting->add_option("--csv", exported->mCSV, "Make this file: a table with commas (RFC 4180)");
    csv->type_name("TABLE")->excludes(json);
    exporting
        ->add_option("--sqlite", exported->mSQLite,
                     "Make this file: a database with tables of files, of values and of words, for \"find --index\"")
        ->type_name("DATABASE")
        ->excludes(json)
        ->excludes(csv);
    exporting->add_flag("--update", exported->mUpdate,
                        "With --sqlite: read only the files that changed, and leave out those that are gone");
    exporting->add_option("--only", exported->mOnly, "These paths alone")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->type_name("PATH");
    OnRun(exporting, [exported] { return Export(*exported); });

    CLI::App* const importing =
        Add(mApp, "import", "Write what was edited in an exported table back into the files",
            "zephmeta import pictures.csv --dry-run\n  zephmeta import pictures.csv --delete-empty\n"
            "  jq -c '.\"dc:rights\" = null' pictures.json | zephmeta import -");
    const auto imported = Kept<ImportRequest>();
    importing->add_option("TABLE", imported->mTable, "What export made, CSV or JSON, or - for standard input")
        ->required();
    importing->add_flag("--delete-empty", imported->mDeleteEmpty,
                        "An empty cell of a CSV table deletes the value; without it nothing is done");
    AddWritingOptions(importing, imported->mWriting);
    AddWorkOptions(importing, imported->mBatch);
    OnRun(importing, [this, imported] {
        imported->mBatch.mJson = mJson;
        return Import(*imported);
    });
}

void CommandLine::AddApply() {
    using namespace zephmetadata;
    static const std::map<std::string, TemplateImportOptions> modes = {
        {"add", kTemplateImport_Add}, {"replace", kTemplateImport_Replace}, {"clear", kTemplateImport_ClearAndReplace}};
    CLI::App* const apply = Add(mApp, "apply", "Merge the XMP of a template into files and write them",
                                "zephmeta apply template.xmp photo.jpg --mode replace --dry-run\n"
                                "  zephmeta apply rights.xmp -r Pictures\n"
                                "  zephmeta apply rights.xmp -r Pictures --if \"missing dc:rights\"");
    const auto merge = Kept<ApplyRequest>();
    apply->add_option("TEMPLATE", merge->mTemplate, "A sidecar, or a media file with the values to apply")->required();
    apply
        ->add_option("--mode", merge->mMode,
                     "add: only what a file lacks; replace: what the template has; clear: as replace, and remove "
                     "everything that people edit and the template lacks")
        ->transform(OneOf(modes))
        ->type_name("add|replace|clear")
        ->default_str("add");
    apply->add_flag("--dry-run", merge->mDryRun, "List what would change, and write nothing");
    AddBatchOptions(apply, merge->mBatch, "FILE");
    OnRun(apply, [this, merge] {
        merge->mBatch.mJson = mJson;
        return Apply(*merge);
    });
}

void CommandLine::AddUndo() {
    CLI::App* const undo = Add(mApp, "undo", "Take back what the last set, apply or import wrote; again: do it again",
                               "zephmeta undo --dry-run\n  zephmeta undo\n  zephmeta undo photo.jpg Pictures/2026");
    undo->footer(
        "Every file is afterwards what it was before, byte for byte, unless it was changed since: then it is left as "
        "it\n"
        "is. Sidecars that were made are removed; backups stay. What the last command wrote, and that alone, is kept "
        "in\n"
        "$XDG_STATE_HOME/zephmeta (~/.local/state/zephmeta).\n\n" +
        undo->get_footer());
    const auto request = Kept<UndoRequest>();
    undo->add_option("FILE", request->mBatch.mFiles.mNames, "These files, and those in these folders, alone");
    undo->add_flag("--dry-run", request->mDryRun, "Print what would be taken back, and write nothing");
    AddRunOptions(undo, request->mBatch);
    OnRun(undo, [this, request] {
        request->mBatch.mJson = mJson;
        return Undo(*request);
    });
}

void CommandLine::AddPanels() {
    CLI::App* const panel = Add(mApp, "panel", "Show files as a panel of an editor would, several as one",
                                "zephmeta panel photo.jpg\n  zephmeta panel photo.jpg --view camera\n"
                                "  zephmeta panel photo.jpg --format html > photo.html");
    const auto request = Kept<PanelRequest>();
    panel->add_option("FILE", request->mFiles, "Media files and .xmp sidecars")->required();
    CLI::Option* const view =
        panel
            ->add_option("--view", request->mWish.mView,
                         "The view, for example basic, camera or gps; JSON is of basic by default")
            ->type_name("NAME")
            ->capture_default_str();
    CLI::Option* const all =
        panel->add_flag("--all", request->mWish.mAll, "Every view, those that matter most to such a file first");
    all->excludes(view);
    panel->add_flag("--side-by-side", request->mWish.mSideBySide, "With --format html: a column for each file")
        ->excludes(all);
    const auto format = Kept<std::string>();
    *format = "text";
    panel->add_option("--format", *format, "text, html (one page to pass on) or json")
        ->check(CLI::IsMember({"text", "html", "json"}))
        ->type_name("FORMAT")
        ->capture_default_str();
    AddSidecarOption(panel);
    OnRun(panel, [this, request, view, format] {
        SheetWish& wish = request->mWish;
        const bool isJson = mJson || *format == "json";
        wish.mForm = isJson ? SheetForm::kJson : *format == "html" ? SheetForm::kPage : SheetForm::kText;
        // Programs get the same items for every file unless they ask for others.
        wish.mView = isJson && view->count() == 0 ? "basic" : wish.mView;
        return ShowPanel(*request);
    });
}

void CommandLine::AddRegistry() {
    CLI::App* const formats =
        Add(mApp, "formats", "List the media formats with what can be read and written",
            "zephmeta formats\n  zephmeta formats --json | jq -c '.[]'\n  zephmeta formats --lang de");
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
        {"schemas", "List the schemas, or the properties of one",
         "zephmeta schemas\n  zephmeta schemas dc\n  zephmeta schemas --lang de dc", "PREFIX",
         "The prefix of one schema", ShowSchemas},
        {"types", "List the value types, or what one is made of",
         "zephmeta types\n  zephmeta types thumbnail\n  zephmeta types --lang de thumbnail", "ID", "The id of one type",
         ShowTypes},
        {"views", "List the views, or the items of one",
         "zephmeta views\n  zephmeta views camera\n  zephmeta views --lang de camera", "NAME", "The name of one view",
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
            "zephmeta check my_schema.xml my_view.xml\n  zephmeta check --json manifest.xml\n  zephmeta check */*.xml");
    const auto documents = Kept<Texts>();
    check->add_option("DOCUMENT", *documents, "Documents to read")->required();
    OnRunAlone(check, [this, documents] { return CheckDocuments(*documents, mJson); });

    CLI::App* const schema = mApp.add_subcommand("schema", "Write a definitions document without writing XML");
    schema->require_subcommand(1);
    CLI::App* const create =
        Add(*schema, "new", "Make a document with an empty schema",
            "zephmeta schema new tides.xml --namespace http://example.org/tides/ --prefix tides\n"
            "  zephmeta schema new q.xml --namespace http://example.org/q/ --prefix q --label Quay\n"
            "  zephmeta schema new r.xml --namespace http://example.org/r/ --prefix r && zephmeta "
            "schema show r.xml");
    const auto made = Kept<SchemaRequest>();
    create->add_option("DOCUMENT", made->mFile, "The file to make")->required();
    create->add_option("--namespace", made->mNamespace, "The namespace URI")->required();
    create->add_option("--prefix", made->mPrefix, "The prefix that people write")->required();
    create->add_option("--label", made->mLabel, "The name that panels show");
    create->add_option("--description", made->mDescription, "What the schema is for");
    OnRun(create, [made] { return NewSchema(*made); });

    CLI::App* const add = Add(*schema, "add-property", "Add a property to a schema of a document",
                              "zephmeta schema add-property tides.xml height --type real --label \"Tide Height\"\n"
                              "  zephmeta schema add-property tides.xml level --type integer --min 0 --max 9\n"
                              "  zephmeta schema add-property tides.xml state --type closedchoice --element-type text "
                              "--choice ebb=Ebb --choice flood=Flood");
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

    CLI::App* const show = Add(*schema, "show", "Print a document as it would be written",
                               "zephmeta schema show tides.xml\n  zephmeta schema show tides.xml > tidy.xml\n"
                               "  zephmeta schema show tides.xml | diff tides.xml -");
    const auto shown = Kept<std::string>();
    show->add_option("DOCUMENT", *shown, "A definitions document")->required();
    OnRun(show, [shown] { return ShowSchemaDocument(*shown); });
}

void CommandLine::AddPackages() {
    CLI::App* const packages = Add(mApp, "packages", "List the extension packages and what each brought",
                                   "zephmeta packages\n  zephmeta packages --json\n  zephmeta packages --lang de");
    OnRun(packages, [this] { return ShowPackages(mJson); });

    CLI::App* const package = mApp.add_subcommand("package", "Begin an extension package");
    package->require_subcommand(1);
    CLI::App* const create = Add(*package, "new", "Lay out a package that works, to be changed with an editor",
                                 "zephmeta package new \"Tide Table\"\n  zephmeta package new Quay --folder .\n"
                                 "  zephmeta package new Quay --folder /tmp && zephmeta check /tmp/Quay/*.xml");
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
        "Examples:\n  zephmeta convert-panels --generation 4.0\n  zephmeta convert-panels --generation 3.0 --json\n"
        "  zephmeta convert-panels --generation 2.0 && zephmeta packages");
    const auto generation = Kept<std::string>();
    convert->add_option("--generation", *generation, "The hosts that the panels were made for: 4.0, 3.0 or 2.0")
        ->required()
        ->check(CLI::IsMember(&generations))
        ->type_name("GENERATION");
    OnRun(convert, [this, generation] { return ConvertPanels(generations.at(*generation), mJson); });
}

}  // namespace zephmeta
