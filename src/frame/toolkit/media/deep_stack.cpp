#include "frame/toolkit/media/deep_stack.h"

#include <pthread.h>

#include <exception>

namespace zephmetadata::toolkit {

namespace {

struct Job {
    const std::function<void()>& mWork;
    std::exception_ptr mThrown;
};

void* RunJob(void* argument) {
    Job& job = *static_cast<Job*>(argument);
    try {
        job.mWork();
    } catch (...) {  // carried over to the thread that waits
        job.mThrown = std::current_exception();
    }
    return nullptr;
}

}  // namespace

bool RunWithStack(std::size_t stackBytes, const std::function<void()>& work) {
    Job job{work, nullptr};
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0) {
        return false;
    }
    pthread_t thread{};
    const bool started = pthread_attr_setstacksize(&attributes, stackBytes) == 0 &&
                         pthread_create(&thread, &attributes, &RunJob, &job) == 0;
    pthread_attr_destroy(&attributes);
    if (!started) {
        return false;
    }
    pthread_join(thread, nullptr);
    if (job.mThrown) {
        std::rethrow_exception(job.mThrown);
    }
    return true;
}

}  // namespace zephmetadata::toolkit
