#include <iostream>
#include <unordered_map>

#include "batch/batch.h"
#include "collections/cells.h"
#include "collections/index_writer.h"
#include "commands/commands.h"

namespace zephmeta {

namespace {

/// What is to be read, with what tells its state before it is.
struct Plan {
    std::vector<std::string> mNames;
    std::unordered_map<std::string, FileStamp> mStamps;
    std::size_t mUnchanged = 0;
};

Plan PlanFor(const ExportRequest& request, IndexWriter& index, Problems& problems) {
    Plan plan;
    for (std::string& name : FileNames(request.mBatch.mFiles, problems)) {
        FileStamp stamp = StampOf(name);
        if (request.mUpdate && index.IsCurrent(name, stamp)) {
            ++plan.mUnchanged;
            continue;
        }
        plan.mStamps.emplace(name, std::move(stamp));
        plan.mNames.push_back(std::move(name));
    }
    return plan;
}

void ReadInto(const MediaFile& file, const FileStamp& stamp, const std::vector<std::string>& only, IndexWriter& index) {
    std::vector<IndexedValue> values = IndexedValuesOf(*zephmetadata::MetaDataReadAccess(file.Provider()));
    std::erase_if(values, [&](const IndexedValue& value) { return !IsChosen(value.mPath, only); });
    index.Put(file.Name(), stamp, values);
}

int FillIndex(ExportRequest& request, Problems& problems) {
    IndexWriter index(request.mSQLite, request.mUpdate);
    const Plan plan = PlanFor(request, index, problems);
    request.mBatch.mOnDone = [&](const FileResult& result) {
        if (result.EndedAs() == Outcome::kFailed) {
            index.PutProblem(result.Name(), plan.mStamps.at(result.Name()), result.Reason());
        } else if (result.EndedAs() == Outcome::kPassedOver) {
            index.Remove(result.Name());
        }
    };
    const int status =
        Batch(request.mBatch, problems).RunFor(plan.mNames, [&](const MediaFile& file, const FileResult& /*result*/) {
            ReadInto(file, plan.mStamps.at(file.Name()), request.mOnly, index);
        });
    if (status == 2) {
        return status;
    }
    if (status == kInterruptedStatus && !request.mUpdate) {
        problems.Report(request.mSQLite, "was not made (interrupted)");
        return status;
    }
    std::size_t gone = 0;
    for (const std::string& folder : request.mUpdate ? request.mBatch.mFiles.mNames : std::vector<std::string>()) {
        gone += index.RemoveGone(folder);
    }
    index.Commit();
    if (request.mUpdate && !request.mBatch.mQuiet && status != kInterruptedStatus) {
        std::cout << OneLine(request.mSQLite) << ": " << plan.mNames.size() << " read, " << plan.mUnchanged
                  << " unchanged, " << gone << " gone\n";
    }
    return status;
}

}  // namespace

int ExportIndex(ExportRequest request, Problems& problems) {
    try {
        return FillIndex(request, problems);
    } catch (const DatabaseError& error) {
        problems.Report(request.mSQLite, error.what());
        return 1;
    }
}

}  // namespace zephmeta
