#include <algorithm>
#include <array>
#include <iostream>
#include <string_view>

#include "commands/commands.h"
#include "console.h"
#include "documents/document_checks.h"
#include "documents/document_file.h"
#include "json.h"
#include "session.h"

namespace zephmeta {

namespace {

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
    {"schema definition for",
     "a package adds properties to a schema that exists, when the document stands in its folder schema"},
    {"property definition for", "leave it out: the schema has that property"},
    {"type definition for",
     "choose another id; a package may add fields to a structure by listing those alone that it lacks"},
    {"is changed to default type", "give it a type, and arrays and choices an element_type"},
    {"has an invalid type", "\"zephmeta types\" lists the types"},
    {"has an invalid element type", "\"zephmeta types\" lists the types"},
    {"couldn't be registered with prefix", "choose a prefix that is a name and stands for no other namespace"},
    {"view named", "choose another name"},
    {"is not defined", "\"zephmeta schemas PREFIX\" lists the properties of a schema"},
    {"has paths below it", "name those of them that are wanted"},
    {"is there before", "leave it out"},
});

std::string WithAdvice(const std::string& message) {
    const auto* const row = std::find_if(kAdvice.begin(), kAdvice.end(), [&](const AdviceRow& candidate) {
        return message.find(candidate.mMessage) != std::string::npos;
    });
    return row == kAdvice.end() ? message : message + " (" + std::string(row->mAdvice) + ")";
}

struct KindRow {
    std::string_view mRoot;
    void (*mCheck)(DocumentCheck& check);
};
constexpr auto kKinds = std::to_array<KindRow>({{"xmp_definitions", CheckDefinitions},
                                                {"views", CheckViews},
                                                {"md.paths", CheckPaths},
                                                {"extension", CheckExtensionManifest},
                                                {"panel", CheckPanelManifest}});

/// Each document is read by a library of its own, so that none changes what the next one meets.
DocumentProblems CheckFile(const std::string& name) {
    const auto text = ReadDocument(name);
    if (!text) {
        return {{0, "cannot be read"}};
    }
    const std::string root = RootOf(*text).mName;
    const auto* const kind =
        std::find_if(kKinds.begin(), kKinds.end(), [&](const KindRow& row) { return row.mRoot == root; });
    if (kind == kKinds.end()) {
        return {{0,
                 "is no document of this library: the root element is xmp_definitions, views, md.paths, extension or "
                 "panel"}};
    }
    const Session session;
    DocumentCheck check(name, *text);
    kind->mCheck(check);
    return check.Problems();
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
