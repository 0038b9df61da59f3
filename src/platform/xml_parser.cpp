#include <algorithm>
#include <string_view>
#include <utility>

#include "platform/expat_events.h"
#include "platform/file_descriptor.h"

namespace zephcore {

namespace {

thread_local std::size_t documentLine = 0;

}  // namespace

std::size_t CurrentDocumentLine() {
    return documentLine;
}

DocumentLineScope::DocumentLineScope(std::size_t line) : mBefore(documentLine) {
    documentLine = line;
}

DocumentLineScope::~DocumentLineScope() {
    documentLine = mBefore;
}

namespace {

constexpr int kSuccess = 0;
constexpr int kFailure = 1;

/// The next bytes of a document in memory.
class BufferSource {
public:
    explicit BufferSource(std::string_view bytes) : mRest(bytes) {}

    std::optional<std::string_view> Next(std::size_t size) {
        const std::string_view piece = mRest.substr(0, size);
        mRest.remove_prefix(piece.size());
        return piece;
    }

private:
    std::string_view mRest;
};

/// The next bytes of a document in a file; absent when it cannot be read.
class FileSource {
public:
    explicit FileSource(FileDescriptor file) : mFile(std::move(file)) {}

    std::optional<std::string_view> Next(std::size_t size) {
        mPiece.resize(size);
        const std::optional<std::size_t> length = mFile.Read(mPiece.data(), size);
        return length ? std::optional(std::string_view(mPiece).substr(0, *length)) : std::nullopt;
    }

private:
    FileDescriptor mFile;
    std::string mPiece;
};

/// Feeds all of @p source to @p events.
template <typename Source>
bool FeedAll(ExpatEvents& events, Source& source) {
    for (;;) {
        const std::optional<std::string_view> piece = source.Next(events.NextPieceSize());
        if (!piece) {
            return false;
        }
        if (piece->empty()) {
            return events.Finish();
        }
        if (!events.Feed(*piece)) {
            return false;
        }
    }
}

class ExpatParser final : public AbstractDocParser {
public:
    explicit ExpatParser(std::unique_ptr<AbstractParseHandler> handler) : mHandler(std::move(handler)) {}

    int ParseFile(const UTF16String& path) override {
        FileDescriptor file = FileDescriptor::OpenForReading(path);
        if (!file.IsOpen()) {
            mErrorLine = 0;
            return kFailure;
        }
        FileSource source(std::move(file));
        return Parse(source);
    }

    int ParseBuffer(const UTF8String& buffer) override {
        BufferSource source(buffer);
        return Parse(source);
    }

    std::size_t ErrorLine() const override { return mErrorLine; }

private:
    template <typename Source>
    int Parse(Source& source) {
        ExpatEvents events(*mHandler);
        try {
            const DocumentLineScope line(events.Line());
            mHandler->StartDocument();
            const bool isWellFormed = FeedAll(events, source);
            mErrorLine = isWellFormed ? 0 : events.Line();
            if (isWellFormed) {
                const DocumentLineScope lastLine(events.Line());
                mHandler->EndDocument();
            }
            return isWellFormed ? kSuccess : kFailure;
        } catch (...) {
            mErrorLine = events.Line();
            throw;
        }
    }

    std::unique_ptr<AbstractParseHandler> mHandler;
    std::size_t mErrorLine = 0;
};

}  // namespace

std::unique_ptr<AbstractDocParser> GetParser(std::unique_ptr<AbstractParseHandler> handler) {
    return std::make_unique<ExpatParser>(std::move(handler));
}

}  // namespace zephcore
