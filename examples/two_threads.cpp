// Rates photos in two threads: two_threads RATING FILE...
//
// Different providers may be read and edited by different threads at the same time. What is shared, the library's start
// and stop and the registering of definitions, happens before and after.
#include <zephmetadata/zephmetadata.h>

#include <atomic>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

namespace {

/// Takes files as long as there are any.
class Worker {
public:
    Worker(const std::vector<std::string>& files, std::string rating) : mFiles(files), mRating(std::move(rating)) {}

    void Run() {
        zephmetadata::ValueEdit edit;
        edit.mPath = zephmetadata::PathForExpression("xmp:Rating");
        edit.mValue = mRating;
        for (std::size_t next = mNext++; next < mFiles.size(); next = mNext++) {
            const auto photo = zephmetadata::OpenMedia(zephcore::PathFromNative(mFiles[next]));
            const zephmetadata::EditReport report = ApplyEdits(photo, {edit});
            if (!report.IsRefused() && report.mStatus == zephmetadata::kFileStatus_Success) {
                ++mDone;
            }
        }
    }
    std::size_t Done() const { return mDone; }

private:
    const std::vector<std::string>& mFiles;
    std::string mRating;
    std::atomic<std::size_t> mNext = 0;
    std::atomic<std::size_t> mDone = 0;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::cerr << "usage: two_threads RATING FILE...\n";
        return 2;
    }
    const zephmetadata::Library library;
    const std::vector<std::string> files(argv + 2, argv + argc);
    Worker worker(files, argv[1]);
    std::thread other([&worker] { worker.Run(); });
    worker.Run();
    other.join();
    std::cout << worker.Done() << " of " << files.size() << " rated\n";
    return worker.Done() == files.size() ? 0 : 1;
}
