#include "media/native/exif/exif_numbers.h"
#include "media/native/exif/exif_structure_items.h"
#include "media/native/exif/exif_texts.h"

/// Fields that hold a table: columns, rows, and what is in them.
namespace zephmetadata::media {

namespace {

constexpr std::string_view kColumns = "exif:Columns";
constexpr std::string_view kRowsName = "exif:Rows";
constexpr std::size_t kTableHead = 4;

struct TableHead {
    std::size_t mColumns = 0;
    std::size_t mRows = 0;
    ByteOrder mOrder = ByteOrder::kBig;
    std::size_t Cells() const { return mColumns * mRows; }
};

TableHead HeadOf(std::string_view bytes, ByteOrder order) {
    return {Get16(bytes, 0, order), Get16(bytes, 2, order), order};
}

/// The head in the order of the stream, or in the other one, which some cameras use within values, as @p isGood decides.
template <class IsGood>
std::optional<TableHead> GoodHead(const TiffFields& fields, std::string_view bytes, IsGood isGood) {
    const ByteOrder order = InnerOrder(fields);
    const ByteOrder other = order == ByteOrder::kBig ? ByteOrder::kLittle : ByteOrder::kBig;
    for (const ByteOrder tried : {order, other}) {
        if (bytes.size() < kTableHead) {
            break;
        }
        const TableHead head = HeadOf(bytes, tried);
        if (head.mColumns > 0 && head.mRows > 0 && head.Cells() <= kMaxExifItems && isGood(head)) {
            return head;
        }
    }
    return std::nullopt;
}

NativeItems HeadItems(const TableHead& head) {
    return {{std::string(kColumns), std::to_string(head.mColumns)},
            {std::string(kRowsName), std::to_string(head.mRows)}};
}

/// Columns and rows of a packet's table; absent when they are not there.
std::optional<TableHead> PacketHead(const TiffFields& fields, const NativeItems& items) {
    const auto columns = ShortOf(items, kColumns);
    const auto rows = ShortOf(items, kRowsName);
    if (!columns || !rows || std::size_t{*columns} * *rows > kMaxExifItems) {
        return std::nullopt;
    }
    return TableHead{*columns, *rows, InnerOrder(fields)};
}

std::string HeadBytes(const TableHead& head) {
    return NumberBytes(head.mColumns, 2, head.mOrder) + NumberBytes(head.mRows, 2, head.mOrder);
}

NativeItems ReadColorFilter(const TiffFields& fields, const ExifRow& row) {
    const std::string_view bytes = FieldBytes(fields, row);
    const auto head =
        GoodHead(fields, bytes, [&](const TableHead& tried) { return tried.Cells() <= bytes.size() - kTableHead; });
    if (!head) {
        return {};
    }
    NativeItems items = HeadItems(*head);
    for (std::size_t i = 0; i < head->Cells(); ++i) {
        items.push_back({Numbered("exif:Values", i), std::to_string(Get8(bytes, kTableHead + i))});
    }
    return items;
}

std::optional<TiffEdits> WriteColorFilter(const TiffFields& fields, const ExifRow& row, const NativeItems& items) {
    const auto head = PacketHead(fields, items);
    const auto texts = ArrayOf(items, "exif:Values");
    if (!head || head->Cells() == 0 || texts.size() != head->Cells()) {
        return std::nullopt;
    }
    std::string bytes = HeadBytes(*head);
    for (const std::string_view text : texts) {
        const auto value = ParseInteger(text);
        if (!value || *value < 0 || *value > 0xFF) {
            return std::nullopt;
        }
        bytes += static_cast<char>(*value);
    }
    return OneEdit(row, std::move(bytes));
}

// ---- tables of rationals with a name for each column

/// OECF has signed rationals, SpatialFrequencyResponse unsigned ones.
bool HasSignedCells(const ExifRow& row) {
    return row.mTag == 0x8828;
}

/// Where the rationals begin: behind a name for each column; absent when the bytes end before.
std::optional<std::size_t> CellsPlace(std::string_view bytes, const TableHead& head) {
    std::size_t at = kTableHead;
    for (std::size_t i = 0; i < head.mColumns; ++i) {
        const std::size_t end = bytes.find('\0', at);
        if (end == std::string_view::npos) {
            return std::nullopt;
        }
        at = end + 1;
    }
    return bytes.size() - at >= head.Cells() * 8 ? std::optional(at) : std::nullopt;
}

NativeItems ReadResponse(const TiffFields& fields, const ExifRow& row) {
    const std::string_view bytes = FieldBytes(fields, row);
    const auto head =
        GoodHead(fields, bytes, [&](const TableHead& tried) { return CellsPlace(bytes, tried).has_value(); });
    if (!head) {
        return {};
    }
    NativeItems items = HeadItems(*head);
    std::size_t at = kTableHead;
    for (std::size_t i = 0; i < head->mColumns; ++i) {
        const std::size_t end = bytes.find('\0', at);
        items.push_back({Numbered("exif:Names", i), CleanText(bytes.substr(at, end - at))});
        at = end + 1;
    }
    for (std::size_t i = 0; i < head->Cells(); ++i) {
        items.push_back(
            {Numbered("exif:Values", i), RationalText(bytes, at + i * 8, head->mOrder, HasSignedCells(row))});
    }
    return items;
}

std::optional<TiffEdits> WriteResponse(const TiffFields& fields, const ExifRow& row, const NativeItems& items) {
    const auto head = PacketHead(fields, items);
    const auto names = ArrayOf(items, "exif:Names");
    const auto texts = ArrayOf(items, "exif:Values");
    if (!head || head->Cells() == 0 || names.size() != head->mColumns || texts.size() != head->Cells()) {
        return std::nullopt;
    }
    std::string bytes = HeadBytes(*head);
    for (const std::string_view name : names) {
        bytes += std::string(name.substr(0, name.find('\0'))) + '\0';
    }
    for (const std::string_view text : texts) {
        const auto cell = RationalCell(text, head->mOrder, HasSignedCells(row));
        if (!cell) {
            return std::nullopt;
        }
        bytes += *cell;
    }
    return OneEdit(row, std::move(bytes));
}

// ---- tables of texts

NativeItems ReadDeviceSetting(const TiffFields& fields, const ExifRow& row) {
    const std::string_view bytes = FieldBytes(fields, row);
    const auto head = GoodHead(fields, bytes, [](const TableHead&) { return true; });
    if (!head) {
        return {};
    }
    NativeItems items = HeadItems(*head);
    std::size_t start = kTableHead;
    std::size_t number = 0;
    for (std::size_t at = start; bytes.size() - at >= 2 && number < head->Cells(); at += 2) {
        if (Get16(bytes, at) == 0) {
            items.push_back(
                {Numbered("exif:Settings", number++), TextOfUTF16(bytes.substr(start, at - start), head->mOrder)});
            start = at + 2;
        }
    }
    if (number < head->Cells() && bytes.size() - start >= 2) {
        items.push_back({Numbered("exif:Settings", number), TextOfUTF16(bytes.substr(start), head->mOrder)});
    }
    return items;
}

std::optional<TiffEdits> WriteDeviceSetting(const TiffFields& fields, const ExifRow& row, const NativeItems& items) {
    const auto head = PacketHead(fields, items);
    const auto texts = ArrayOf(items, "exif:Settings");
    if (!head || head->Cells() == 0 || texts.size() > head->Cells()) {
        return std::nullopt;
    }
    std::string bytes = HeadBytes(*head);
    for (const std::string_view text : texts) {
        bytes += UTF16OfText(text.substr(0, text.find('\0')), head->mOrder) + std::string(2, '\0');
    }
    return OneEdit(row, std::move(bytes));
}

}  // namespace

const ExifCodec kColorFilterCodec = {"color filter pattern", &ReadColorFilter, &StructuresAgree, &WriteColorFilter};
const ExifCodec kResponseCodec = {"table of rationals", &ReadResponse, &StructuresAgree, &WriteResponse};
const ExifCodec kDeviceSettingCodec = {"table of texts", &ReadDeviceSetting, &StructuresAgree, &WriteDeviceSetting};

}  // namespace zephmetadata::media
