#pragma once

#include <optional>
#include <string>
#include <vector>

#include "arguments.h"
#include "zephmetadata/edits.h"

namespace zephmeta {

/// What the options of "set" say, as they stand on the command line.
struct EditOptions {
    std::vector<std::string> mAssignments;  ///< PATH=VALUE
    std::vector<std::string> mAdditions;    ///< PATH=ITEM
    std::vector<std::string> mRemovals;     ///< PATH=ITEM
    std::vector<std::string> mRenames;      ///< PATH=OLD=NEW
    std::vector<std::string> mDeletions;    ///< PATH
    std::vector<std::string> mCopies;       ///< TO=FROM
    std::vector<std::string> mShifts;       ///< PATH+1h30m, PATH-2d
    std::string mZone;                      ///< +02:00
    std::string mPosition;                  ///< LATITUDE,LONGITUDE or LATITUDE,LONGITUDE,ALTITUDE

    bool IsEmpty() const;
};

/// One thing to do to every file. What depends on the file is filled in for each.
struct RequestedEdit {
    enum class Source { kValue, kTemplate, kCopy, kShift, kZone };

    std::string mExpression;
    zephmetadata::ValueEdit mEdit;
    Source mSource = Source::kValue;
    zephmetadata::Path mFrom;  ///< of kCopy
    long long mSeconds = 0;    ///< of kShift
    std::string mZone;         ///< of kZone
};

struct EditReading {
    std::vector<RequestedEdit> mEdits;
    std::vector<std::string> mProblems;  ///< what makes no sense in any file; nothing is to be done then
    bool mIsWrongUsage = false;          ///< an argument has not the form that its option wants
};

/// Reads the options. Values are taken as people type them: labels of choices, "1/250", "f/8", "2026-05-01 10:00",
/// degrees as 53.5461.
EditReading ReadEdits(const EditOptions& options);

/// The edits for one file, with what they are called on the command line.
struct FileEdits {
    std::vector<zephmetadata::ValueEdit> mEdits;
    std::vector<std::string> mExpressions;
    std::string mProblem;  ///< why one of them makes no sense for this file; empty when all do

    void Add(zephmetadata::ValueEdit edit, std::string expression);
};
FileEdits EditsFor(const std::vector<RequestedEdit>& requested, zephmetadata::XMPMetaHandle tree);

}  // namespace zephmeta
