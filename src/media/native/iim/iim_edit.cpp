#include "media/native/iim/iim_edit.h"

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

#include "media/native/iim/iim_dates.h"
#include "media/native/iim/iim_values.h"

namespace zephmetadata::media {

namespace {

constexpr std::string_view kUTF8Escape = "\x1B%G";
constexpr std::uint8_t kDatasetVersion = 0;
constexpr std::string_view kVersion("\0\4", 2);  // IIM 4, of both records that have one
// Record 2 beyond texts: rasterized captions, and previews and private ones from the last number on.
constexpr std::uint8_t kDatasetRaster = 125;
constexpr std::uint8_t kLastText = 135;

/// A dataset to be: one that is there, or a text in UTF-8.
struct Pending {
    const IIMDataset* mKept = nullptr;
    std::string mText;
    std::size_t mMaxBytes = 0;
};
/// What comes in place of all datasets of a number in record 2.
using PendingDatasets = std::map<std::uint8_t, std::vector<Pending>>;

/// How texts are written.
struct Writing {
    bool mIsConverted = false;  ///< texts that are there become UTF-8, and 1:90 says so
    bool mIsUTF8 = true;        ///< otherwise Windows-1252
};

bool IsTextDataset(const IIMDataset& dataset) {
    return dataset.mRecord == kRecordApplication && dataset.mNumber != kDatasetVersion &&
           dataset.mNumber != kDatasetRaster && dataset.mNumber <= kLastText;
}

// What changes.

void PendDate(const IIMRow& row, const std::vector<std::string>& items, PendingDatasets& pending) {
    std::vector<Pending>& dates = pending[row.mNumber] = {};
    std::vector<Pending>& times = pending[row.mTimeNumber] = {};
    const std::optional<IIMDate> date = items.empty() ? std::nullopt : DateFromXMP(items.front());
    if (date) {
        dates.push_back({nullptr, date->mDate, date->mDate.size()});
    }
    if (date && !date->mTime.empty()) {
        const std::string time = date->mTime + date->mZone;
        times.push_back({nullptr, time, time.size()});
    }
}

/// Datasets that say just what an item says stay: names beside codes, texts longer than the standard allows.
std::map<std::string, const IIMDataset*> KeepableDatasets(const IIMRecords& records, const IIMRow& row) {
    std::map<std::string, const IIMDataset*> keepable;
    for (const IIMDataset& dataset : records.mDatasets) {
        if (dataset.mRecord == kRecordApplication && dataset.mNumber == row.mNumber) {
            if (auto item = ItemOfDataset(row, records.Data(dataset), records.mCharset)) {
                keepable.emplace(*std::move(item), &dataset);
            }
        }
    }
    return keepable;
}

void PendItems(const IIMRecords& records, const IIMRow& row, const std::vector<std::string>& items,
               PendingDatasets& pending) {
    const std::map<std::string, const IIMDataset*> keepable = KeepableDatasets(records, row);
    // The frame of a subject adds to the size of its code.
    const std::size_t maxBytes = row.mCarriage == IIMCarriage::kText ? row.mMaxBytes : static_cast<std::size_t>(-1);
    std::vector<Pending>& datasets = pending[row.mNumber] = {};
    for (const std::string& item : items) {
        const auto kept = keepable.find(item);
        if (kept != keepable.end()) {
            datasets.push_back({kept->second, {}, 0});
        } else if (std::optional<std::string> text = DatasetOfItem(row, item)) {
            std::replace(text->begin(), text->end(), '\n', '\r');  // the line end of IIM
            datasets.push_back({nullptr, *std::move(text), maxBytes});
        }
    }
}

PendingDatasets PendingOf(const IIMRecords& records, std::span<const MirrorChange> changes) {
    PendingDatasets pending;
    for (const MirrorChange& change : changes) {
        const IIMRow* const row = IIMRowOf(change.mNamespace, change.mProperty);
        if (row == nullptr || (change.mValue && IIMAgrees(records, *change.mValue))) {
            continue;
        }
        const std::vector<std::string> items =
            change.mValue ? CarriedItems(*row, *change.mValue) : std::vector<std::string>();
        if (row->mCarriage == IIMCarriage::kDate) {
            PendDate(*row, items, pending);
        } else {
            PendItems(records, *row, items, pending);
        }
    }
    // What is not there need not be removed.
    std::erase_if(pending, [&](const auto& entry) {
        return entry.second.empty() &&
               std::none_of(records.mDatasets.begin(), records.mDatasets.end(), [&](const IIMDataset& dataset) {
                   return dataset.mRecord == kRecordApplication && dataset.mNumber == entry.first;
               });
    });
    return pending;
}

// The character set.

/// The text of a dataset in UTF-8; absent when it cannot be carried over as it is, and empty when it need not.
std::optional<std::string> Converted(const IIMRecords& records, const IIMDataset& dataset) {
    const std::string_view data = records.Data(dataset);
    if (!IsTextDataset(dataset) || IsASCII(data) || (IsUTF8(data) && records.mCharset != IIMCharset::kLatin1)) {
        return std::string();
    }
    const std::optional<std::string> text = DecodedText(data, records.mCharset);
    if (!text || Windows1252Text(*text, std::nullopt) != data) {
        return std::nullopt;
    }
    const auto row = std::find_if(IIMRows().begin(), IIMRows().end(),
                                  [&](const IIMRow& known) { return known.mNumber == dataset.mNumber; });
    const bool outgrows = row != IIMRows().end() && text->size() > std::max(row->mMaxBytes, data.size());
    return outgrows ? std::nullopt : text;
}

bool CanConvert(const IIMRecords& records) {
    return std::all_of(records.mDatasets.begin(), records.mDatasets.end(),
                       [&](const IIMDataset& dataset) { return Converted(records, dataset).has_value(); });
}

bool HasWindows1252(const IIMRecords& records) {
    return std::any_of(records.mDatasets.begin(), records.mDatasets.end(), [&](const IIMDataset& dataset) {
        return IsTextDataset(dataset) && !IsUTF8(records.Data(dataset));
    });
}

/// Whether the texts to come can be written, and will be read, in the character set that the stream has.
bool FitsWindows1252(const IIMRecords& records, const PendingDatasets& pending) {
    for (const auto& [number, datasets] : pending) {
        for (const Pending& dataset : datasets) {
            const std::optional<std::string> bytes = Windows1252Text(dataset.mText, std::nullopt);
            if (!bytes || DecodedText(*bytes, records.mCharset) != dataset.mText) {
                return false;
            }
        }
    }
    return true;
}

/// Whether a declaration of UTF-8 changes the meaning of nothing that stays.
bool IsOtherwiseASCII(const IIMRecords& records, const PendingDatasets& pending) {
    return std::all_of(records.mDatasets.begin(), records.mDatasets.end(), [&](const IIMDataset& dataset) {
        return !IsTextDataset(dataset) || pending.contains(dataset.mNumber) || IsASCII(records.Data(dataset));
    });
}

/// Absent when the character set is not known and cannot be changed.
std::optional<Writing> WritingFor(const IIMRecords& records, const PendingDatasets& pending) {
    const bool isASCII = std::all_of(pending.begin(), pending.end(), [](const auto& entry) {
        return std::all_of(entry.second.begin(), entry.second.end(),
                           [](const Pending& dataset) { return IsASCII(dataset.mText); });
    });
    if (isASCII || records.mCharset == IIMCharset::kUTF8) {
        return Writing{records.mDatasets.empty() && !pending.empty(), true};
    }
    if (records.mCharset == IIMCharset::kUnknown) {
        return IsOtherwiseASCII(records, pending) ? std::optional(Writing{true, true}) : std::nullopt;
    }
    const bool isOneByte = records.mCharset == IIMCharset::kLatin1 ||
                           (records.mCharset == IIMCharset::kUndeclared && HasWindows1252(records));
    if (isOneByte && FitsWindows1252(records, pending)) {
        return Writing{false, false};
    }
    return CanConvert(records) ? Writing{true, true} : Writing{false, records.mCharset == IIMCharset::kUndeclared};
}

// The new stream.

std::string DataOf(const Pending& pending, const Writing& writing) {
    std::string text = pending.mText;
    if (!writing.mIsUTF8) {
        text = Windows1252Text(text, '?').value_or(std::string());
    }
    return std::string(CutText(text, pending.mMaxBytes, writing.mIsUTF8));
}

/// Writes one stream from begin to end.
class Writer {
public:
    Writer(const IIMRecords& records, const Writing& writing) : mRecords(records), mWriting(writing) {}

    /// A dataset that stays, in the new character set if there is one.
    void Keep(const IIMDataset& dataset) {
        const std::string text = mWriting.mIsConverted ? Converted(mRecords, dataset).value_or("") : std::string();
        mBytes += text.empty() ? std::string(mRecords.Whole(dataset))
                               : IIMDatasetBytes(dataset.mRecord, dataset.mNumber, text);
    }
    void Add(std::uint8_t number, const std::vector<Pending>& datasets) {
        for (const Pending& dataset : datasets) {
            if (dataset.mKept != nullptr) {
                Keep(*dataset.mKept);
            } else {
                mBytes += IIMDatasetBytes(kRecordApplication, number, DataOf(dataset, mWriting));
            }
        }
    }
    void AddOther(std::uint8_t record, std::uint8_t number, std::string_view data) {
        mBytes += IIMDatasetBytes(record, number, data);
    }
    std::string Take() { return std::move(mBytes); }

private:
    const IIMRecords& mRecords;
    Writing mWriting;
    std::string mBytes;
};

/// The dataset before which a new one belongs: behind the last of those with lower numbers.
std::size_t PlaceOf(const IIMRecords& records, std::uint8_t record, std::uint8_t number) {
    std::size_t place = 0;
    for (std::size_t i = 0; i < records.mDatasets.size(); ++i) {
        const IIMDataset& dataset = records.mDatasets[i];
        if (std::pair(dataset.mRecord, dataset.mNumber) < std::pair(record, number)) {
            place = i + 1;
        }
    }
    return place;
}

/// The dataset in whose place those of a number come.
std::size_t FirstPlace(const IIMRecords& records, std::uint8_t record, std::uint8_t number) {
    for (std::size_t i = 0; i < records.mDatasets.size(); ++i) {
        if (records.mDatasets[i].mRecord == record && records.mDatasets[i].mNumber == number) {
            return i;
        }
    }
    return PlaceOf(records, record, number);
}

std::string Written(const IIMRecords& records, PendingDatasets pending, const Writing& writing) {
    const bool hasVersion =
        std::any_of(records.mDatasets.begin(), records.mDatasets.end(), [](const IIMDataset& known) {
            return known.mRecord == kRecordApplication && known.mNumber == kDatasetVersion;
        });
    std::multimap<std::size_t, std::uint8_t> places;
    for (const auto& [number, datasets] : pending) {
        places.emplace(FirstPlace(records, kRecordApplication, number), number);
    }
    const std::size_t charsetPlace = FirstPlace(records, kRecordEnvelope, kDatasetCharset);
    const std::size_t versionPlace = PlaceOf(records, kRecordApplication, kDatasetVersion);
    Writer writer(records, writing);
    for (std::size_t i = 0; i <= records.mDatasets.size(); ++i) {
        if (writing.mIsConverted && i == charsetPlace) {
            writer.AddOther(kRecordEnvelope, kDatasetCharset, kUTF8Escape);
        }
        if (!hasVersion && i == versionPlace) {
            writer.AddOther(kRecordApplication, kDatasetVersion, kVersion);
        }
        for (auto [place, end] = places.equal_range(i); place != end; ++place) {
            writer.Add(place->second, pending[place->second]);
        }
        if (i == records.mDatasets.size()) {
            break;
        }
        const IIMDataset& dataset = records.mDatasets[i];
        const bool isReplaced =
            (dataset.mRecord == kRecordApplication && pending.contains(dataset.mNumber)) ||
            (writing.mIsConverted && dataset.mRecord == kRecordEnvelope && dataset.mNumber == kDatasetCharset);
        if (!isReplaced) {
            writer.Keep(dataset);
        }
    }
    return writer.Take();
}

}  // namespace

std::optional<std::string> EditedIIM(std::string_view datasets, std::span<const MirrorChange> changes) {
    const IIMRecords records = ReadIIM(datasets);
    if (!records.mIsWhole) {
        return std::nullopt;
    }
    PendingDatasets pending = PendingOf(records, changes);
    if (pending.empty()) {
        return std::string(datasets);
    }
    const std::optional<Writing> writing = WritingFor(records, pending);
    if (!writing) {
        return std::nullopt;
    }
    std::string written = Written(records, std::move(pending), *writing);
    // A question mark that was as good as the character stands for itself alone in UTF-8.
    return writing->mIsConverted ? EditedIIM(written, changes) : written;
}

}  // namespace zephmetadata::media
