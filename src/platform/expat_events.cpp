#include "platform/expat_events.h"

#include <algorithm>
#include <array>
#include <new>

#include "zephcore/text.h"

namespace zephcore {

namespace {

/// Between the parts of a name; no character of XML 1.0, so it is in none of them.
constexpr char kSeparator = '\x01';
constexpr std::size_t kPieceSize = 64U << 10U;

UTF16String Wide(const char* text) {
    return text == nullptr ? UTF16String() : UTF8to16(text);
}

ExpatEvents* Self(void* events) {
    return static_cast<ExpatEvents*>(events);
}

}  // namespace

ExpatEvents::ExpatEvents(AbstractParseHandler& handler)
    : mHandler(handler), mParser(XML_ParserCreateNS(nullptr, kSeparator), &XML_ParserFree) {
    if (mParser == nullptr) {
        throw std::bad_alloc();
    }
    XML_SetUserData(mParser.get(), this);
    XML_SetReturnNSTriplet(mParser.get(), 1);
    SetCallbacks();
    SetRefusals();
}

ExpatEvents::~ExpatEvents() = default;

/// Runs @p action unless the run is over. Expat's frames are C: no exception may pass through them.
template <typename Action>
void ExpatEvents::Guard(void* events, Action action) {
    ExpatEvents& self = *Self(events);
    if (self.mIsStopped) {
        return;
    }
    try {
        action(self);
    } catch (...) {
        self.mException = std::current_exception();
        self.Stop();
    }
}

/// The same for an event that ends a text run.
template <typename Action>
void ExpatEvents::Deliver(void* events, Action action) {
    Guard(events, [&action](ExpatEvents& self) {
        self.FlushText();
        const DocumentLineScope line(self.Line());
        action(self);
    });
}

void ExpatEvents::SetCallbacks() {
    const XML_Parser parser = mParser.get();
    XML_SetElementHandler(
        parser,
        [](void* events, const char* name, const char** attributes) {
            Deliver(events, [=](ExpatEvents& self) { self.OnStart(name, attributes); });
        },
        [](void* events, const char* name) { Deliver(events, [=](ExpatEvents& self) { self.OnEnd(name); }); });
    XML_SetCdataSectionHandler(
        parser, [](void* events) { Deliver(events, [](ExpatEvents& self) { self.mHandler.StartCDATA(); }); },
        [](void* events) { Deliver(events, [](ExpatEvents& self) { self.mHandler.EndCDATA(); }); });
    XML_SetCharacterDataHandler(parser, [](void* events, const char* text, int length) {
        Guard(events, [=](ExpatEvents& self) { self.OnText({text, static_cast<std::size_t>(length)}); });
    });
    XML_SetCommentHandler(parser, [](void* events, const char* text) {
        Deliver(events, [=](ExpatEvents& self) {
            if (!self.RefuseLongToken()) {
                self.mHandler.Comment(Wide(text));
            }
        });
    });
    XML_SetNamespaceDeclHandler(
        parser,
        [](void* events, const char* prefix, const char* namespaceURI) {
            Deliver(events, [=](ExpatEvents& self) { self.OnStartMapping(prefix, namespaceURI); });
        },
        [](void* events, const char* prefix) {
            Deliver(events, [=](ExpatEvents& self) { self.mHandler.EndPrefixMapping(Wide(prefix)); });
        });
}

/// What multiplies the input is refused where it is declared: Expat expands entities in attribute values by itself,
/// and puts declared defaults on every element.
void ExpatEvents::SetRefusals() {
    const XML_Parser parser = mParser.get();
    XML_SetStartDoctypeDeclHandler(parser, [](void* events, const char*, const char*, const char*, int) {
        Self(events)->mHasDocumentType = true;
    });
    XML_SetEntityDeclHandler(parser, [](void* events, const char*, int, const char*, int, const char*, const char*,
                                        const char*, const char*) { Self(events)->Stop(); });
    XML_SetAttlistDeclHandler(parser,
                              [](void* events, const char*, const char*, const char*, const char* defaultValue, int) {
                                  if (defaultValue != nullptr) {
                                      Self(events)->Stop();
                                  }
                              });
    XML_SetSkippedEntityHandler(parser, [](void* events, const char*, int) { Self(events)->Stop(); });
}

std::size_t ExpatEvents::NextPieceSize() const {
    const auto pending = static_cast<std::size_t>(mFedBytes - mTokenStart);
    return std::clamp(pending, kPieceSize, kMaxTokenBytes);
}

bool ExpatEvents::Feed(std::string_view piece) {
    if (!Parse(piece, false)) {
        return false;
    }
    const auto position = static_cast<std::int64_t>(XML_GetCurrentByteIndex(mParser.get()));
    if (position < 0) {
        // Expat has put off scanning until more is there. It does so only for a piece shorter than what it holds, which
        // is the last one of a document: Finish has it scanned.
        return true;
    }
    mTokenStart = position;
    return static_cast<std::size_t>(mFedBytes - mTokenStart) <= kMaxTokenBytes;
}

bool ExpatEvents::Finish() {
    return Parse({}, true);
}

std::size_t ExpatEvents::Line() const {
    return static_cast<std::size_t>(XML_GetCurrentLineNumber(mParser.get()));
}

bool ExpatEvents::Parse(std::string_view piece, bool isLast) {
    mFedBytes += static_cast<std::int64_t>(piece.size());
    const XML_Status status = XML_Parse(mParser.get(), piece.data(), static_cast<int>(piece.size()), isLast ? 1 : 0);
    if (mException != nullptr) {
        std::rethrow_exception(mException);
    }
    return status == XML_STATUS_OK && !mIsStopped;
}

void ExpatEvents::Stop() {
    mIsStopped = true;
    XML_StopParser(mParser.get(), XML_FALSE);
}

/// Stops at a complete token over the bound; true when it did.
bool ExpatEvents::RefuseLongToken() {
    if (static_cast<std::size_t>(XML_GetCurrentByteCount(mParser.get())) <= kMaxTokenBytes) {
        return false;
    }
    Stop();
    return true;
}

/// Whether the current tag refers to an entity that is not predefined. Where a document names an external subset,
/// Expat drops such a reference from an attribute value without a word.
bool ExpatEvents::RefersToUnknownEntity() const {
    static constexpr auto kKnown = std::to_array<std::string_view>({"#", "lt;", "gt;", "amp;", "quot;", "apos;"});
    int offset = 0;
    int size = 0;
    const char* const context = XML_GetInputContext(mParser.get(), &offset, &size);
    if (context == nullptr) {
        return true;
    }
    std::string tag(context + offset, static_cast<std::size_t>(XML_GetCurrentByteCount(mParser.get())));
    std::erase(tag, '\0');  // in UTF-16 every other byte of ASCII text
    for (std::size_t at = tag.find('&'); at != std::string::npos; at = tag.find('&', at + 1)) {
        const std::string_view name = std::string_view(tag).substr(at + 1);
        if (std::none_of(kKnown.begin(), kKnown.end(),
                         [=](std::string_view known) { return name.starts_with(known); })) {
            return true;
        }
    }
    return false;
}

void ExpatEvents::FlushText() {
    if (mText.empty()) {
        return;
    }
    const DocumentLineScope line(mTextLine);
    const UTF16String text = UTF8to16(mText);
    mText.clear();
    mHandler.Characters(text);
}

void ExpatEvents::OnStart(const char* name, const char** attributes) {
    if (RefuseLongToken()) {
        return;
    }
    std::size_t count = 0;
    while (attributes[2 * count] != nullptr) {
        ++count;
    }
    mNodes += 1 + count;
    if (++mDepth > kMaxElementDepth || count > kMaxAttributes || mNodes > kMaxNodes ||
        (mHasDocumentType && RefersToUnknownEntity())) {
        Stop();
        return;
    }
    AttributeList list;
    list.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        QualifiedName parts = Split(attributes[2 * i]);
        list.push_back({std::move(parts.mName), std::move(parts.mNamespaceURI), std::move(parts.mLocalName),
                        Wide(attributes[2 * i + 1])});
    }
    const QualifiedName element = Split(name);
    mHandler.StartElementWithNamespace(element.mName, element.mNamespaceURI, element.mLocalName, list);
}

void ExpatEvents::OnEnd(const char* name) {
    --mDepth;
    const QualifiedName element = Split(name);
    mHandler.EndElementWithNamespace(element.mName, element.mNamespaceURI, element.mLocalName);
}

/// Gathers a text run: Expat reports it in pieces that end at lines, references and buffers.
void ExpatEvents::OnText(std::string_view text) {
    if (mText.empty()) {
        mTextLine = Line();
    }
    if (mText.size() + text.size() > kMaxTokenBytes) {
        Stop();
        return;
    }
    mText += text;
}

void ExpatEvents::OnStartMapping(const char* prefix, const char* namespaceURI) {
    const std::string_view uri = namespaceURI == nullptr ? "" : namespaceURI;
    if (uri.size() > kMaxNamespaceBytes) {
        Stop();
        return;
    }
    mHandler.StartPrefixMapping(Wide(prefix), UTF8to16(uri));
}

/// Expat's "URI|local name|prefix", "URI|local name" or "local name".
ExpatEvents::QualifiedName ExpatEvents::Split(const char* name) {
    const std::string_view text = name;
    const std::size_t first = text.find(kSeparator);
    if (first == std::string_view::npos) {
        UTF16String whole = UTF8to16(text);
        return {whole, {}, whole};
    }
    const std::size_t second = text.find(kSeparator, first + 1);
    UTF16String localName = UTF8to16(text.substr(first + 1, second - first - 1));
    UTF16String asWritten =
        second == std::string_view::npos ? localName : UTF8to16(text.substr(second + 1)) + u':' + localName;
    return {std::move(asWritten), UTF8to16(text.substr(0, first)), std::move(localName)};
}

}  // namespace zephcore
