#include "media/containers/documents/svg_document.h"

#include <expat.h>

#include <array>
#include <map>
#include <memory>

namespace zephmetadata::media {

namespace {

constexpr std::string_view kSVG = "http://www.w3.org/2000/svg";
constexpr std::string_view kMeta = "adobe:ns:meta/";
constexpr std::string_view kRDF = "http://www.w3.org/1999/02/22-rdf-syntax-ns#";
constexpr char kSeparator = '\n';  // in no namespace
constexpr std::size_t kMaxDepth = 1000;

struct Name {
    std::string_view mNamespace;
    std::string_view mLocal;
    std::string_view mPrefix;
};
/// A name as the parser gives it: namespace, local name, prefix.
Name NameOf(std::string_view text) {
    const std::size_t first = text.find(kSeparator);
    if (first == std::string_view::npos) {
        return {{}, text, {}};
    }
    const std::string_view rest = text.substr(first + 1);
    const std::size_t second = rest.find(kSeparator);
    return {text.substr(0, first), rest.substr(0, second),
            second == std::string_view::npos ? std::string_view() : rest.substr(second + 1)};
}

std::string Escaped(std::string_view value) {
    std::string text;
    for (const char c : value) {
        text += c == '&' ? "&amp;" : c == '<' ? "&lt;" : c == '"' ? "&quot;" : std::string(1, c);
    }
    return text;
}

/// Follows the parser through one document.
class Reader {
public:
    Reader(XML_Parser parser, std::string_view text) : mParser(parser), mText(text) {}

    void Open(std::string_view qualified) {
        const Name name = NameOf(qualified);
        ++mDepth;
        if (mDepth > kMaxDepth) {
            mDocument.mDamage = "elements are nested too deeply";
            XML_StopParser(mParser, XML_FALSE);
        } else if (mDepth == 1) {
            OpenRoot(name);
        } else if (mDepth == 2 && name.mNamespace == mNamespace && name.mLocal == "metadata") {
            mIsInMetadata = true;
            mMetadataTag = Event();
        } else if (mDepth == 3 && mIsInMetadata && !mDocument.mXMP && IsXMP(name)) {
            mXMPBegin = Event().mOffset;
            mIsBareRDF = name.mNamespace == kRDF;
            mDocument.mInherited = InheritedDeclarations();
        } else if (mDepth == 4 && mIsBareRDF && !(name.mNamespace == kRDF && name.mLocal == "Description")) {
            mXMPBegin.reset();  // RDF of another kind, as the licence that drawing programs write
        }
    }
    void Close() {
        // Of an empty element the end has no bytes of its own.
        const std::uint64_t end = Event().End();
        if (mDepth == 3 && mXMPBegin) {
            mDocument.mXMP = Range{*mXMPBegin, end - *mXMPBegin};
            mXMPBegin.reset();
        } else if (mDepth == 2 && mIsInMetadata) {
            CloseMetadata(end);
        } else if (mDepth == 1) {
            mDocument.mIsRootEmpty = mText.substr(0, end).ends_with("/>") && end == mDocument.mRootTag.End();
        }
        --mDepth;
        if (mDepth < mDeclarations.size()) {
            mDeclarations.at(mDepth).clear();
        }
    }
    /// Comes before the opening of its element.
    void DeclareNamespace(std::string_view prefix, std::string_view uri) {
        if (mDepth < mDeclarations.size()) {
            mDeclarations.at(mDepth)[std::string(prefix)] = uri;
        }
    }
    void Declare() { mDocument.mHasEntities = true; }
    SVGDocument& Document() { return mDocument; }

private:
    static bool IsXMP(const Name& name) {
        return (name.mNamespace == kMeta && (name.mLocal == "xmpmeta" || name.mLocal == "xapmeta")) ||
               (name.mNamespace == kRDF && name.mLocal == "RDF");
    }
    Range Event() const {
        const XML_Index at = XML_GetCurrentByteIndex(mParser);
        const int size = XML_GetCurrentByteCount(mParser);
        return {at < 0 ? 0 : static_cast<std::uint64_t>(at), size < 0 ? 0 : static_cast<std::uint64_t>(size)};
    }
    std::string InheritedDeclarations() const {
        std::map<std::string, std::string> inherited = mDeclarations[1];
        inherited.insert(mDeclarations[0].begin(), mDeclarations[0].end());
        std::string text;
        for (const auto& [prefix, uri] : inherited) {
            if (!prefix.empty() && !mDeclarations[2].contains(prefix)) {
                text.append(" xmlns:").append(prefix).append("=\"").append(Escaped(uri)).append("\"");
            }
        }
        return text;
    }
    void OpenRoot(const Name& name) {
        mDocument.mIsSVG = name.mLocal == "svg" && (name.mNamespace == kSVG || name.mNamespace.empty());
        mNamespace = name.mNamespace;
        mDocument.mPrefix = name.mPrefix.empty() ? "" : std::string(name.mPrefix) + ":";
        mDocument.mRootTag = Event();
    }
    void CloseMetadata(std::uint64_t end) {
        mIsInMetadata = false;
        if (mDocument.mMetadata || mDocument.mEmptyMetadata) {
            return;
        }
        if (Event().mSize == 0 || end == mMetadataTag.End()) {
            mDocument.mEmptyMetadata = mMetadataTag;
        } else {
            mDocument.mMetadata = Range{mMetadataTag.End(), Event().mOffset - mMetadataTag.End()};
        }
    }

    XML_Parser mParser;
    std::string_view mText;
    SVGDocument mDocument;
    std::size_t mDepth = 0;
    std::string mNamespace;  // of the root: documents without any are drawn by many programs
    bool mIsInMetadata = false;
    Range mMetadataTag;
    std::optional<std::uint64_t> mXMPBegin;
    bool mIsBareRDF = false;                                          // without x:xmpmeta around it
    std::array<std::map<std::string, std::string>, 3> mDeclarations;  // of the root, metadata, and what is in it
};

Reader& Of(void* reader) {
    return *static_cast<Reader*>(reader);
}

void SetHandlers(XML_Parser parser) {
    XML_SetReturnNSTriplet(parser, 1);
    XML_SetElementHandler(
        parser, [](void* reader, const XML_Char* name, const XML_Char** /*attributes*/) { Of(reader).Open(name); },
        [](void* reader, const XML_Char* /*name*/) { Of(reader).Close(); });
    XML_SetStartNamespaceDeclHandler(parser, [](void* reader, const XML_Char* prefix, const XML_Char* uri) {
        Of(reader).DeclareNamespace(prefix == nullptr ? "" : prefix, uri == nullptr ? "" : uri);
    });
    XML_SetStartDoctypeDeclHandler(parser, [](void* reader, const XML_Char* /*name*/, const XML_Char* /*system*/,
                                              const XML_Char* /*publicId*/, int hasInternalSubset) {
        if (hasInternalSubset != 0) {
            Of(reader).Declare();
        }
    });
}

}  // namespace

SVGDocument ReadSVG(std::string_view text) {
    const std::unique_ptr<std::remove_pointer_t<XML_Parser>, decltype(&XML_ParserFree)> parser(
        XML_ParserCreateNS(nullptr, kSeparator), &XML_ParserFree);
    if (!parser) {
        throw std::bad_alloc();
    }
    Reader reader(parser.get(), text);
    XML_SetUserData(parser.get(), &reader);
    SetHandlers(parser.get());
    constexpr std::size_t kStep = std::size_t{1} << 24U;  // the parser counts in int
    for (std::size_t at = 0; reader.Document().mDamage.empty(); at += kStep) {
        const std::string_view part = text.substr(at, kStep);
        const bool isLast = part.size() < kStep || at + kStep == text.size();
        if (XML_Parse(parser.get(), part.data(), static_cast<int>(part.size()), isLast ? 1 : 0) == XML_STATUS_ERROR &&
            reader.Document().mDamage.empty()) {
            reader.Document().mDamage = XML_ErrorString(XML_GetErrorCode(parser.get()));
        }
        if (isLast) {
            break;
        }
    }
    return std::move(reader.Document());
}

}  // namespace zephmetadata::media
