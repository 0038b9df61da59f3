#include <algorithm>
#include <fstream>

#include "host.h"

using namespace zephmetadata;

namespace host {

namespace {

template <typename Entry>
sp<Entry> Named(const std::vector<sp<Entry>>& entries, const std::string& name) {
    const auto found = std::find_if(entries.begin(), entries.end(), [&](const auto& e) { return e->mName == name; });
    return found == entries.end() ? nullptr : *found;
}

std::vector<std::string> Expressions(const PolyRange<Path>& range) {
    std::vector<std::string> expressions;
    for (const Path& path : range) {
        expressions.push_back(ExpressionForPath(path));
    }
    return expressions;
}

bool Contains(const std::vector<std::string>& texts, const std::string& text) {
    return std::find(texts.begin(), texts.end(), text) != texts.end();
}

int CheckBuilding() {
    const auto media = NamespaceDefinition(StandardSchemaNamespace(kStandardSchema_XMPMM));
    const Path derived = CreatePathFromSchemaProperty(media, Named(media->mProperties, "DerivedFrom"));
    const auto reference = TypeEntryDefinition(derived);
    CHECK(reference && IsStructType(*reference));
    const Path document = CreatePathFromStructureField(derived, Named(reference->mFields, "documentID"));
    CHECK(ExpressionForPath(document) == "xmpMM:DerivedFrom/stRef:documentID");
    CHECK(document == PathForExpression("xmpMM:DerivedFrom/stRef:documentID") && derived < document);

    const Path history = CreatePathFromSchemaProperty(media, Named(media->mProperties, "History"));
    const auto event = TypeIdDefinition(*PathEntryDefinition(history)->mElementType);
    CHECK(event);
    const Path when = CreatePathFromArrayedStructureField(history, Named(event->mFields, "when"));
    CHECK(PathEntryDefinition(when)->mType == "date");
    CHECK(CreatePathFromElementType(history, PathEntryDefinition(history), event).mEntryName == event->mName);

    CHECK(ExpressionForPath(CreatePathFromArrayItem(history, 2)) == "xmpMM:History[2]");
    CHECK(ExpressionForPath(CreatePathFromArrayItem(history, -1)) == "xmpMM:History[last()]");
    const Path identifiers = PathForExpression("xmp:Identifier");
    const auto scheme = Named(PathEntryDefinition(identifiers)->mQualifiers, "Scheme");
    CHECK(scheme);
    CHECK(ExpressionForPath(CreatePathFromQualifier(identifiers, scheme)) == "xmp:Identifier/?xmpidq:Scheme");
    return 0;
}

int CheckLookup() {
    const UTF8String dublinCore = StandardSchemaNamespace(kStandardSchema_DC);
    const Path title = PathForSchemaNameAndPropertyName(dublinCore, "title");
    CHECK(title == PathForExpression("dc:title"));
    CHECK(title == PathForSchemaNameAndPropertyName(UTF16String(dublinCore.begin(), dublinCore.end()), u"title"));
    CHECK(PathForSchemaNameAndPropertyName(dublinCore, "nothing") == Path());
    CHECK(PrimitiveTypeOfPath(title) == kPrimitiveType_Alt && !IsPathAnArray(title, true));
    const Path subject = PathForExpression("dc:subject");
    CHECK(IsPathAnArray(subject, true) && !IsPathAnArray(subject, false));
    return 0;
}

int CheckEnumerating() {
    const auto media = NamespaceDefinition(StandardSchemaNamespace(kStandardSchema_XMPMM));
    const std::vector<std::string> children = Expressions(ChildPaths(media));
    CHECK(children.size() == media->mProperties.size() && Contains(children, "xmpMM:DerivedFrom"));
    const std::vector<std::string> leaves = Expressions(DescendantLeafPaths(media));
    CHECK(!Contains(leaves, "xmpMM:DerivedFrom") && Contains(leaves, "xmpMM:DerivedFrom/stRef:documentID"));

    const Path derived = PathForExpression("xmpMM:DerivedFrom");
    CHECK(Expressions(ChildPaths(derived)) == Expressions(DescendantLeafPaths(derived)));
    CHECK(Contains(Expressions(ChildPaths(derived)), "xmpMM:DerivedFrom/stRef:documentID"));
    return 0;
}

int CheckPathSets(const std::string& folder) {
    const std::set<Path> paths{PathForExpression("dc:title"), PathForExpression("xmpMM:DerivedFrom/stRef:documentID")};
    UTF8String document;
    IncludedLeafPathsAsXMLString(paths, document);
    std::set<Path> read;
    CHECK(ReadIncludedLeafPathsAsXMLString(read, document) && read == paths);
    CHECK(!ReadIncludedLeafPathsAsXMLString(read, "no document") && read == paths);

    const std::string name = folder + "/paths.xml";
    std::ofstream(name) << document;
    read.clear();
    CHECK(ReadIncludedLeafPathsAsXMLFile(read, zephcore::PathFromNative(name)) && read == paths);
    return 0;
}

}  // namespace

int CheckPaths(const Arguments& arguments) {
    const Session session;
    return CheckBuilding() | CheckLookup() | CheckEnumerating() | CheckPathSets(arguments.mFolder);
}

}  // namespace host
