#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>
#include <iostream>

#include "commands.h"
#include "console.h"
#include "zephcore/environment.h"
#include "zephmetadata/library.h"

namespace {

/// Options that every command takes, before or after its name.
struct CommonOptions {
    bool mJson = false;
    std::string mLanguage;
};

void AddCommonOptions(CLI::App& app, CommonOptions& options) {
    app.add_flag("--json", options.mJson, "Print JSON instead of text");
    app.add_option("--lang", options.mLanguage, "Language of labels and texts, for example de or fr_FR")
        ->type_name("LANG");
}

CLI::App* AddCommand(CLI::App& app, CommonOptions& options, const char* name, const char* description,
                     const char* example) {
    CLI::App* command = app.add_subcommand(name, description);
    command->footer(std::string("Example:\n  ") + example);
    AddCommonOptions(*command, options);
    return command;
}

/// The library between its start and its stop.
class Session {
public:
    explicit Session(const CommonOptions& options) {
        if (!options.mLanguage.empty()) {
            setenv("ZEPHCORE_LANGUAGE", options.mLanguage.c_str(), 1);
        }
        zephcore::SetSuiteClientName(u"zephmeta");
        zephmetadata::Initialize();
    }
    ~Session() { zephmetadata::Terminate(); }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
};

template <typename Command>
int RunWith(const CommonOptions& options, const Command& command) {
    const Session session(options);
    return command();
}

/// The arguments as the parser takes them, last one first. Past "--" it would refuse what belongs to a list that has begun
/// before, so there "--" is taken away, and names that look like options get a folder.
std::vector<std::string> Arguments(int argc, char** argv) {
    std::vector<std::string> arguments(argv + 1, argv + argc);
    const auto mark = std::find(arguments.begin(), arguments.end(), "--");
    for (auto name = mark; name != arguments.end(); ++name) {
        if (name != mark && name->starts_with('-')) {
            name->insert(0, "./");
        }
    }
    if (mark != arguments.end()) {
        arguments.erase(mark);
    }
    std::reverse(arguments.begin(), arguments.end());
    return arguments;
}

constexpr int kWrongUsage = 2;

int Run(int argc, char** argv) {
    CLI::App app("Shows and changes the XMP metadata of photos and videos.", "zephmeta");
    app.set_version_flag("--version", [] {
        return "zephmeta " + zephmetadata::GetLibraryVersion() + "\n" + zephmetadata::GetXMPCoreVersion() + "\n" +
               zephmetadata::GetXMPFilesVersion();
    });
    app.require_subcommand(1);
    app.footer("Exit status: 0 done, 1 something asked for could not be done (the rest was), 2 wrong usage.");
    CommonOptions options;
    AddCommonOptions(app, options);
    int status = 0;

    std::vector<std::string> dumpFiles;
    CLI::App* dump = AddCommand(app, options, "dump", "Print every value of the files", "zephmeta dump photo.jpg");
    dump->add_option("FILE", dumpFiles, "Media files and .xmp sidecars")->required();
    dump->final_callback([&] { status = RunWith(options, [&] { return zephmeta::Dump(dumpFiles, options.mJson); }); });

    std::string getFile;
    std::vector<std::string> getPaths;
    bool raw = false;
    CLI::App* get = AddCommand(app, options, "get", "Print the values at some paths, one a line",
                               "zephmeta get photo.jpg dc:title dc:subject[1] xmp:Rating");
    get->add_option("FILE", getFile, "A media file or .xmp sidecar")->required();
    get->add_option("PATH", getPaths, "prefix:name, prefix:name[2], prefix:struct/prefix:field")->required();
    get->add_flag("--raw", raw, "Print the stored text instead of the display text");
    get->final_callback(
        [&] { status = RunWith(options, [&] { return zephmeta::Get(getFile, getPaths, raw, options.mJson); }); });

    zephmeta::SetRequest request;
    CLI::App* set = AddCommand(app, options, "set", "Change values and write the files",
                               "zephmeta set photo.jpg dc:title=\"New\" --add dc:subject=pier xmp:Rating=2");
    set->add_option("FILE|PATH=VALUE", request.mArguments, "Files to change, and values to set in each of them")
        ->required();
    set->add_option("--add", request.mAdditions, "Append an item to a list")
        ->type_name("PATH=VALUE")
        ->allow_extra_args(false);
    set->add_option("--delete", request.mDeletions, "Remove a value, an item or a language")
        ->type_name("PATH")
        ->allow_extra_args(false);
    set->final_callback([&] { status = RunWith(options, [&] { return zephmeta::Set(request, options.mJson); }); });

    std::string prefix;
    CLI::App* schemas =
        AddCommand(app, options, "schemas", "List the schemas, or the properties of one", "zephmeta schemas dc");
    schemas->add_option("PREFIX", prefix, "The prefix of one schema");
    schemas->final_callback(
        [&] { status = RunWith(options, [&] { return zephmeta::ShowSchemas(prefix, options.mJson); }); });

    std::string typeId;
    CLI::App* types =
        AddCommand(app, options, "types", "List the value types, or what one is made of", "zephmeta types thumbnail");
    types->add_option("ID", typeId, "The id of one type");
    types->final_callback(
        [&] { status = RunWith(options, [&] { return zephmeta::ShowTypes(typeId, options.mJson); }); });

    app.failure_message([](const CLI::App*, const CLI::Error& error) {
        return "zephmeta: " + zephmeta::OneLine(error.what()) + "; see \"zephmeta --help\"\n";
    });
    try {
        app.parse(Arguments(argc, argv));
    } catch (const CLI::ParseError& error) {
        const int result = app.exit(error);
        return result == 0 ? 0 : kWrongUsage;
    }
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return Run(argc, argv);
    } catch (const std::exception& error) {
        std::cerr << "zephmeta: " << error.what() << '\n';
        return 1;
    }
}
