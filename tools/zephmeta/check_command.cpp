#include <algorithm>
#include <array>
#include <iostream>
#include <set>
#include <string_view>

#include "commands.h"
#include "console.h"
#include "document_file.h"
#include "json.h"
#include "session.h"
#include "zephcore/files.h"
#include "zephcore/text.h"
#include "zephmetadata/zephmetadata.h"

namespace zephmeta {

namespace {

using namespace zephmetadata;

struct DocumentProblem {
    std::size_t mLine = 0;
    std::string mMessage;
};
using DocumentProblems = std::vector<DocumentProblem>;

/// What would be right, by what a message says.
struct AdviceRow {
    std::string_view mMessage;
    std::string_view mAdvice;
};

constexpr auto kAdvice = std::to_array<AdviceRow>({
    {"invalid XML", "every element has to be closed, every reference known, the text UTF-8"},
    {"invalid definitions tag",
     "the elements are xmp_definitions, xmp_schema, xmp_property, xmp_type, xmp_field, xmp_qualifier and xmp_choice"},
    {"invalid property tag", "xmp_property stands in xmp_schema"},
    {"invalid field tag", "xmp_field stands in xmp_type"},
    {"invalid choice tag", "xmp_choice stands in a property, field, qualifier or type"},
    {"invalid qualifier tag", "xmp_qualifier stands in a property, field or type"},
    {"must extend valid primitive type",
     "extends is integer, real, text, boolean, openchoice, closedchoice, bag, seq or alt"},
    {"outermost Tag", "the root element is views"},
    {"missing namespace", "declare it on the root: xmlns=\"http://ns.zephmetadata.org/metadata/ui/1.0/\""},
    {"has no <view> tag", "put at least one view into views"},
    {"needs a name attribute", "give the view a name of its own, for example org.example.view.tides"},
    {"without a 'name' attribute", "write name=\"prefix:property\""},
    {"invalid prefix", "declare the prefix on the root element: xmlns:prefix=\"the schema's namespace\""},
    {"invalid XMP property", "\"zephmeta schemas PREFIX\" lists the properties of a schema"},
    {"invalid Structure", "\"zephmeta types ID\" lists the fields of a structure"},
    {"already", "choose another name"},
});

std::string WithAdvice(const std::string& message) {
    const auto* const row = std::find_if(kAdvice.begin(), kAdvice.end(), [&](const AdviceRow& candidate) {
        return message.find(candidate.mMessage) != std::string::npos;
    });
    return row == kAdvice.end() ? message : message + " (" + std::string(row->mAdvice) + ")";
}

/// Makes the library read the document as it would when it is installed; what it says of it is collected elsewhere.
using Load = void (*)(const UTF16String& path, DocumentProblems& problems);

void LoadDefinitions(const UTF16String& path, DocumentProblems& problems) {
    const Definitions loaded = ParseDocumentAndRegisterDefinitions(path, false);
    if (loaded.first.empty() && loaded.second.empty() && GetErrorInfos().empty()) {
        problems.push_back({0, "defines nothing"});
    }
}

/// A view whose name is taken would be left out.
void LoadViews(const UTF16String& path, DocumentProblems& problems) {
    LoadAllViewDefinitions();
    std::set<UTF8String> names;
    for (const sp<ViewDefinition>& view : CommonViewDefinitions()) {
        names.insert(view->mName);
    }
    for (const sp<ViewDefinition>& view : ParseViewDefinitionsFromDocument(path)) {
        if (!names.insert(view->mName).second) {
            problems.push_back({0, "a view named \"" + view->mName + "\" already exists"});
        }
    }
}

void LoadPaths(const UTF16String& path, DocumentProblems& problems) {
    std::set<Path> paths;
    if (!ReadIncludedLeafPathsAsXMLFile(paths, path)) {
        problems.push_back({0, "invalid XML."});
    } else if (paths.empty()) {
        problems.push_back({0, "names no path that is defined and holds a value of its own"});
    }
}

struct KindRow {
    std::string_view mRoot;
    Load mLoad;
};
constexpr auto kKinds =
    std::to_array<KindRow>({{"xmp_definitions", LoadDefinitions}, {"views", LoadViews}, {"md.paths", LoadPaths}});

/// The name of the first element, without its prefix. The document may be broken further on.
std::string RootName(const std::string& text) {
    std::size_t at = text.find('<');
    while (at != std::string::npos && at + 1 < text.size() && (text[at + 1] == '?' || text[at + 1] == '!')) {
        const std::string_view end = text.compare(at, 4, "<!--") == 0 ? "-->" : ">";
        at = text.find('<', std::min(text.find(end, at), text.size()));
    }
    if (at == std::string::npos) {
        return {};
    }
    const std::string name = text.substr(at + 1, text.find_first_of(" \t\r\n/>", at + 1) - at - 1);
    return name.substr(name.find(':') + 1);
}

/// Each document is read by a library of its own, so that none changes what the next one meets.
DocumentProblems Check(const UTF16String& path, Load load) {
    const Session session;
    const std::size_t before = GetErrorInfos().size();  // what is installed on this machine may have problems itself
    DocumentProblems problems;
    load(path, problems);
    const std::vector<ErrorInfo> infos = GetErrorInfos();
    for (std::size_t i = before; i < infos.size(); ++i) {
        problems.push_back({infos[i].line, Shown(infos[i].message)});
    }
    std::stable_sort(problems.begin(), problems.end(), [](const DocumentProblem& left, const DocumentProblem& right) {
        return left.mLine < right.mLine;
    });
    return problems;
}

DocumentProblems CheckFile(const std::string& name) {
    const auto text = ReadDocument(name);
    if (!text) {
        return {{0, "cannot be read"}};
    }
    const std::string root = RootName(*text);
    const auto* const kind =
        std::find_if(kKinds.begin(), kKinds.end(), [&](const KindRow& row) { return row.mRoot == root; });
    if (kind == kKinds.end()) {
        return {{0, "is no document of this library: the root element is xmp_definitions, views or md.paths"}};
    }
    return Check(zephcore::PathFromNative(name), kind->mLoad);
}

}  // namespace

int CheckDocuments(const std::vector<std::string>& files, bool json) {
    bool hasProblems = false;
    for (const std::string& file : files) {
        const DocumentProblems problems = CheckFile(file);
        hasProblems = hasProblems || !problems.empty();
        Json list = Json::array();
        for (const DocumentProblem& problem : problems) {
            const std::string message = WithAdvice(problem.mMessage);
            const std::string line = problem.mLine == 0 ? std::string() : ":" + std::to_string(problem.mLine);
            if (json) {
                list.push_back({{"line", problem.mLine}, {"message", message}});
            } else {
                std::cerr << OneLine(file) << line << ": " << OneLine(message) << '\n';
            }
        }
        if (json) {
            std::cout << JsonLine({{"file", file}, {"problems", list}}) << '\n';
        } else if (problems.empty()) {
            std::cout << OneLine(file) << ": good\n";
        }
    }
    return hasProblems ? 1 : 0;
}

}  // namespace zephmeta
