#include "batch/interrupt.h"

#include <atomic>

namespace zephmeta {

namespace {

std::atomic<bool> interrupted = false;
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler sets it");

extern "C" void OnInterrupt(int /*signal*/) {
    interrupted = true;
}

}  // namespace

InterruptGuard::InterruptGuard() {
    struct sigaction action {};
    action.sa_handler = &OnInterrupt;
    action.sa_flags = SA_RESETHAND | SA_RESTART;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, &mBefore);
}

InterruptGuard::~InterruptGuard() {
    sigaction(SIGINT, &mBefore, nullptr);
}

bool InterruptGuard::IsInterrupted() {
    return interrupted;
}

}  // namespace zephmeta
