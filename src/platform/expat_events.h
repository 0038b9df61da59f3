#pragma once

#include <expat.h>

#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

#include "zephcore/xml.h"

namespace zephcore {

/// One run of Expat over one document, fed in pieces: turns Expat's callbacks into the events of a handler and stops
/// the run at a bound, at a declaration that could multiply the input, and at an exception of the handler.
class ExpatEvents {
public:
    explicit ExpatEvents(AbstractParseHandler& handler);
    ~ExpatEvents();
    ExpatEvents(const ExpatEvents&) = delete;
    ExpatEvents& operator=(const ExpatEvents&) = delete;

    /// How many bytes to feed next. Grows with a token that is still incomplete, so that the work on it stays linear
    /// although Expat scans it anew with each piece.
    std::size_t NextPieceSize() const;
    /// Feeds at most NextPieceSize() bytes; false when the document is refused. Throws what the handler threw.
    bool Feed(std::string_view piece);
    /// Ends the document; false when it is not complete.
    bool Finish();
    /// The 1-based line that was read last.
    std::size_t Line() const;

private:
    struct QualifiedName {
        UTF16String mName;
        UTF16String mNamespaceURI;
        UTF16String mLocalName;
    };
    using ParserHandle = std::unique_ptr<std::remove_pointer_t<XML_Parser>, decltype(&XML_ParserFree)>;

    void SetCallbacks();
    void SetRefusals();
    template <typename Action>
    static void Guard(void* events, Action action);
    template <typename Action>
    static void Deliver(void* events, Action action);

    bool Parse(std::string_view piece, bool isLast);
    void Stop();
    bool RefuseLongToken();
    bool RefersToUnknownEntity() const;
    void FlushText();

    void OnStart(const char* name, const char** attributes);
    void OnEnd(const char* name);
    void OnText(std::string_view text);
    void OnStartMapping(const char* prefix, const char* namespaceURI);

    static QualifiedName Split(const char* name);

    AbstractParseHandler& mHandler;
    ParserHandle mParser;
    std::exception_ptr mException;
    std::string mText;  ///< of the current text run, not yet delivered
    std::size_t mTextLine = 0;
    std::size_t mDepth = 0;
    std::size_t mNodes = 0;
    std::int64_t mFedBytes = 0;
    std::int64_t mTokenStart = 0;  ///< byte offset of the first token that Expat has not completed
    bool mHasDocumentType = false;
    bool mIsStopped = false;
};

}  // namespace zephcore
