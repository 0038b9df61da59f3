#include <optional>

#include "batch/batch.h"
#include "collections/table_writer.h"
#include "commands/commands.h"

namespace zephmeta {

namespace {

/// Those of the cells that were asked for; the languages of an alternative go with its path.
Cells Chosen(Cells cells, const std::vector<std::string>& only) {
    std::erase_if(cells, [&](const auto& cell) { return !IsChosen(cell.first, only); });
    return cells;
}

/// Columns that were asked for are there even when no file has them, so that they can be filled in.
Json EmptyRow(const std::vector<std::string>& only) {
    Json row = Json::object();
    for (const std::string& column : only) {
        row[column] = "";
    }
    return row;
}

/// Why a table cannot be asked for like this; empty when it can.
std::string WhyWrong(const ExportRequest& request) {
    if (!request.mSQLite.empty()) {
        return {};
    }
    return request.mCSV.empty() && request.mJson.empty() ? "nothing to make"
           : request.mUpdate                             ? "--update goes with --sqlite"
                                                         : "";
}

int ExportTable(ExportRequest request, Problems& problems) {
    const bool isCSV = !request.mCSV.empty();
    const std::string name = isCSV ? request.mCSV : request.mJson;
    NewTable table(name);
    if (!table.Problem().empty()) {
        problems.Report(name, table.Problem());
        return 1;
    }
    std::optional<WaitingRows> rows;
    if (isCSV) {
        rows.emplace().AddColumns(EmptyRow(request.mOnly));
    }
    request.mBatch.mJson = !isCSV;
    request.mBatch.mOutput = isCSV ? &rows->Out() : &table.Out();
    const int status = Batch(request.mBatch, problems).Run([&](const MediaFile& file, FileResult& result) {
        const Cells cells = Chosen(CellsOf(*zephmetadata::MetaDataReadAccess(file.Provider())), request.mOnly);
        Json row = isCSV ? RowOf(file.Name(), cells) : FileObject(file.Name());
        if (isCSV) {
            rows->AddColumns(row);
        } else {
            AddMembers(cells, row);
        }
        result.Print(JsonLine(row));
    });
    if (status == kInterruptedStatus) {
        problems.Report(name, "was not made (interrupted)");
        return status;
    }
    std::string problem = isCSV ? rows->WriteTo(table.Out()) : std::string();
    problem = problem.empty() ? table.Keep() : problem;
    if (!problem.empty()) {
        problems.Report(name, problem);
        return 1;
    }
    return status;
}

}  // namespace

int Export(ExportRequest request) {
    Problems problems;
    problems.ReportCollected({});
    if (const std::string problem = WhyWrong(request); !problem.empty()) {
        problems.Report({}, problem + "; see \"zephmeta export --help\"");
        return 2;
    }
    for (const std::string& column : request.mOnly) {
        if (const std::string problem = WhyNoColumn(column); !problem.empty()) {
            problems.Report({}, problem);
        }
    }
    if (problems.ExitStatus() != 0) {
        return problems.ExitStatus();
    }
    return request.mSQLite.empty() ? ExportTable(std::move(request), problems)
                                   : ExportIndex(std::move(request), problems);
}

}  // namespace zephmeta
