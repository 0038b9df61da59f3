#include <algorithm>
#include <array>
#include <string_view>

#include "definitions/entry_index.h"
#include "zephcore/text.h"
#include "zephcore/xml.h"
#include "zephmetadata/paths.h"

namespace zephmetadata {

namespace {

constexpr std::u16string_view kPathElement = u"metadata_path";
constexpr std::u16string_view kTrue = u"true";

/// The elements of a path, in the order of the document.
enum class Field : std::size_t { kInternal, kNamespace, kDescription, kEntryName, kParentId };

constexpr auto kFieldElements =
    std::to_array<std::u16string_view>({u"internal", u"namespace", u"description", u"entry_name", u"parent_id"});
static_assert(kFieldElements.size() == static_cast<std::size_t>(Field::kParentId) + 1);

/// Collects the paths of one document that are leaves and have a definition.
///
/// Nesting is not tracked: the text of a field counts wherever the field stands, up to the next end of an element. What
/// is held at a time is the one path that is being read, besides the result.
class MetadataPrefsXMLHandler : public zephcore::AbstractParseHandler {
public:
    /// @p paths, and @p findings where it is given, are filled and have to outlive the parse.
    explicit MetadataPrefsXMLHandler(std::set<Path>* paths, std::vector<LeafPathFinding>* findings = nullptr)
        : mPaths(paths), mFindings(findings) {}

    void StartElement(const UTF16String& name, const zephcore::AttributeMap& /*attributes*/) override {
        if (name == kPathElement) {
            mTexts = {};
            return;
        }
        const auto* const found = std::find(kFieldElements.begin(), kFieldElements.end(), name);
        if (found != kFieldElements.end()) {
            mCurrent = &mTexts.at(static_cast<std::size_t>(found - kFieldElements.begin()));
        }
    }

    void EndElement(const UTF16String& name) override {
        if (name != kPathElement) {
            mCurrent = nullptr;
            return;
        }
        const Path path = ReadPath();
        mTexts = {};  // a path round this one does not have them again
        if (!PathEntryDefinition(path)) {
            PassOver(path, LeafPathProblem::kUndefined);
        } else if (!boost::empty(ChildPaths(path))) {
            PassOver(path, LeafPathProblem::kNotALeaf);
        } else if (!mPaths->insert(path).second) {
            PassOver(path, LeafPathProblem::kRepeated);
        }
    }

    void Characters(const UTF16String& text) override {
        if (mCurrent != nullptr) {
            *mCurrent += text;
        }
    }

private:
    const UTF16String& Text(Field field) const { return mTexts.at(static_cast<std::size_t>(field)); }
    UTF8String UTF8(Field field) const { return zephcore::UTF16to8(Text(field)); }

    Path ReadPath() const {
        return {.mInternal = Text(Field::kInternal) == kTrue,
                .mNamespace = UTF8(Field::kNamespace),
                .mPathDescription = UTF8(Field::kDescription),
                .mEntryName = UTF8(Field::kEntryName),
                .mParentId = UTF8(Field::kParentId)};
    }

    void PassOver(const Path& path, LeafPathProblem problem) {
        if (mFindings != nullptr) {
            mFindings->push_back({problem, path, zephcore::CurrentDocumentLine()});
        }
    }

    std::set<Path>* mPaths;
    std::vector<LeafPathFinding>* mFindings;
    std::array<UTF16String, kFieldElements.size()> mTexts;
    UTF16String* mCurrent = nullptr;
};

/// Runs one parse; replaces @p paths by what it read, or leaves them when the document is not well-formed.
template <typename Parse>
bool ReadPaths(std::set<Path>& paths, const Parse& parse) {
    try {
        const EntryIndexScope indexed;
        std::set<Path> read;
        const auto parser = zephcore::GetParser(std::make_unique<MetadataPrefsXMLHandler>(&read));
        if (parse(*parser) != 0) {
            return false;
        }
        paths = std::move(read);
        return true;
    } catch (...) {
        return false;  // promised to hosts, which read preferences where nothing can be done about them
    }
}

UTF8String Element(std::string_view name, const UTF8String& text) {
    return UTF8String("<")
        .append(name)
        .append(">")
        .append(zephcore::EncodeReservedCharacters(text))
        .append("</")
        .append(name)
        .append(">\n");
}

}  // namespace

void IncludedLeafPathsAsXMLString(const std::set<Path>& paths, UTF8String& document) {
    UTF8String text = "<?xml version='1.0'?>\n<md.paths version='1.0'>\n";
    for (const Path& path : paths) {
        text += "<metadata_path>";
        text += Element("internal", path.mInternal ? "true" : "false");
        text += Element("namespace", path.mNamespace);
        text += Element("description", path.mPathDescription);
        text += Element("entry_name", path.mEntryName);
        text += Element("parent_id", path.mParentId);
        text += "</metadata_path>\n";
    }
    text += "</md.paths>\n";
    document = std::move(text);
}

bool ReadIncludedLeafPathsAsXMLString(std::set<Path>& paths, const UTF8String& document) {
    return ReadPaths(paths, [&](zephcore::AbstractDocParser& parser) { return parser.ParseBuffer(document); });
}

bool ReadIncludedLeafPathsAsXMLFile(std::set<Path>& paths, const UTF16String& file) {
    return ReadPaths(paths, [&](zephcore::AbstractDocParser& parser) { return parser.ParseFile(file); });
}

std::vector<LeafPathFinding> CheckIncludedLeafPathsFile(const UTF16String& file) {
    const EntryIndexScope indexed;
    std::set<Path> paths;
    std::vector<LeafPathFinding> findings;
    const auto parser = zephcore::GetParser(std::make_unique<MetadataPrefsXMLHandler>(&paths, &findings));
    if (parser->ParseFile(file) != 0) {
        findings.push_back({LeafPathProblem::kInvalidXML, {}, parser->ErrorLine()});
    }
    return findings;
}

}  // namespace zephmetadata
