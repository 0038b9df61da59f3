#include "media/containers/documents/pdf.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <new>
#include <qpdf/QPDFExc.hh>

#include "media/containers/documents/pdf_document.h"
#include "media/containers/documents/pdf_increment.h"
#include "media/containers/documents/pdf_information.h"

namespace zephmetadata::media {

namespace {

constexpr std::size_t kHeaderBytes = 1024;  // among which readers look for it
constexpr std::size_t kTailBytes = 1054;    // the same for the begin of the last section
constexpr int kMaxObjectNumber = 100'000'000;

FileBlocks BlocksOf(const std::shared_ptr<const ByteSource>& file, bool isRepaired) {
    PDFDocument document(file, isRepaired);
    FileBlocks blocks;
    QPDFObjectHandle catalog = document.Catalog();
    if (!catalog.isDictionary()) {
        throw std::runtime_error("there is no catalog");
    }
    QPDFObjectHandle metadata = catalog.getKey("/Metadata");
    if (metadata.isStream()) {
        blocks.mXMP = PDFStreamData(metadata);
        if (!blocks.mXMP) {
            throw std::runtime_error("the metadata cannot be decoded");
        }
    }
    blocks.mValues = PDFInformation(document.Objects().getTrailer().getKey("/Info"));
    blocks.mWhyReadOnly = document.WhyReadOnly();
    blocks.mDetail = document.Complaint();
    blocks.mStatus = blocks.mDetail.empty() ? FileStatus::kFileStatus_Success : FileStatus::kFileStatus_DamagedFile;
    return blocks;
}

FileBlocks DamagedBlocks(const std::shared_ptr<const ByteSource>& file, const std::string& detail) {
    FileBlocks blocks;
    try {
        blocks = BlocksOf(file, true);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception&) {
        blocks = {};  // nothing can be read
    }
    blocks.mStatus = FileStatus::kFileStatus_DamagedFile;
    blocks.mDetail = detail;
    return blocks;
}

// Edits.

/// What of the last section and the document an update follows.
struct Layout {
    std::uint64_t mHeader = 0;       ///< where the document begins, from where offsets count
    std::uint64_t mLastSection = 0;  ///< counted from there
    bool mIsStream = false;
};

std::optional<Layout> LayoutOf(const ByteSource& file) {
    Layout layout;
    const std::size_t header = ReadUpTo(file, 0, kHeaderBytes).find("%PDF-");
    const std::uint64_t tailAt = file.Size() - std::min<std::uint64_t>(file.Size(), kTailBytes);
    const std::string tail = ReadUpTo(file, tailAt, kTailBytes);
    constexpr std::string_view kStart = "startxref";
    const std::size_t start = tail.rfind(kStart);
    if (header == std::string::npos || start == std::string::npos) {
        return std::nullopt;
    }
    layout.mHeader = header;
    const std::size_t digits = std::min(tail.find_first_of("0123456789", start), tail.size());
    const auto [end, error] = std::from_chars(tail.data() + digits, tail.data() + tail.size(), layout.mLastSection);
    if (error != std::errc() || !IsWithin({layout.mLastSection, 4}, file.Size() - header)) {
        return std::nullopt;
    }
    layout.mIsStream = ReadUpTo(file, header + layout.mLastSection, 16).find("xref") == std::string::npos;
    return layout;
}

/// The dictionary without some entries, as text.
std::string Without(QPDFObjectHandle dictionary, std::span<const char* const> keys) {
    QPDFObjectHandle copy = dictionary.shallowCopy();
    for (const char* const key : keys) {
        copy.removeKey(key);
    }
    return copy.unparse();
}

std::string TrailerText(QPDFObjectHandle trailer) {
    constexpr std::array<const char*, 10> kOfOneSection = {"/Prev",  "/Size",   "/XRefStm", "/Type",        "/W",
                                                           "/Index", "/Length", "/Filter",  "/DecodeParms", "/DL"};
    return Without(trailer, kOfOneSection);
}

std::string StreamText(QPDFObjectHandle dictionary) {
    constexpr std::array<const char*, 7> kOfData = {"/Length", "/Filter",  "/DecodeParms", "/DL",
                                                    "/F",      "/FFilter", "/FDecodeParms"};
    dictionary = dictionary.shallowCopy();
    dictionary.replaceKey("/Type", QPDFObjectHandle::newName("/Metadata"));
    dictionary.replaceKey("/Subtype", QPDFObjectHandle::newName("/XML"));
    return Without(dictionary, kOfData);
}

std::string CatalogText(QPDFObjectHandle catalog, const PDFObjectId& metadata) {
    constexpr std::array<const char*, 1> kOld = {"/Metadata"};
    std::string text = Without(catalog, kOld);
    return text.insert(text.rfind(">>"), "/Metadata " + std::to_string(metadata.mNumber) + " " +
                                             std::to_string(metadata.mGeneration) + " R ");
}

std::uint64_t Integer(QPDFObjectHandle dictionary, const char* key) {
    QPDFObjectHandle value = dictionary.getKey(key);
    return value.isInteger() && value.getIntValue() > 0 ? static_cast<std::uint64_t>(value.getIntValue()) : 0;
}

PDFObjectId IdOf(QPDFObjectHandle object) {
    return {object.getObjectID(), object.getGeneration()};
}

/// Where an object stands in the file, counted from the header; absent for one within an object stream.
std::optional<std::uint64_t> PlaceOf(const std::map<QPDFObjGen, QPDFXRefEntry>& table, QPDFObjectHandle object) {
    const auto found = table.find(object.getObjGen());
    const bool isPlaced = found != table.end() && found->second.getType() == 1 && found->second.getOffset() > 0;
    return isPlaced ? std::optional(static_cast<std::uint64_t>(found->second.getOffset())) : std::nullopt;
}

/// Plans one edit.
class Editor {
public:
    Editor(const std::shared_ptr<const ByteSource>& file, const Layout& layout)
        : mFile(*file),
          mLayout(layout),
          mDocument(file, false),
          mTrailer(mDocument.Objects().getTrailer()),
          mCatalog(mDocument.Catalog()),
          mMetadata(mCatalog.getKey("/Metadata")),
          mTable(mDocument.Objects().getXRefTable()) {}

    PlannedEdit Plan(const std::string& element);

private:
    std::optional<PDFIncrement> LastIncrement();
    bool IsInFile(const PDFIncrement& increment, const std::string& packet) const;
    std::optional<PDFIncrement> NextIncrement(std::uint64_t at);
    PlannedEdit PlanLast(const PDFIncrement& last, const std::string& packet, const std::string& element) const;
    PlannedEdit PlanNext(const std::string& element);

    const ByteSource& mFile;
    Layout mLayout;
    PDFDocument mDocument;
    QPDFObjectHandle mTrailer;
    QPDFObjectHandle mCatalog;
    QPDFObjectHandle mMetadata;
    std::map<QPDFObjGen, QPDFXRefEntry> mTable;
};

/// What the last update of the file is if it was made here.
std::optional<PDFIncrement> Editor::LastIncrement() {
    const auto place = mMetadata.isStream() ? PlaceOf(mTable, mMetadata) : std::nullopt;
    if (!place || *place > mLayout.mLastSection) {
        return std::nullopt;
    }
    PDFIncrement last{*place,
                      IdOf(mMetadata),
                      StreamText(mMetadata.getDict()),
                      {},
                      TrailerText(mTrailer),
                      Integer(mTrailer, "/Prev"),
                      Integer(mTrailer, "/Size"),
                      mLayout.mIsStream};
    const auto catalogPlace = PlaceOf(mTable, mCatalog);
    if (catalogPlace && *catalogPlace > *place) {
        last.mCatalog = {IdOf(mCatalog), CatalogText(mCatalog, last.mMetadata)};
    }
    return last;
}

/// Whether the file ends in exactly this update: then nothing else depends on it.
bool Editor::IsInFile(const PDFIncrement& increment, const std::string& packet) const {
    const std::optional<std::string> text = PDFIncrementText(increment, packet);
    const std::uint64_t at = mLayout.mHeader + increment.mAt;
    return text && at <= mFile.Size() && mFile.Size() - at == text->size() &&
           ReadRange(mFile, {at, text->size()}) == text;
}

PlannedEdit Editor::PlanLast(const PDFIncrement& last, const std::string& packet, const std::string& element) const {
    PlannedEdit edit;
    const std::uint64_t at = mLayout.mHeader + last.mAt;
    const std::string next = WrappedPacket(element, packet.size());
    if (next.size() == packet.size()) {
        edit.mPlan.Replace({at + PDFPacketHead(last, packet.size()).size(), packet.size()}, next, Touch::kBlock);
        return edit;
    }
    const std::optional<std::string> text = PDFIncrementText(last, next);
    if (!text) {
        return RefusedEdit(FileStatus::kFileStatus_CannotCarryXMP,
                           "the document is too large for its table of objects");
    }
    edit.mPlan.Replace({at, mFile.Size() - at}, *text, Touch::kBlock);
    return edit;
}

std::optional<PDFIncrement> Editor::NextIncrement(std::uint64_t at) {
    const int highest = mTable.empty() ? 0 : mTable.rbegin()->first.getObj();
    const std::uint64_t size = std::max(Integer(mTrailer, "/Size"), static_cast<std::uint64_t>(highest) + 1);
    if (size > kMaxObjectNumber || mCatalog.getObjectID() == 0) {
        return std::nullopt;
    }
    PDFIncrement next{at, {}, {}, {}, TrailerText(mTrailer), mLayout.mLastSection, size, mLayout.mIsStream};
    if (mMetadata.isStream()) {
        next.mMetadata = IdOf(mMetadata);
        next.mMetadataDictionary = StreamText(mMetadata.getDict());
    } else {
        next.mMetadata = {static_cast<int>(next.mSize++), 0};
        next.mMetadataDictionary = StreamText(QPDFObjectHandle::newDictionary());
        next.mCatalog = {IdOf(mCatalog), CatalogText(mCatalog, next.mMetadata)};
    }
    next.mSize += mLayout.mIsStream ? 1 : 0;
    return next;
}

PlannedEdit Editor::PlanNext(const std::string& element) {
    const std::string last = ReadUpTo(mFile, mFile.Size() - 1, 1);
    const std::string lineEnd = last == "\n" || last == "\r" ? "" : "\n";
    const auto increment = NextIncrement(mFile.Size() - mLayout.mHeader + lineEnd.size());
    const auto text = increment ? PDFIncrementText(*increment, WrappedPacket(element)) : std::nullopt;
    if (!text) {
        return RefusedEdit(FileStatus::kFileStatus_CannotCarryXMP,
                           "the document is too large for its table of objects");
    }
    PlannedEdit edit;
    edit.mPlan.Insert(mFile.Size(), lineEnd + *text, Touch::kBlock);
    return edit;
}

PlannedEdit Editor::Plan(const std::string& element) {
    if (const std::optional<PDFIncrement> last = LastIncrement()) {
        const std::optional<std::string> packet = PDFStreamData(mMetadata);
        if (packet && IsInFile(*last, *packet)) {
            return PlanLast(*last, *packet, element);
        }
    }
    return PlanNext(element);
}

class PDF : public Container {
public:
    FileBlocks Read(const std::shared_ptr<const ByteSource>& file) const override {
        try {
            return BlocksOf(file, false);
        } catch (const std::bad_alloc&) {
            throw;
        } catch (const QPDFExc& error) {
            if (error.getErrorCode() == qpdf_e_password) {
                FileBlocks blocks;
                blocks.mWhyReadOnly = "the document is encrypted with a password";
                return blocks;
            }
            return DamagedBlocks(file, error.getMessageDetail());
        } catch (const std::exception& error) {
            return DamagedBlocks(file, error.what());
        }
    }
    PlannedEdit PlanEdit(const std::shared_ptr<const ByteSource>& file, const BlockChanges& changes) const override {
        if (!changes.mXMP) {
            return {};
        }
        try {
            const std::optional<Layout> layout = LayoutOf(*file);
            if (layout) {
                return Editor(file, *layout).Plan(*changes.mXMP);
            }
            return RefusedEdit(FileStatus::kFileStatus_DamagedFile, "the begin of the last section is missing");
        } catch (const std::bad_alloc&) {
            throw;
        } catch (const std::exception& error) {
            return RefusedEdit(FileStatus::kFileStatus_DamagedFile, error.what());
        }
    }
};

}  // namespace

bool IsPDF(std::string_view head) {
    return head.substr(0, kHeaderBytes).find("%PDF-") != std::string_view::npos;
}

const Container& PDFContainer() {
    static const PDF container;
    return container;
}

}  // namespace zephmetadata::media
