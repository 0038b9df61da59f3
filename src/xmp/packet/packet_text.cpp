#include "xmp/packet/packet_text.h"

#include <expat.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <type_traits>
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
    bool mIsRDF = false;       // the rdf:RDF
    std::vector<Item> mItems;  // of an alternative
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
    }

    bool Read() {
        const auto size = static_cast<int>(mText.size());
        return XML_Parse(mParser.get(), mText.data(), size, XML_TRUE) == XML_STATUS_OK && !mException;
    }
    bool IsTooDeep() const { return mTooDeep; }
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
            mTooDeep = true;
            XML_StopParser(mParser.get(), XML_FALSE);
            return;
        }
        if (!mElements.empty() && mElements.back().mIsRDF && IsRDF(name, "Description")) {
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
        mElements.push_back({isAlternative, IsRDF(name, "RDF"), {}});
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
    bool mTooDeep = false;
};

void ReadOrThrow(Reader& reader, std::string_view text) {
    if (text.empty() || text.size() > kMaxPacketBytes) {
        ThrowError(XMPErr_BadParse, text.empty() ? "empty packet" : "packet that is too large");
    }
    if (!reader.Read()) {
        reader.Rethrow();
        ThrowError(XMPErr_BadXML, reader.IsTooDeep() ? "packet that is nested too deep" : "packet");
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
