#include <algorithm>
#include <array>
#include <iostream>
#include <string_view>
#include <vector>

#include "commands/commands.h"
#include "console.h"
#include "json.h"
#include "zephcore/files.h"
#include "zephmetadata/extensions.h"

namespace zephmeta {

namespace {

/// How an entry of the log begins, and the kind that it is called in JSON.
struct KindRow {
    std::string_view mStart;
    std::string_view mKind;
};

constexpr auto kKinds =
    std::to_array<KindRow>({{"SUCCESS - ", "success"}, {"FAILURE - ", "failure"}, {"INFO - ", "info"}});
constexpr std::string_view kEntryEnd = "\n\n";

struct Entry {
    std::string_view mKind;
    std::string mMessage;
};

const KindRow* KindAt(std::string_view text) {
    const auto* const row =
        std::find_if(kKinds.begin(), kKinds.end(), [&](const KindRow& kind) { return text.starts_with(kind.mStart); });
    return row == kKinds.end() ? nullptr : row;
}

/// Where the entry at the start of @p log ends. A path may hold line ends too, so only such a one counts that is
/// followed by an entry or by nothing.
std::size_t EntryLength(std::string_view log) {
    std::size_t end = log.find(kEntryEnd);
    while (end != std::string_view::npos) {
        const std::string_view rest = log.substr(end + kEntryEnd.size());
        if (rest.empty() || KindAt(rest) != nullptr) {
            return end;
        }
        end = log.find(kEntryEnd, end + 1);
    }
    return log.size();
}

std::vector<Entry> EntriesOf(std::string_view log) {
    std::vector<Entry> entries;
    while (const KindRow* const kind = KindAt(log)) {
        const std::size_t length = EntryLength(log);
        entries.push_back({kind->mKind, std::string(log.substr(0, length).substr(kind->mStart.size()))});
        log.remove_prefix(std::min(length + kEntryEnd.size(), log.size()));
    }
    return entries;
}

void PrintAsJson(const std::vector<Entry>& entries) {
    Json list = Json::array();
    for (const Entry& entry : entries) {
        list.push_back({{"kind", entry.mKind}, {"message", entry.mMessage}});
    }
    std::cout << JsonPage({{"entries", list}}) << '\n';
}

}  // namespace

int ConvertPanels(zephmetadata::OrbVersion generation, bool json) {
    Problems problems;
    problems.PassOverCollected();
    zephmetadata::UTF16String text;
    zephmetadata::utility::LoadAndConvertGenericPanels(generation, text);
    // The log is made of paths, which may be no UTF-8.
    const std::string log = zephcore::PathToNative(text);
    const std::vector<Entry> entries = EntriesOf(log);
    if (json) {
        PrintAsJson(entries);
    } else {
        std::cout << Printable(log);
    }
    problems.ReportCollected({});
    const bool hasFailed =
        std::any_of(entries.begin(), entries.end(), [](const Entry& entry) { return entry.mKind == "failure"; });
    return hasFailed ? 1 : problems.ExitStatus();
}

}  // namespace zephmeta
