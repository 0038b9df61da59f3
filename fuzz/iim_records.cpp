// IPTC-IIM datasets: read as far as they go, and edited without a change to what was not asked for.
#include <algorithm>
#include <array>

#include "media/native/iim/iim_edit.h"
#include "media/native/iim/iim_values.h"
#include "support.h"

using namespace zephmetadata::media;

namespace {

constexpr std::string_view kDC = "http://purl.org/dc/elements/1.1/";
constexpr std::string_view kPhotoshop = "http://ns.adobe.com/photoshop/1.0/";

/// The stream's last byte says which of them are made.
std::vector<MirrorChange> Changes(unsigned choice) {
    const auto all = std::to_array<MirrorChange>({
        {kPhotoshop, "City", NativeValue{kPhotoshop, "City", ValueForm::kSimple, {{"", "Marlhaven"}}}},
        {kDC, "subject", NativeValue{kDC, "subject", ValueForm::kBag, {{"", "harbour"}, {"", "\xC3\xA9t\xC3\xA9"}}}},
        {kDC, "title", NativeValue{kDC, "title", ValueForm::kLangAlt, {{"x-default", "\xCE\xA9"}}}},
        {kDC, "creator", std::nullopt},
        {kPhotoshop, "DateCreated",
         NativeValue{kPhotoshop, "DateCreated", ValueForm::kSimple, {{"", "2024-05-18T05:42:10+02:00"}}}},
        {kPhotoshop, "Headline", std::nullopt},
    });
    std::vector<MirrorChange> changes;
    for (std::size_t i = 0; i < all.size(); ++i) {
        if ((choice >> i & 1U) != 0) {
            changes.push_back(all[i]);
        }
    }
    return changes;
}

/// Datasets that belong to none of the properties, each with its tag.
std::vector<std::string> Others(const IIMRecords& records, const std::vector<MirrorChange>& changes) {
    const auto belongs = [&](const IIMDataset& dataset) {
        return std::any_of(changes.begin(), changes.end(), [&](const MirrorChange& change) {
            const IIMRow& row = *IIMRowOf(change.mNamespace, change.mProperty);
            return dataset.mNumber == row.mNumber || (row.mTimeNumber != 0 && dataset.mNumber == row.mTimeNumber);
        });
    };
    std::vector<std::string> others;
    for (const IIMDataset& dataset : records.mDatasets) {
        const bool isVersion = dataset.mRecord == kRecordApplication && dataset.mNumber == 0;
        if (!isVersion && (dataset.mRecord != kRecordApplication || !belongs(dataset))) {
            others.emplace_back(records.Whole(dataset));
        }
    }
    return others;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const IIMRecords records = ReadIIM(fuzz::Text(data, size));
    for (const NativeValue& value : IIMValues(records)) {
        fuzz::Require(IIMAgrees(records, value), "datasets agree with what they say");
    }
    const std::vector<MirrorChange> changes = Changes(size == 0 ? 1 : data[size - 1]);
    const std::optional<std::string> edited = EditedIIM(records.mBytes, changes);
    fuzz::Require(!edited || records.mIsWhole, "damaged datasets stay");
    fuzz::Require(edited || !records.mIsWhole || records.mCharset == IIMCharset::kUnknown,
                  "whole datasets in a known character set can be edited");
    if (!edited) {
        return 0;
    }
    const IIMRecords after = ReadIIM(*edited);
    fuzz::Require(after.mIsWhole, "edited datasets are whole");
    for (const MirrorChange& change : changes) {
        fuzz::Require(
            change.mValue ? IIMAgrees(after, *change.mValue) : !HasIIM(after, change.mNamespace, change.mProperty),
            "edited datasets say what was asked for");
    }
    fuzz::Require(after.mCharset != records.mCharset || Others(after, changes) == Others(records, changes),
                  "datasets in the same character set stay");
    fuzz::Require(EditedIIM(*edited, changes) == edited, "the same edit again changes nothing");
    return 0;
}
