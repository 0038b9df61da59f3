#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

#include "zephmetadata/types.h"

namespace zephmeta {

/// UTF-8 for people: display escapes of the library resolved.
std::string Shown(const zephmetadata::UTF16String& text);

/// @p text on one line and harmless to a terminal: control characters as \n, \t and \xNN. Values come from strangers' files.
std::string OneLine(std::string_view text);

/// The same, but line ends and tabs stay as they are.
std::string Printable(std::string_view text);

/// ASCII letters in lower case, all else as it is.
std::string Lower(std::string_view text);

/// How many columns a terminal gives the text: characters, but for combining marks; wide East Asian characters count twice.
std::size_t Columns(std::string_view text);
/// @p text followed by blanks up to @p columns.
std::string Padded(std::string_view text, std::size_t columns);

/// Where a command's problems go: one line each on standard error, the file first.
/// Whether an error is the failed write of a file, of which the command itself tells.
bool IsFailedWrite(const zephmetadata::ErrorInfo& error);

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
