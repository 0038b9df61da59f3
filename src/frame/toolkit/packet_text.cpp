#include "frame/toolkit/packet_text.h"

#include <expat.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include "frame/toolkit/exempi_handles.h"
#include "frame/toolkit/utf8.h"
#include "frame/toolkit/xmp_alternatives.h"
#include "frame/toolkit/xmp_paths.h"

namespace zephmetadata::toolkit {
namespace {

constexpr char kSeparator = '\n';  // between namespace and local name, as the parser joins them

// Expat is used directly here: the positions of tags in the text are needed.
struct ParserDeleter {
    void operator()(XML_Parser parser) const noexcept { XML_ParserFree(parser); }
};
using Parser = std::unique_ptr<std::remove_pointer_t<XML_Parser>, ParserDeleter>;

struct Range {
    std::size_t mBegin = 0;
    std::size_t mEnd = 0;
};

struct Item {
    Range mElement;
    Range mLanguageValue;  // in the text, without the quotes
    bool mIsDefault = false;
    bool mHoldsAlternative = false;
};

struct Element {
    bool mIsAlternative = false;
    std::vector<Item> mItems;  // of an alternative
};

struct Insertion {
    std::size_t mPosition;
    Item mItem;
};

bool IsRDF(std::string_view name, std::string_view local) {
    return name.size() == kRDFNamespace.size() + 1 + local.size() && name.starts_with(kRDFNamespace) &&
           name.ends_with(local);
}

// The value of xml:lang (whose prefix is fixed by XML) within the start tag @p tag.
Range LanguageValue(std::string_view tag) {
    constexpr std::string_view kName = "xml:lang";
    constexpr std::string_view kBlanks = " \t\r\n";
    std::size_t at = tag.find_first_of(kBlanks);
    while (at != std::string_view::npos) {
        const std::size_t name = tag.find_first_not_of(kBlanks, at);
        const std::size_t open = name == std::string_view::npos ? name : tag.find_first_of("'\"", name);
        const std::size_t close = open == std::string_view::npos ? open : tag.find(tag[open], open + 1);
        if (close == std::string_view::npos) {
            break;
        }
        const std::string_view attribute = tag.substr(name, tag.find_first_of(" \t\r\n=", name) - name);
        if (attribute == kName) {
            return {open + 1, close};
        }
        at = close + 1;
    }
    return {};
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
    const std::vector<Insertion>& Insertions() const { return mInsertions; }

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
        mElements.push_back({isAlternative, {}});
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
        const UTF8String languageName = UTF8String(kXMLNamespace) + kSeparator + "lang";
        while (*attributes != nullptr && attributes[0] != languageName) {
            attributes += 2;
        }
        const auto around = std::find_if(mElements.rbegin(), mElements.rend(),
                                         [](const Element& element) { return element.mIsAlternative; });
        if (*attributes == nullptr || around == mElements.rend() || around->mItems.empty() ||
            around->mItems.back().mIsDefault || !SameLanguage(attributes[1], kDefaultLanguage)) {
            return;
        }
        const Range inTag = LanguageValue(mText.substr(Position(), EventEnd() - Position()));
        around->mItems.back().mIsDefault = inTag.mEnd > 0;
        around->mItems.back().mLanguageValue = {Position() + inTag.mBegin, Position() + inTag.mEnd};
    }

    void End() {
        const Element element = std::move(mElements.back());
        mElements.pop_back();
        if (!mElements.empty() && mElements.back().mIsAlternative) {
            mElements.back().mItems.back().mElement.mEnd = EventEnd();
        }
        if (!element.mIsAlternative || element.mItems.size() != 2) {
            return;
        }
        const auto isDefault = [](const Item& item) { return item.mIsDefault && !item.mHoldsAlternative; };
        const auto found = std::find_if(element.mItems.begin(), element.mItems.end(), isDefault);
        if (found != element.mItems.end()) {
            mInsertions.push_back({element.mItems.back().mElement.mEnd, *found});
        }
    }

    std::string_view mText;
    Parser mParser;
    std::vector<Element> mElements;
    std::vector<Insertion> mInsertions;
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

// The x-default item once more, as it is written, but for its language.
void AppendTwin(UTF8String& to, std::string_view text, const Item& item) {
    to.append(text.substr(item.mElement.mBegin, item.mLanguageValue.mBegin - item.mElement.mBegin));
    to.append(kTwinLanguage);
    to.append(text.substr(item.mLanguageValue.mEnd, item.mElement.mEnd - item.mLanguageValue.mEnd));
}

}  // namespace

void CheckPacket(std::string_view packet) {
    Reader reader(packet);
    ReadOrThrow(reader, packet);
}

UTF8String WidenPacket(std::string_view packet) {
    if (packet.size() > kMaxPacketBytes) {
        ThrowError(XMPErr_BadParse, "packet that is too large");
    }
    const UTF8String clean = CleanPacket(packet);
    const std::string_view text = clean;
    Reader reader(text);
    ReadOrThrow(reader, text);
    UTF8String wide;
    std::size_t done = 0;
    for (const Insertion& insertion : reader.Insertions()) {
        wide.append(text.substr(done, insertion.mPosition - done));
        AppendTwin(wide, text, insertion.mItem);
        done = insertion.mPosition;
    }
    return wide.append(text.substr(done));
}

}  // namespace zephmetadata::toolkit
