#include "media/native/iim/iim_values.h"

#include <algorithm>
#include <array>

#include "media/native/iim/iim_dates.h"
#include "media/native/namespaces.h"

namespace zephmetadata::media {

namespace {

constexpr std::string_view kDefaultLanguage = "x-default";

// Sizes are those of IIM 4.2, chapter 6.
constexpr auto kRows = std::to_array<IIMRow>({
    {4, 0, IIMCarriage::kGenre, ValueForm::kSimple, kIptcCore, "IntellectualGenre", 64},
    {5, 0, IIMCarriage::kText, ValueForm::kLangAlt, kDC, "title", 64},
    {10, 0, IIMCarriage::kCode, ValueForm::kSimple, kPhotoshop, "Urgency", 1},
    {12, 0, IIMCarriage::kSubject, ValueForm::kBag, kIptcCore, "SubjectCode", 8},
    {15, 0, IIMCarriage::kCode, ValueForm::kSimple, kPhotoshop, "Category", 3},
    {20, 0, IIMCarriage::kText, ValueForm::kBag, kPhotoshop, "SupplementalCategories", 32},
    {25, 0, IIMCarriage::kText, ValueForm::kBag, kDC, "subject", 64},
    {40, 0, IIMCarriage::kText, ValueForm::kSimple, kPhotoshop, "Instructions", 256},
    {55, 60, IIMCarriage::kDate, ValueForm::kSimple, kPhotoshop, "DateCreated", 8},
    {62, 63, IIMCarriage::kDate, ValueForm::kSimple, kXMP, "CreateDate", 8},
    {80, 0, IIMCarriage::kText, ValueForm::kSeq, kDC, "creator", 32},
    {85, 0, IIMCarriage::kText, ValueForm::kSimple, kPhotoshop, "AuthorsPosition", 32},
    {90, 0, IIMCarriage::kText, ValueForm::kSimple, kPhotoshop, "City", 32},
    {92, 0, IIMCarriage::kText, ValueForm::kSimple, kIptcCore, "Location", 32},
    {95, 0, IIMCarriage::kText, ValueForm::kSimple, kPhotoshop, "State", 32},
    {100, 0, IIMCarriage::kCode, ValueForm::kSimple, kIptcCore, "CountryCode", 3},
    {101, 0, IIMCarriage::kText, ValueForm::kSimple, kPhotoshop, "Country", 64},
    {103, 0, IIMCarriage::kText, ValueForm::kSimple, kPhotoshop, "TransmissionReference", 32},
    {105, 0, IIMCarriage::kText, ValueForm::kSimple, kPhotoshop, "Headline", 256},
    {110, 0, IIMCarriage::kText, ValueForm::kSimple, kPhotoshop, "Credit", 32},
    {115, 0, IIMCarriage::kText, ValueForm::kSimple, kPhotoshop, "Source", 32},
    {116, 0, IIMCarriage::kText, ValueForm::kLangAlt, kDC, "rights", 128},
    {120, 0, IIMCarriage::kText, ValueForm::kLangAlt, kDC, "description", 2000},
    {122, 0, IIMCarriage::kText, ValueForm::kSimple, kPhotoshop, "CaptionWriter", 32},
});

/// Object attributes by number from 1 on (IIM 4.2, appendix G).
constexpr auto kGenres = std::to_array<std::string_view>({"Current",
                                                          "Analysis",
                                                          "Archive material",
                                                          "Background",
                                                          "Feature",
                                                          "Forecast",
                                                          "History",
                                                          "Obituary",
                                                          "Opinion",
                                                          "Polls & Surveys",
                                                          "Profile",
                                                          "Results Listings & Tables",
                                                          "Side bar & Supporting information",
                                                          "Summary",
                                                          "Transcript & Verbatim",
                                                          "Interview",
                                                          "From the Scene",
                                                          "Retrospective",
                                                          "Statistics",
                                                          "Update",
                                                          "Wrap-up",
                                                          "Press Release"});

bool AreDigits(std::string_view text) {
    return text.find_first_not_of("0123456789") == std::string_view::npos;
}

std::string_view GenreName(std::string_view text) {
    constexpr std::size_t kNumberBytes = 3;
    const bool isNumbered = text.size() > kNumberBytes && text[kNumberBytes] == ':';
    return isNumbered && AreDigits(text.substr(0, kNumberBytes)) ? text.substr(kNumberBytes + 1) : text;
}

std::string_view SubjectCode(std::string_view text, std::size_t size) {
    const std::size_t colon = text.find(':');
    const std::string_view code = colon == std::string_view::npos ? text : text.substr(colon + 1);
    const std::string_view part = code.substr(0, code.find(':'));
    return part.size() == size && AreDigits(part) ? part : std::string_view();
}

std::optional<std::string> NumberedGenre(std::string_view name) {
    const auto* const found = std::find(kGenres.begin(), kGenres.end(), name);
    if (found == kGenres.end()) {
        return std::nullopt;
    }
    const std::string number = std::to_string(found - kGenres.begin() + 1);
    return std::string(3 - number.size(), '0').append(number).append(":").append(name);
}

std::vector<std::string_view> DataOf(const IIMRecords& records, std::uint8_t number) {
    std::vector<std::string_view> data;
    for (const IIMDataset& dataset : records.mDatasets) {
        if (dataset.mRecord == kRecordApplication && dataset.mNumber == number) {
            data.push_back(records.Data(dataset));
        }
    }
    return data;
}

std::optional<IIMDate> DateOf(const IIMRecords& records, const IIMRow& row) {
    const std::vector<std::string_view> dates = DataOf(records, row.mNumber);
    const std::vector<std::string_view> times = DataOf(records, row.mTimeNumber);
    return dates.empty() ? std::nullopt : DateFromIIM(dates.front(), times.empty() ? "" : times.front());
}

std::vector<std::string> ItemsOf(const IIMRecords& records, const IIMRow& row) {
    if (row.mCarriage == IIMCarriage::kDate) {
        const std::optional<IIMDate> date = DateOf(records, row);
        return date ? std::vector{XMPDate(*date)} : std::vector<std::string>();
    }
    std::vector<std::string> items;
    for (const std::string_view data : DataOf(records, row.mNumber)) {
        if (std::optional<std::string> item = ItemOfDataset(row, data, records.mCharset)) {
            items.push_back(*std::move(item));
        }
    }
    return items;
}

/// The items as a dataset of the row can tell them apart, in an order that does not depend on that of a bag.
std::vector<std::string> Comparable(const IIMRow& row, std::span<const std::string> items, std::size_t maxBytes,
                                    bool isUTF8) {
    std::vector<std::string> comparable;
    for (const std::string& item : items) {
        const std::string text = isUTF8 ? item : Windows1252Text(item, '?').value_or(std::string());
        const bool isCut = row.mCarriage == IIMCarriage::kText;
        const bool isHeld = !item.empty() && (row.mCarriage != IIMCarriage::kSubject || DatasetOfItem(row, item));
        if (isHeld) {
            comparable.push_back(isCut ? CleanedText(CutText(text, maxBytes, isUTF8)) : text);
        }
    }
    if (row.mForm == ValueForm::kBag) {
        std::sort(comparable.begin(), comparable.end());
    }
    return comparable;
}

/// The longest dataset, as some writers let them grow beyond what the standard allows.
std::size_t LongestBytes(const IIMRecords& records, const IIMRow& row) {
    std::size_t longest = row.mMaxBytes;
    for (const std::string_view data : DataOf(records, row.mNumber)) {
        longest = std::max(longest, data.size());
    }
    return longest;
}

bool DatesAgree(const IIMRecords& records, const IIMRow& row, const NativeValue& fromXMP) {
    const std::optional<IIMDate> native = DateOf(records, row);
    const std::optional<IIMDate> xmp =
        fromXMP.mItems.empty() ? std::nullopt : DateFromXMP(fromXMP.mItems.front().mText);
    return native && xmp ? AreSameDates(*native, *xmp) : !native && !xmp;
}

}  // namespace

std::span<const IIMRow> IIMRows() {
    return kRows;
}

const IIMRow* IIMRowOf(std::string_view nameSpace, std::string_view property) {
    const auto* const row = std::find_if(kRows.begin(), kRows.end(), [&](const IIMRow& candidate) {
        return candidate.mProperty == property && candidate.mNamespace == nameSpace;
    });
    return row == kRows.end() ? nullptr : row;
}

bool MirrorsIIM(std::string_view nameSpace, std::string_view property) {
    return IIMRowOf(nameSpace, property) != nullptr;
}

std::optional<std::string> ItemOfDataset(const IIMRow& row, std::string_view data, IIMCharset charset) {
    std::optional<std::string> text = ReadableText(data, charset);
    if (text && row.mCarriage == IIMCarriage::kGenre) {
        text = std::string(GenreName(*text));
    } else if (text && row.mCarriage == IIMCarriage::kSubject) {
        text = std::string(SubjectCode(*text, row.mMaxBytes));
    }
    return text && !text->empty() ? text : std::nullopt;
}

std::optional<std::string> DatasetOfItem(const IIMRow& row, std::string_view item) {
    std::string text = CleanedText(item);
    if (text.empty() || (row.mCarriage == IIMCarriage::kCode && text.size() > row.mMaxBytes)) {
        return std::nullopt;
    }
    if (row.mCarriage == IIMCarriage::kGenre) {
        return NumberedGenre(text);
    }
    if (row.mCarriage == IIMCarriage::kSubject) {
        const std::string_view code = SubjectCode(text, row.mMaxBytes);
        return code.empty() ? std::nullopt : std::optional(std::string("IPTC:").append(code).append(":::"));
    }
    return text;
}

std::vector<std::string> CarriedItems(const IIMRow& row, const NativeValue& value) {
    std::vector<std::string> items;
    for (const NativeItem& item : value.mItems) {
        items.push_back(CleanedText(item.mText));
    }
    if (row.IsRepeatable() || items.size() < 2) {
        return items;
    }
    const auto found = std::find_if(value.mItems.begin(), value.mItems.end(),
                                    [](const NativeItem& item) { return item.mName == kDefaultLanguage; });
    const std::ptrdiff_t place = found == value.mItems.end() ? 0 : found - value.mItems.begin();
    return {items[static_cast<std::size_t>(place)]};
}

std::vector<NativeValue> IIMValues(const IIMRecords& records) {
    std::vector<NativeValue> values;
    for (const IIMRow& row : kRows) {
        std::vector<std::string> items = ItemsOf(records, row);
        items.resize(row.IsRepeatable() ? items.size() : std::min<std::size_t>(items.size(), 1));
        if (items.empty()) {
            continue;
        }
        NativeValue value{row.mNamespace, row.mProperty, row.mForm, {}};
        for (std::string& item : items) {
            const std::string_view name = row.mForm == ValueForm::kLangAlt ? kDefaultLanguage : std::string_view();
            value.mItems.push_back({std::string(name), std::move(item)});
        }
        values.push_back(std::move(value));
    }
    return values;
}

bool HasIIM(const IIMRecords& records, std::string_view nameSpace, std::string_view property) {
    const IIMRow* const row = IIMRowOf(nameSpace, property);
    return row != nullptr && !ItemsOf(records, *row).empty();
}

bool IIMAgrees(const IIMRecords& records, const NativeValue& fromXMP) {
    const IIMRow* const row = IIMRowOf(fromXMP.mNamespace, fromXMP.mProperty);
    if (row == nullptr) {
        return true;
    }
    if (row->mCarriage == IIMCarriage::kDate) {
        return DatesAgree(records, *row, fromXMP);
    }
    std::vector<std::string> native = ItemsOf(records, *row);
    const std::vector<std::string> xmp = CarriedItems(*row, fromXMP);
    native.resize(row->IsRepeatable() ? native.size() : std::min<std::size_t>(native.size(), 1));
    if (native.empty()) {
        return std::none_of(xmp.begin(), xmp.end(), [&](const std::string& item) { return DatasetOfItem(*row, item); });
    }
    const std::size_t maxBytes = LongestBytes(records, *row);
    const auto agree = [&](bool isUTF8) {
        return Comparable(*row, native, maxBytes, isUTF8) == Comparable(*row, xmp, maxBytes, isUTF8);
    };
    // Without a declaration nobody knows which of both the writer had when it cut a text, or put a question mark.
    const bool isOneByte = std::all_of(native.begin(), native.end(), [](const std::string& item) {
        return Windows1252Text(item, std::nullopt).has_value();
    });
    return (records.mCharset != IIMCharset::kLatin1 && agree(true)) ||
           (records.mCharset != IIMCharset::kUTF8 && isOneByte && agree(false));
}

}  // namespace zephmetadata::media
