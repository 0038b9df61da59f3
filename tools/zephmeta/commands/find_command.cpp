#include <iostream>

#include "batch/batch.h"
#include "collections/index_reader.h"
#include "commands/commands.h"
#include "json.h"

namespace zephmeta {

namespace {

/// A name as it is printed, with what ends it.
std::string Line(const std::string& name, const BatchOptions& options) {
    if (options.mJson) {
        return JsonLine(FileObject(name)) + "\n";
    }
    return options.mFiles.mNulSeparated ? name + '\0' : OneLine(name) + "\n";
}

int FindInIndex(const FindRequest& request, Problems& problems) {
    const std::vector<std::string>& names = request.mBatch.mFiles.mNames;
    if (names.size() + (request.mBatch.mCondition.empty() ? 0 : 1) > 1) {
        problems.Report({}, "--index takes one condition and no files; see \"zephmeta find --help\"");
        return 2;
    }
    const ConditionReading condition = ReadCondition(names.empty() ? request.mBatch.mCondition : names.front());
    if (!condition.mProblem.empty()) {
        problems.Report({}, condition.mProblem);
        return 2;
    }
    try {
        IndexReader(request.mIndex).ForEach(request.mText, [&](const std::string& name, const ValueSource& values) {
            if (!condition.mCondition || condition.mCondition->Holds(values)) {
                std::cout << Line(name, request.mBatch);
            }
        });
    } catch (const DatabaseError& error) {
        problems.Report(request.mIndex, error.what());
    } catch (const std::invalid_argument& error) {
        problems.Report({}, error.what());
        return 2;
    }
    return problems.ExitStatus();
}

}  // namespace

int Find(const FindRequest& request) {
    Problems problems;
    problems.ReportCollected({});
    if (!request.mIndex.empty()) {
        return FindInIndex(request, problems);
    }
    const BatchOptions& options = request.mBatch;
    if (options.mFiles.mNames.empty()) {
        problems.Report({}, "FILE is required; see \"zephmeta --help\"");
        return 2;
    }
    return Batch(options, problems).Run([&](const MediaFile& file, FileResult& result) {
        result.PrintAsIs(Line(file.Name(), options));
    });
}

}  // namespace zephmeta
