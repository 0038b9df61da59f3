#include <algorithm>
#include <array>
#include <iostream>
#include <string_view>

#include "commands/commands.h"
#include "console.h"
#include "documents/document_checks.h"
#include "documents/document_file.h"
#include "json.h"
#include "panel/panel_model.h"
#include "session.h"

namespace zephmeta {

namespace {

/// What would be right, by what a message says.
struct AdviceRow {
    std::string_view mKey;      ///< of the library's message, behind "zephmetadata/"; empty for one of this program
    std::string_view mMessage;  ///< a part of it in English
    std::string_view mAdvice;
};

constexpr auto kAdvice = std::to_array<AdviceRow>({
    {"DefinitionsParser/InvalidXML", "invalid XML",
     "every element has to be closed, every reference known, the text UTF-8"},
    {"DefinitionsParser/InvalidDefinitionsTag", "invalid definitions tag",
     "the elements are xmp_definitions, xmp_schema, xmp_property, xmp_type, xmp_field, xmp_qualifier and xmp_choice"},
    {"DefinitionsParser/InvalidPropertyTag", "invalid property tag", "xmp_property stands in xmp_schema"},
    {"DefinitionsParser/InvalidFieldTag", "invalid field tag", "xmp_field stands in xmp_type"},
    {"DefinitionsParser/InvalidChoiceTag", "invalid choice tag",
     "xmp_choice stands in a property, field, qualifier or type"},
    {"DefinitionsParser/InvalidQualifierTag", "invalid qualifier tag",
     "xmp_qualifier stands in a property, field or type"},
    {"ParseEntryDefinition/InvalidExtendType", "must extend valid primitive type",
     "extends is integer, real, text, boolean, openchoice, closedchoice, bag, seq or alt"},
    {"view_parser/NoViewsTag", "outermost Tag", "the root element is views"},
    {"view_parser/MissingUINameSpace", "missing namespace",
     "declare it on the root: xmlns=\"http://ns.zephmetadata.org/metadata/ui/1.0/\""},
    {"view_parser/NoViewTag", "has no <view> tag", "put at least one view into views"},
    {"view_parser/ViewHasNoName", "needs a name attribute",
     "give the view a name of its own, for example org.example.view.tides"},
    {"view_parser/PropertyWithoutName", "without a 'name' attribute", "write name=\"prefix:property\""},
    {"view_parser/InvalidPrefixInXMPProperty", "invalid prefix",
     "declare the prefix on the root element: xmlns:prefix=\"the schema's namespace\""},
    {"view_parser/InvalidXMPProperty", "invalid XMP property",
     "\"zephmeta schemas PREFIX\" lists the properties of a schema"},
    {"view_parser/InvalidXMPPropertyInStruct", "invalid Structure",
     "\"zephmeta types ID\" lists the fields of a structure"},
    {"ErrorInSchemaRegistration/duplicateSchemaDefinition", "schema definition for",
     "a package adds properties to a schema that exists, when the document stands in its folder schema"},
    {"ErrorInSchemaRegistration/duplicatePropertyDefinition", "property definition for",
     "leave it out: the schema has that property"},
    {"ErrorInTypeRegistration/duplicateTypeDefinition", "type definition for",
     "choose another id; a package may add fields to a structure by listing those alone that it lacks"},
    {"ErrorInProperty/InvalidTypeChangedToDefault", "is changed to default type",
     "give it a type, and arrays and choices an element_type"},
    {"ErrorInArrayOrChoice/InvalidElementTypeChangedToDefault", "is changed to default type",
     "give it a type, and arrays and choices an element_type"},
    {"ErrorInArrayOrChoice/InvalidElementTypeInTypeChangedToDefault", "is changed to default type",
     "give it a type, and arrays and choices an element_type"},
    {"ErrorInField/InvalidType", "has an invalid type", "\"zephmeta types\" lists the types"},
    {"ErrorInArrayOrChoice/InvalidElementType", "has an invalid element type", "\"zephmeta types\" lists the types"},
    {"ErrorInNamespaceRegistration", "couldn't be registered with prefix",
     "choose a prefix that is a name and stands for no other namespace"},
    {"", "view named", "choose another name"},
    {"", "is not defined", "\"zephmeta schemas PREFIX\" lists the properties of a schema"},
    {"", "has paths below it", "name those of them that are wanted"},
    {"", "is there before", "leave it out"},
});

/// How much of @p message the parts of @p pattern are, which has places for arguments between them; 0 when it does not
/// hold them, one after the other.
std::size_t Likeness(const std::string& message, const std::string& pattern) {
    std::size_t at = 0;
    std::size_t likeness = 0;
    for (std::size_t from = 0; from < pattern.size();) {
        const std::size_t place = std::min(pattern.find('@', from), pattern.size());
        const std::string part = pattern.substr(from, place - from);
        at = message.find(part, at);
        if (at == std::string::npos) {
            return 0;
        }
        at += part.size();
        likeness += part.size();
        from = place + 2;  // "@0"
    }
    return likeness;
}

/// With the advice for the message that it is most like, whatever its language.
std::string WithAdvice(const std::string& message) {
    std::string_view advice;
    std::size_t most = 0;
    for (const AdviceRow& row : kAdvice) {
        const std::string english(row.mMessage);
        const std::string pattern =
            row.mKey.empty() ? english : Localized("$$$/zephmetadata/" + std::string(row.mKey) + "=" + english);
        if (const std::size_t likeness = Likeness(message, pattern); likeness > most) {
            most = likeness;
            advice = row.mAdvice;
        }
    }
    return most == 0 ? message : message + " (" + std::string(advice) + ")";
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
    DocumentProblems problems = check.Problems();
    for (DocumentProblem& problem : problems) {
        problem.mMessage = WithAdvice(problem.mMessage);
    }
    return problems;
}

}  // namespace

int CheckDocuments(const std::vector<std::string>& files, bool json) {
    bool hasProblems = false;
    for (const std::string& file : files) {
        const DocumentProblems problems = CheckFile(file);
        hasProblems = hasProblems || !problems.empty();
        Json list = Json::array();
        for (const DocumentProblem& problem : problems) {
            const std::string line = problem.mLine == 0 ? std::string() : ":" + std::to_string(problem.mLine);
            if (json) {
                list.push_back({{"line", problem.mLine}, {"message", problem.mMessage}});
            } else {
                std::cerr << OneLine(file) << line << ": " << OneLine(problem.mMessage) << '\n';
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
