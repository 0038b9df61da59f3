#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>

#include "command_line.h"
#include "console.h"
#include "description.h"
#include "zephmetadata/library.h"

namespace {

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
    zephmeta::CommandLine commands(app);
    // Hidden: for the manual page and the completions, not for people.
    app.add_flag_callback("--describe",
                          [&app] {
                              std::cout << zephmeta::JsonPage(zephmeta::DescribeCommand(app)) << '\n';
                              throw CLI::Success();
                          })
        ->group("");
    app.failure_message([](const CLI::App*, const CLI::Error& error) {
        return "zephmeta: " + zephmeta::OneLine(error.what()) + "; see \"zephmeta --help\"\n";
    });
    try {
        app.parse(Arguments(argc, argv));
    } catch (const CLI::ParseError& error) {
        const int result = app.exit(error);
        return result == 0 ? 0 : kWrongUsage;
    }
    return commands.Status();
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
