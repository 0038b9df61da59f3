#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

#include "text.h"

namespace zephmeta {

/// Where a command's problems go: one line each on standard error, the file first.
class Problems {
public:
    /// @p file may be empty for a problem that belongs to no file.
    void Report(std::string_view file, std::string_view reason);
    /// Reports what the library collected since the last call. What it only noticed does not count as a failure.
    void ReportCollected(std::string_view file);
    /// Leaves out what the library collected since the last call, where the command says it better.
    void PassOverCollected();
    /// 1 when anything was reported with Report, else 0.
    int ExitStatus() const { return mFailed ? 1 : 0; }

private:
    bool mFailed = false;
    std::size_t mSeen = 0;  // records of the library shown so far
};

/// A line on standard error with the count, the rate and the time left of a long command; only on a terminal.
class Progress {
public:
    Progress(std::size_t files, bool standardOutputIsRead);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void Next(std::string_view file);
    /// Makes room for other lines.
    void Erase();

private:
    using Clock = std::chrono::steady_clock;

    std::size_t mFiles;
    std::size_t mDone = 0;
    bool mShown;
    bool mIsThere = false;
    Clock::time_point mBegin = Clock::now();
    Clock::time_point mLast;
};

}  // namespace zephmeta
