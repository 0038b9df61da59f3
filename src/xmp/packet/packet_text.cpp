#include "xmp/packet/packet_text.h"

#include <expat.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <type_traits>
#include <unordered_set>
#include <utility>
#include <vector>

#include "xmp/arrays/xmp_alternatives.h"
#include "xmp/core/exempi_handles.h"
#include "xmp/core/xmp_paths.h"
#include "xmp/packet/packet_about.h"
#include "xmp/packet/utf8.h"

namespace zephmetadata::toolkit {
namespace {

// The element around rdf:RDF is optional, but without it the toolkit reads nothing.
constexpr std::string_view kOpening = "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">";
constexpr std::string_view kClosing = "</x:xmpmeta>";

constexpr char kSeparator = '\n';  // between namespace and local name, as the parser joins them

// Expat is used directly here: the positions of tags in the text are needed.
struct ParserDeleter {
    void operator()(XML_Parser parser) const noexcept { XML_ParserFree(parser); }
};
using Parser = std::unique_ptr<std::remove_pointer_t<XML_Parser>, ParserDeleter>;

struct Item {
    TextRange mElement;
    TextRange mLanguageValue;  // in the text, without the quotes
    bool mIsDefault = false;
    bool mHoldsAlternative = false;
};

struct Element {
    bool mIsAlternative = false;
    bool mIsRDF = false;          // the rdf:RDF
    bool mHoldsTopLevel = false;  // an rdf:Description within it
    std::size_t mNames = 0;       // attributes and elements within that the toolkit looks for by name
    std::size_t mPathBytes = 0;   // of the path to it, and of the namespace that goes with the path
    std::vector<Item> mItems;     // of an alternative
};

/// A part of the text, which may be empty, and what to put in its place.
struct Edit {
    TextRange mRange;
    UTF8String mText;
};

bool IsRDF(std::string_view name, std::string_view local) {
    return name.size() == kRDFNamespace.size() + 1 + local.size() && name.starts_with(kRDFNamespace) &&
           name.ends_with(local);
}

// The prefix is fixed by XML.
TextRange LanguageValue(std::string_view tag) {
    return AttributeValue(tag, [](std::string_view name) { return name == "xml:lang"; });
}

/// The value of an attribute among those that the parser tells; null when there is none.
const XML_Char* FindAttribute(const XML_Char** attributes, std::string_view nameSpace, std::string_view local) {
    UTF8String name(nameSpace);
    name.append(nameSpace.empty() ? 0 : 1, kSeparator).append(local);
    while (*attributes != nullptr && attributes[0] != name) {
        attributes += 2;
    }
    return *attributes == nullptr ? nullptr : attributes[1];
}

// The x-default item once more, as it is written, but for its language.
UTF8String Twin(std::string_view text, const Item& item) {
    UTF8String twin(text.substr(item.mElement.mBegin, item.mLanguageValue.mBegin - item.mElement.mBegin));
    twin.append(kTwinLanguage);
    return twin.append(text.substr(item.mLanguageValue.mEnd, item.mElement.mEnd - item.mLanguageValue.mEnd));
}

class Reader {
public:
    explicit Reader(std::string_view text) : mText(text), mParser(XML_ParserCreateNS("UTF-8", kSeparator)) {
        XML_SetUserData(mParser.get(), this);
        XML_SetElementHandler(mParser.get(), &OnStart, &OnEnd);
        XML_SetStartDoctypeDeclHandler(mParser.get(), &OnDoctype);
        XML_SetCharacterDataHandler(mParser.get(), &OnText);
        XML_SetStartNamespaceDeclHandler(mParser.get(), &OnNamespace);
    }

    bool Read() {
        const auto size = static_cast<int>(mText.size());
        return XML_Parse(mParser.get(), mText.data(), size, XML_TRUE) == XML_STATUS_OK && !mException;
    }
    /// What was exceeded, for the error; null for a packet that is not well-formed.
    const char* Excess() const { return mExcess; }
    void Rethrow() const {
        if (mException) {
            std::rethrow_exception(mException);
        }
    }
    const std::vector<Edit>& Edits() const { return mEdits; }
    const UTF8String& About() const { return mAbout; }

private:
    static void XMLCALL OnStart(void* self, const XML_Char* name, const XML_Char** attributes) {
        static_cast<Reader*>(self)->Guarded([&](Reader& reader) { reader.Start(name, attributes); });
    }
    static void XMLCALL OnEnd(void* self, const XML_Char* /*name*/) {
        static_cast<Reader*>(self)->Guarded([](Reader& reader) { reader.End(); });
    }
    static void XMLCALL OnText(void* self, const XML_Char* /*text*/, int length) {
        static_cast<Reader*>(self)->Guarded(
            [&](Reader& reader) { reader.Spend(EstimatedTextBytes(static_cast<std::size_t>(length)), 0); });
    }
    static void XMLCALL OnNamespace(void* self, const XML_Char* prefix, const XML_Char* uri) {
        static_cast<Reader*>(self)->Guarded([&](Reader& reader) { reader.NoteNamespace(prefix, uri); });
    }
    static void XMLCALL OnDoctype(void* self, const XML_Char* /*name*/, const XML_Char* /*systemId*/,
                                  const XML_Char* /*publicId*/, int /*hasInternalSubset*/) {
        XML_StopParser(static_cast<Reader*>(self)->mParser.get(), XML_FALSE);
    }

    // No exception may pass through the C code of the parser.
    template <typename Step>
    void Guarded(Step step) {
        if (mException) {
            return;
        }
        try {
            step(*this);
        } catch (...) {
            mException = std::current_exception();
            XML_StopParser(mParser.get(), XML_FALSE);
        }
    }

    std::size_t Position() const { return static_cast<std::size_t>(XML_GetCurrentByteIndex(mParser.get())); }
    std::size_t EventEnd() const {
        return Position() + static_cast<std::size_t>(XML_GetCurrentByteCount(mParser.get()));
    }

    void Start(std::string_view name, const XML_Char** attributes) {
        if (mElements.size() >= kMaxPacketDepth) {
            Refuse("packet that is nested too deep");
            return;
        }
        const bool holdsTopLevel = !mElements.empty() && mElements.back().mIsRDF && IsRDF(name, "Description");
        if (holdsTopLevel) {
            NoteAbout(attributes);
        }
        if (mElements.empty() && IsRDF(name, "RDF")) {
            mEdits.push_back({{Position(), Position()}, UTF8String(kOpening)});
        }
        const bool isAlternative = IsRDF(name, "Alt");
        if (isAlternative) {
            MarkItemsAround();
        }
        const bool isItem = !mElements.empty() && mElements.back().mIsAlternative;
        if (isItem) {
            mElements.back().mItems.push_back({{Position(), 0}, {}, false, false});
        }
        if (isItem || IsRDF(name, "value")) {
            NoteLanguage(attributes);
        }
        Element element{isAlternative, IsRDF(name, "RDF"), holdsTopLevel, 0, 0, {}};
        if (!mElements.empty() && !mElements.back().mIsRDF) {
            element.mPathBytes = PathBytes(mElements.back(), name);
        }
        if (!mElements.empty() && !IsRDF(name, "li")) {
            SpendOnNames(1);
        }
        mElements.push_back(std::move(element));
        SpendOnNodes();
    }

    /// The namespace of a property stands beside each path that begins with it.
    std::size_t PathBytes(const Element& parent, std::string_view name) const {
        const std::string_view tag = mText.substr(Position());
        const std::size_t own = std::min(tag.find_first_of(" \t\r\n/>", 1), tag.size());
        return parent.mHoldsTopLevel ? own + name.size() : parent.mPathBytes + own;
    }

    /// The element that begins and its attributes, each of which becomes a node below it.
    void SpendOnNodes() {
        const auto attributes = static_cast<std::size_t>(XML_GetSpecifiedAttributeCount(mParser.get())) / 2;
        SpendOnNames(attributes);
        Spend(((1 + attributes) * EstimatedNodeBytes(mElements.back().mPathBytes)) + (2 * (EventEnd() - Position())),
              0);
    }

    /// Names within the element that is open. All that is told in the rdf:Descriptions of a packet becomes siblings.
    void SpendOnNames(std::size_t count) {
        Element& parent = mElements.back().mHoldsTopLevel ? mElements[mElements.size() - 2] : mElements.back();
        Spend(0, count * (parent.mNames + (count / 2)));
        parent.mNames += count;
    }

    /// The toolkit keeps namespaces, and looks one by one for a prefix that is free when one means several.
    void NoteNamespace(const XML_Char* prefix, const XML_Char* uri) {
        UTF8String name(prefix == nullptr ? "" : prefix);
        name.append(1, kSeparator).append(uri == nullptr ? "" : uri);
        if (mNamespaces.insert(std::move(name)).second) {
            Spend(0, mNamespaces.size());
        }
    }

    void Spend(std::size_t bytes, std::size_t steps) {
        mBytes += bytes;
        mSteps += steps;
        if (mBytes > kMaxPacketMemory || mSteps > kMaxSiblingSteps) {
            Refuse("packet that holds too much");
        }
    }

    void Refuse(const char* excess) {
        mExcess = excess;
        XML_StopParser(mParser.get(), XML_FALSE);
    }

    void NoteAbout(const XML_Char** attributes) {
        const XML_Char* about = FindAttribute(attributes, kRDFNamespace, "about");
        about = about != nullptr ? about : FindAttribute(attributes, {}, "about");
        if (about == nullptr || *about == 0) {
            return;
        }
        if (!mAbout.empty() && mAbout != about) {
            ThrowError(XMPErr_BadXMP, "packet about several things");
        }
        mAbout = about;
        const TextRange inTag = AboutValue(mText.substr(Position(), EventEnd() - Position()));
        mEdits.push_back({{Position() + inTag.mBegin, Position() + inTag.mEnd}, {}});
    }

    void MarkItemsAround() {
        for (Element& element : mElements) {
            if (element.mIsAlternative && !element.mItems.empty()) {
                element.mItems.back().mHoldsAlternative = true;
            }
        }
    }

    // The language stands in the item or, when the item has qualifiers, possibly in the rdf:value within.
    void NoteLanguage(const XML_Char** attributes) {
        const XML_Char* const language = FindAttribute(attributes, kXMLNamespace, "lang");
        const auto around = std::find_if(mElements.rbegin(), mElements.rend(),
                                         [](const Element& element) { return element.mIsAlternative; });
        if (language == nullptr || around == mElements.rend() || around->mItems.empty() ||
            around->mItems.back().mIsDefault || !SameLanguage(language, kDefaultLanguage)) {
            return;
        }
        const TextRange inTag = LanguageValue(mText.substr(Position(), EventEnd() - Position()));
        around->mItems.back().mIsDefault = inTag.mEnd > 0;
        around->mItems.back().mLanguageValue = {Position() + inTag.mBegin, Position() + inTag.mEnd};
    }

    void End() {
        const Element element = std::move(mElements.back());
        mElements.pop_back();
        if (!mElements.empty() && mElements.back().mIsAlternative) {
            mElements.back().mItems.back().mElement.mEnd = EventEnd();
        }
        if (mElements.empty() && element.mIsRDF) {
            mEdits.push_back({{EventEnd(), EventEnd()}, UTF8String(kClosing)});
        }
        if (!element.mIsAlternative || element.mItems.size() != 2) {
            return;
        }
        const auto isDefault = [](const Item& item) { return item.mIsDefault && !item.mHoldsAlternative; };
        const auto found = std::find_if(element.mItems.begin(), element.mItems.end(), isDefault);
        if (found != element.mItems.end()) {
            const std::size_t end = element.mItems.back().mElement.mEnd;
            mEdits.push_back({{end, end}, Twin(mText, *found)});
        }
    }

    std::string_view mText;
    Parser mParser;
    std::vector<Element> mElements;
    std::vector<Edit> mEdits;
    UTF8String mAbout;
    std::exception_ptr mException;
    const char* mExcess = nullptr;
    std::size_t mBytes = 0;
    std::size_t mSteps = 0;
    std::unordered_set<UTF8String> mNamespaces;  // prefix and URI
};

void ReadOrThrow(Reader& reader, std::string_view text) {
    if (text.empty() || text.size() > kMaxPacketBytes) {
        ThrowError(XMPErr_BadParse, text.empty() ? "empty packet" : "packet that is too large");
    }
    if (!reader.Read()) {
        reader.Rethrow();
        const bool isExcessive = reader.Excess() != nullptr;
        ThrowError(isExcessive ? XMPErr_BadParse : XMPErr_BadXML, isExcessive ? reader.Excess() : "packet");
    }
}

}  // namespace

void CheckPacket(std::string_view packet) {
    Reader reader(packet);
    ReadOrThrow(reader, packet);
}

UTF8String WidenPacket(std::string_view packet, UTF8String* about) {
    if (packet.size() > kMaxPacketBytes) {
        ThrowError(XMPErr_BadParse, "packet that is too large");
    }
    const UTF8String clean = CleanPacket(packet);
    const std::string_view text = clean;
    Reader reader(text);
    ReadOrThrow(reader, text);
    UTF8String wide;
    std::size_t done = 0;
    for (const Edit& edit : reader.Edits()) {
        wide.append(text.substr(done, edit.mRange.mBegin - done)).append(edit.mText);
        done = edit.mRange.mEnd;
    }
    if (about != nullptr) {
        *about = reader.About();
    }
    return wide.append(text.substr(done));
}

}  // namespace zephmetadata::toolkit
