#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "media/native/iim/iim_records.h"
#include "media/native/native_value.h"

/// What IIM datasets say of XMP properties, by the mapping of IPTC Core and the guidelines of the Metadata Working Group
/// (2.0, 2010).
namespace zephmetadata::media {

/// How a dataset holds what the property says.
enum class IIMCarriage : std::uint8_t {
    kText,     ///< as it is, cut to what the dataset may hold
    kCode,     ///< as it is; one that is too long is not held, since a part of it means something else
    kGenre,    ///< a number and a name: "001:Current"
    kSubject,  ///< five parts, of which the second is the code: "IPTC:01002000:arts, culture and entertainment::"
    kDate,     ///< the date in the dataset, the time in another
};

/// One property and its dataset in record 2.
struct IIMRow {
    std::uint8_t mNumber = 0;
    std::uint8_t mTimeNumber = 0;  ///< of a date: the dataset of the time
    IIMCarriage mCarriage = IIMCarriage::kText;
    ValueForm mForm = ValueForm::kSimple;
    std::string_view mNamespace;
    std::string_view mProperty;
    std::size_t mMaxBytes = 0;  ///< of each dataset, of a genre or subject without what stands around it

    bool IsRepeatable() const { return mForm == ValueForm::kBag || mForm == ValueForm::kSeq; }
};

std::span<const IIMRow> IIMRows();
/// The row of a property; null when IIM has no place for it.
const IIMRow* IIMRowOf(std::string_view nameSpace, std::string_view property);
bool MirrorsIIM(std::string_view nameSpace, std::string_view property);

/// Everything that the records say, in the order of the table. Of repeated datasets for a property with one value the
/// first goes; empty ones say nothing.
std::vector<NativeValue> IIMValues(const IIMRecords& records);
/// Whether the records say something of the property.
bool HasIIM(const IIMRecords& records, std::string_view nameSpace, std::string_view property);
/// Whether the value says the same as the records, as far as IIM can carry it: texts are cut, characters outside of the
/// character set become question marks, bags have no order, dates may lack zone and fraction, one language is left.
/// When the records say nothing of the property: whether IIM can carry nothing of the value either.
bool IIMAgrees(const IIMRecords& records, const NativeValue& fromXMP);

// What values and edits share.

/// What a dataset of the row says as XMP has it; absent when it says nothing or cannot be read.
std::optional<std::string> ItemOfDataset(const IIMRow& row, std::string_view data, IIMCharset charset);
/// The other way round, in UTF-8 and not yet cut; absent when a dataset of the row cannot hold it. Not for dates.
std::optional<std::string> DatasetOfItem(const IIMRow& row, std::string_view item);
/// The texts of the value that IIM has a place for: all of a list, one language, without what surrounds them.
std::vector<std::string> CarriedItems(const IIMRow& row, const NativeValue& value);

}  // namespace zephmetadata::media
