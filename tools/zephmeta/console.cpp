#include "console.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <set>

#include "zephcore/files.h"
#include "zephcore/text.h"
#include "zephmetadata/library.h"

namespace zephmeta {

namespace {

/// Below this nobody waits long enough to ask how far it is.
constexpr std::size_t kFilesWorthCounting = 10;

}  // namespace

void Problems::Report(std::string_view file, std::string_view reason) {
    mFailed = true;
    std::cout.flush();
    std::cerr << (file.empty() ? std::string("zephmeta") : OneLine(file)) << ": " << OneLine(reason) << '\n';
}

void Problems::ReportCollected(std::string_view file) {
    const std::vector<zephmetadata::ErrorInfo> infos = zephmetadata::GetErrorInfos();
    std::set<std::string> said;  // a value that is read twice is one problem
    for (; mSeen < infos.size(); ++mSeen) {
        zephmetadata::ErrorInfo info = infos[mSeen];
        if (info.context.empty()) {
            info.context = zephcore::PathFromNative(file.empty() ? "zephmeta" : file);
        }
        const std::string line = OneLine(Describe(info));
        if (said.insert(line).second) {
            std::cout.flush();
            std::cerr << line << '\n';
        }
    }
}

void Problems::PassOverCollected() {
    mSeen = zephmetadata::GetErrorInfos().size();
}

Progress::Progress(std::size_t files, bool standardOutputIsRead)
    : mFiles(files),
      mShown(files >= kFilesWorthCounting && isatty(STDERR_FILENO) == 1 &&
             !(standardOutputIsRead && isatty(STDOUT_FILENO) == 1)) {}

Progress::~Progress() {
    Erase();
}

void Progress::Next(std::string_view file) {
    ++mDone;
    constexpr auto kPause = std::chrono::milliseconds(100);  // nobody reads faster
    const Clock::time_point now = Clock::now();
    if (!mShown || (now - mLast < kPause && !mIsThere)) {
        return;
    }
    Erase();
    mLast = now;
    mIsThere = true;
    const std::chrono::duration<double> passed = now - mBegin;
    const double rate = static_cast<double>(mDone) / std::max(passed.count(), 0.001);
    const auto left = static_cast<std::size_t>(static_cast<double>(mFiles - mDone) / rate);
    std::cerr << '[' << mDone << '/' << mFiles << "] " << static_cast<std::size_t>(rate) << "/s, " << left / 60 << ':'
              << (left % 60 < 10 ? "0" : "") << left % 60 << " left  " << OneLine(file) << std::flush;
}

void Progress::Erase() {
    if (mIsThere) {
        std::cerr << "\r\x1b[K" << std::flush;
        mIsThere = false;
    }
}

}  // namespace zephmeta
