#pragma once

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>

namespace zephmetadata {

/// Runs @p body in a process of its own; its exit status, 0 when @p body answers true.
inline int InChild(const std::function<bool()>& body) {
    const pid_t child = fork();
    if (child == 0) {
        _exit(body() ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// The same in one that can write files of at most @p bytes, as on a full disk.
inline int WithSmallDisk(rlim_t bytes, const std::function<bool()>& body) {
    return InChild([&] {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{bytes, bytes};
        return setrlimit(RLIMIT_FSIZE, &limit) == 0 && body();
    });
}

}  // namespace zephmetadata
