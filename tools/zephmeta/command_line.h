#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>

#include "batch/batch.h"
#include "edits/file_editor.h"
#include "zephmetadata/providers.h"

namespace zephmeta {

/// The commands with their options. Parsing runs the one that is named.
class CommandLine {
public:
    /// Adds the commands to @p app, which has to be parsed while this object lives.
    explicit CommandLine(CLI::App& app);

    /// The exit status of the command that ran.
    int Status() const { return mStatus; }

private:
    void AddReading();
    void AddFind();
    void AddWriting();
    void AddSet();
    void AddTables();
    void AddUndo();
    void AddApply();
    void AddPanels();
    void AddRegistry();
    void AddAuthoring();
    void AddPackages();
    void AddConversion();

    /// A command with the options that every command takes, before or after its name.
    CLI::App* Add(CLI::App& parent, const char* name, const char* description, const char* example);
    void AddCommonOptions(CLI::App& app);
    void AddLanguageOption(CLI::App& app);
    void AddSidecarOption(CLI::App* command);
    /// What every command about files takes. @p files names the positional argument; null when the command has its own.
    void AddBatchOptions(CLI::App* command, BatchOptions& options, const char* files);
    /// The same without what says which files there are.
    void AddWorkOptions(CLI::App* command, BatchOptions& options);
    /// How many at once, and what is printed.
    static void AddRunOptions(CLI::App* command, BatchOptions& options);
    /// What every command that changes values takes.
    static void AddWritingOptions(CLI::App* command, WritingOptions& options);
    /// Has @p command run between the library's start and its stop.
    void OnRun(CLI::App* command, std::function<int()> run);
    /// The same for one that starts and stops the library itself.
    void OnRunAlone(CLI::App* command, std::function<int()> run);

    CLI::App& mApp;
    bool mJson = false;
    std::string mLanguage;
    zephmetadata::SidecarPolicy mSidecars = zephmetadata::kSidecarPolicy_Automatic;
    int mStatus = 0;
};

}  // namespace zephmeta
