#include "batch/batch.h"
#include "commands/commands.h"
#include "json.h"

namespace zephmeta {

int Find(const BatchOptions& options) {
    Problems problems;
    problems.ReportCollected({});
    return Batch(options, problems).Run([&](const MediaFile& file, FileResult& result) {
        if (options.mJson) {
            result.Print(JsonLine(FileObject(file.Name())));
        } else if (options.mFiles.mNulSeparated) {
            result.PrintName(file.Name());
        } else {
            result.Print(OneLine(file.Name()));
        }
    });
}

}  // namespace zephmeta
