#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>

#include "command_line.h"
#include "console.h"
#include "description.h"
#include "zephmetadata/library.h"
#include "zephmetadata/suggestions.h"

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

/// The command that a mistyped one most likely stands for, in words; empty where there is nothing to say.
std::string WhyNoCommand(const CLI::App& app, int argc, char** argv) {
    const auto isWord = [](const char* argument) { return *argument != '-'; };
    const auto isCommand = [](const CLI::App*) { return true; };
    const CLI::App* parent = &app;
    for (char** word = std::find_if(argv + 1, argv + argc, isWord); word != argv + argc;
         word = std::find_if(word + 1, argv + argc, isWord)) {
        std::vector<std::string> names;
        const CLI::App* next = nullptr;
        for (const CLI::App* const command : parent->get_subcommands(isCommand)) {
            names.push_back(command->get_name());
            next = command->get_name() == *word ? command : next;
        }
        if (next == nullptr) {
            const std::string near = zephmetadata::NearestName(*word, names);
            return near.empty() ? near : "no such command: " + std::string(*word) + "; did you mean " + near + "?";
        }
        parent = next;
    }
    return {};
}

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
        if (const std::string reason = WhyNoCommand(app, argc, argv); error.get_exit_code() != 0 && !reason.empty()) {
            std::cerr << "zephmeta: " << zephmeta::OneLine(reason) << '\n';
            return kWrongUsage;
        }
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
