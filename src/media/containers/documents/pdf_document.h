#pragma once

#include <memory>
#include <optional>
#include <qpdf/QPDF.hh>
#include <string>

#include "media/files/byte_sources.h"

/// A PDF document as far as metadata goes. The parser reports by exceptions: callers take every std::exception but a
/// std::bad_alloc for damage.
namespace zephmetadata::media {

class PDFDocument {
public:
    /// With @p isRepaired a damaged document is put together from the objects that are found in it. A document under a
    /// password throws a QPDFExc that says so.
    PDFDocument(std::shared_ptr<const ByteSource> file, bool isRepaired);

    QPDF& Objects() { return mObjects; }
    /// The catalog; a null object when there is none.
    QPDFObjectHandle Catalog();
    /// What the parser complained of since the last time; empty for nothing.
    std::string Complaint();
    /// Why nobody may change the document; empty when it can be changed.
    std::string WhyReadOnly();

private:
    QPDF mObjects;
};

/// The decoded data of a stream; absent when it has more than kMaxBlockBytes or cannot be decoded.
std::optional<std::string> PDFStreamData(QPDFObjectHandle stream);

}  // namespace zephmetadata::media
