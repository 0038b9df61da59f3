#include "collections/table.h"
#include "commands/commands.h"
#include "edits/file_editor.h"

namespace zephmeta {

int Import(const ImportRequest& request) {
    Problems problems;
    problems.ReportCollected({});
    Table table;
    if (!table.Read(request.mTable, problems)) {
        return problems.ExitStatus();
    }
    const FileEditor editor(request.mWriting, request.mBatch);
    return Batch(request.mBatch, problems).RunFor(table.Files(), [&](MediaFile& file, FileResult& result) {
        const Cells cells = table.CellsFor(file.Name(), request.mDeleteEmpty);
        editor.Edit(
            file, [&](zephmetadata::XMPMetaHandle tree) { return EditsToward(cells, tree); }, result);
    });
}

}  // namespace zephmeta
