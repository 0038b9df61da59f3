#include "cli/cli_runner.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include <cstdlib>
#include <stdexcept>

namespace cli {

namespace {

/// Where a program's output goes: a file each, as two pipes would have to be emptied in turns.
class Streams {
public:
    Streams() { posix_spawn_file_actions_init(&mActions); }
    ~Streams() { posix_spawn_file_actions_destroy(&mActions); }
    Streams(const Streams&) = delete;
    Streams& operator=(const Streams&) = delete;

    void Redirect(int stream, const std::filesystem::path& file) {
        constexpr mode_t kMode = 0600;
        posix_spawn_file_actions_addopen(&mActions, stream, file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, kMode);
    }
    void SetFolder(const std::filesystem::path& folder) {
        posix_spawn_file_actions_addchdir_np(&mActions, folder.c_str());
    }
    const posix_spawn_file_actions_t* Actions() const { return &mActions; }

private:
    posix_spawn_file_actions_t mActions{};
};

int StatusOf(pid_t process) {
    int status = 0;
    if (waitpid(process, &status, 0) != process) {
        throw std::runtime_error("lost a process");
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace

Outcome RunProgram(const std::filesystem::path& folder, const std::string& program, const Arguments& arguments) {
    setenv("LC_ALL", "C", 1);
    setenv("TZ", "UTC", 1);
    const support::TempFolder texts;
    Streams streams;
    streams.SetFolder(folder);
    streams.Redirect(1, texts.Path() / "output");
    streams.Redirect(2, texts.Path() / "errors");

    Arguments all = {program};
    all.insert(all.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (std::string& argument : all) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    pid_t process = 0;
    if (posix_spawnp(&process, program.c_str(), streams.Actions(), nullptr, pointers.data(), environ) != 0) {
        throw std::runtime_error("cannot run " + program);
    }
    const int status = StatusOf(process);
    return {status, support::ReadFile(texts.Path() / "output"), support::ReadFile(texts.Path() / "errors")};
}

CliTest::CliTest() {
    setenv("XDG_STATE_HOME", (mFolder.Path() / "state").c_str(), 1);
    std::filesystem::create_directory(mFolder.Path() / "files");
    std::filesystem::copy(ZEPHMETADATA_TEST_DATA, mFolder.Path() / "files");
}

Outcome CliTest::Zephmeta(const Arguments& arguments) const {
    return RunProgram(mFolder.Path() / "files", ZEPHMETA_PROGRAM, arguments);
}

Json CliTest::Get(const std::string& file, const Arguments& paths) const {
    Arguments arguments = {"get", "--json", file};
    arguments.insert(arguments.end(), paths.begin(), paths.end());
    return Json::parse(Zephmeta(arguments).mOutput, nullptr, false);
}

std::string Sample(const std::string& name) {
    return support::ReadFile(std::filesystem::path(ZEPHMETADATA_TEST_DATA) / name);
}

}  // namespace cli
