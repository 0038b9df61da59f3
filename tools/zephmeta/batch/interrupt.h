#pragma once

#include <csignal>

namespace zephmeta {

/// While one lives, the first SIGINT only sets a flag; the second ends the process as it would without.
class InterruptGuard {
public:
    InterruptGuard();
    ~InterruptGuard();
    InterruptGuard(const InterruptGuard&) = delete;
    InterruptGuard& operator=(const InterruptGuard&) = delete;

    static bool IsInterrupted();

private:
    struct sigaction mBefore {};
};

}  // namespace zephmeta
