#include "media/containers/documents/pdf_document.h"

#include <cstdio>
#include <qpdf/InputSource.hh>
#include <qpdf/Pipeline.hh>
#include <stdexcept>
#include <vector>

#include "media/containers/container.h"

namespace zephmetadata::media {

namespace {

/// What the parser reads from.
class SourceInput : public InputSource {
public:
    explicit SourceInput(std::shared_ptr<const ByteSource> file) : mFile(std::move(file)), mPages(*mFile) {}

    std::string const& getName() const override { return mName; }
    qpdf_offset_t tell() override { return static_cast<qpdf_offset_t>(mAt); }
    void rewind() override { mAt = 0; }
    void unreadCh(char /*character*/) override { mAt -= mAt > 0 ? 1 : 0; }

    void seek(qpdf_offset_t distance, int whence) override {
        const std::uint64_t base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? mAt : mFile->Size();
        const qpdf_offset_t target = static_cast<qpdf_offset_t>(base) + distance;
        if (target < 0) {
            throw std::runtime_error("a place before the begin of the file");
        }
        mAt = static_cast<std::uint64_t>(target);
    }
    std::size_t read(char* into, std::size_t length) override {
        last_offset = tell();
        const std::uint64_t rest = mAt < mFile->Size() ? mFile->Size() - mAt : 0;
        const std::size_t size = rest < length ? static_cast<std::size_t>(rest) : length;
        if (size != 0 && !mPages.ReadAt(mAt, into, size)) {
            throw std::runtime_error("the file cannot be read");
        }
        mAt += size;
        return size;
    }
    qpdf_offset_t findAndSkipNextEOL() override {
        char character = 0;
        while (read(&character, 1) == 1) {
            if (character == '\n' || character == '\r') {
                const qpdf_offset_t found = tell() - 1;
                while (read(&character, 1) == 1) {
                    if (character != '\n' && character != '\r') {
                        unreadCh(character);
                        break;
                    }
                }
                return found;
            }
        }
        return tell();
    }

private:
    std::shared_ptr<const ByteSource> mFile;
    PagedSource mPages;
    std::string mName = "document";
    std::uint64_t mAt = 0;
};

/// Takes up decoded data as far as it may go: a few compressed bytes can stand for very many.
class BoundedText : public Pipeline {
public:
    BoundedText() : Pipeline("text", nullptr) {}

    void write(unsigned char const* data, std::size_t size) override {
        if (size > kMaxBlockBytes - mText.size()) {
            throw std::runtime_error("a stream is too long");
        }
        mText.append(reinterpret_cast<const char*>(data), size);
    }
    void finish() override {}
    std::string Take() { return std::move(mText); }

private:
    std::string mText;
};

constexpr std::size_t kMaxFields = 20000;

/// Whether a field of the form is a signature that somebody gave. A form that is too large to tell counts as signed.
bool HasSignature(const QPDFObjectHandle& fields) {
    std::vector<QPDFObjectHandle> open = {fields};
    for (std::size_t seen = 0; !open.empty(); ++seen) {
        if (seen == kMaxFields) {
            return true;
        }
        QPDFObjectHandle next = open.back();
        open.pop_back();
        if (next.isArray()) {
            const int count = next.getArrayNItems();
            if (count < 0 || static_cast<std::size_t>(count) > kMaxFields - open.size()) {
                return true;
            }
            for (int i = 0; i < count; ++i) {
                open.push_back(next.getArrayItem(i));
            }
        } else if (next.isDictionary()) {
            QPDFObjectHandle type = next.getKey("/FT");
            if (type.isName() && type.getName() == "/Sig" && next.hasKey("/V")) {
                return true;
            }
            open.push_back(next.getKey("/Kids"));
        }
    }
    return false;
}

}  // namespace

PDFDocument::PDFDocument(std::shared_ptr<const ByteSource> file, bool isRepaired) {
    mObjects.setSuppressWarnings(true);
    mObjects.setAttemptRecovery(isRepaired);
    mObjects.processInputSource(std::make_shared<SourceInput>(std::move(file)));
}

QPDFObjectHandle PDFDocument::Catalog() {
    QPDFObjectHandle catalog = mObjects.getTrailer().getKey("/Root");
    return catalog.isDictionary() ? catalog : QPDFObjectHandle::newNull();
}

std::string PDFDocument::Complaint() {
    return mObjects.anyWarnings() ? mObjects.getWarnings().front().getMessageDetail() : "";
}

std::string PDFDocument::WhyReadOnly() {
    if (mObjects.isEncrypted()) {
        return "the document is encrypted";
    }
    QPDFObjectHandle catalog = Catalog();
    if (!catalog.isDictionary()) {
        return {};
    }
    QPDFObjectHandle permissions = catalog.getKey("/Perms");
    if (permissions.isDictionary() && !permissions.getKeys().empty()) {
        return "the document is certified or has usage rights that a change would break";
    }
    QPDFObjectHandle form = catalog.getKey("/AcroForm");
    if (!form.isDictionary()) {
        return {};
    }
    QPDFObjectHandle flags = form.getKey("/SigFlags");
    const bool saysSigned = flags.isInteger() && (flags.getIntValue() & 1) != 0;
    return saysSigned || HasSignature(form.getKey("/Fields")) ? "the document is signed, which a change would break"
                                                              : "";
}

std::optional<std::string> PDFStreamData(QPDFObjectHandle stream) {
    BoundedText text;
    const bool isDecoded = stream.pipeStreamData(&text, 0, qpdf_dl_generalized, true);
    return isDecoded ? std::optional(text.Take()) : std::nullopt;
}

}  // namespace zephmetadata::media
