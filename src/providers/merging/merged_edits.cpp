#include "providers/merging/merged_edits.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>

#include "providers/merging/unit_edits.h"
#include "xmp/core/xmp_paths.h"
#include "zephmetadata/providers.h"

namespace zephmetadata {

using toolkit::Place;

namespace {

constexpr std::string_view kMediaManagement = "http://ns.adobe.com/xap/1.0/mm/";
constexpr auto kInstanceData =
    std::to_array<std::string_view>({"xmpMM:DocumentID", "xmpMM:History", "xmpMM:InstanceID",
                                     "xmpMM:OriginalDocumentID", "xmpMM:VersionID", "xmpMM:Versions"});

bool IsInstanceData(const Place& place) {
    const std::string_view name = std::string_view(place.mPath).substr(0, place.mPath.find_first_of("/["));
    return place.mSchema == kMediaManagement &&
           std::find(kInstanceData.begin(), kInstanceData.end(), name) != kInstanceData.end();
}

bool WasSettled(const PropertyUnit& before, const PropertyUnit& after) {
    const bool itemsSettled = !std::includes(after.mMixedItems.begin(), after.mMixedItems.end(),
                                             before.mMixedItems.begin(), before.mMixedItems.end());
    return (before.mMixed && !after.mMixed) || (itemsSettled && !after.mMixed);
}

bool IsChanged(const UnitEdit& edit) {
    if (!edit.mBefore || !edit.mAfter) {
        return edit.mBefore.has_value() != edit.mAfter.has_value();
    }
    return !SameContent(*edit.mBefore, *edit.mAfter) || WasSettled(*edit.mBefore, *edit.mAfter);
}

}  // namespace

Place ChangedRegion(XMPMetaHandle tree, const Path& path) {
    Place place = toolkit::NormalPlace(tree, path.mNamespace, path.mPathDescription);
    place.mPath.resize(std::min(place.mPath.find('['), place.mPath.size()));
    place.mPath.resize(std::min(place.mPath.find("/?"), place.mPath.size()));
    for (std::size_t step = place.mPath.find('/'); step != UTF8String::npos; step = place.mPath.find('/', step + 1)) {
        const auto holder = toolkit::GetProperty(tree, place.mSchema, place.mPath.substr(0, step));
        if (!holder || (holder->mOptions & toolkit::kPropValueIsStruct) == 0) {
            place.mPath.resize(step);
            break;
        }
    }
    toolkit::GetProperty(tree, place.mSchema, place.mPath);  // throws for a step that can be none
    return place;
}

std::set<Place> ChangedRegions(XMPMetaHandle tree, const std::vector<Path>& changes) {
    std::set<Place> regions;
    for (const Path& path : changes) {
        try {
            regions.insert(ChangedRegion(tree, path));
        } catch (const XMPError&) {
            // No such path can exist in a tree, so there is nothing of it to write.
        }
    }
    const auto isWithinAnother = [&regions](Place place) {
        for (std::size_t step = place.mPath.rfind('/'); step != UTF8String::npos; step = place.mPath.rfind('/')) {
            place.mPath.resize(step);
            if (regions.contains(place)) {
                return true;
            }
        }
        return false;
    };
    std::set<Place> outermost;
    std::copy_if(regions.begin(), regions.end(), std::inserter(outermost, outermost.end()),
                 [&](const Place& place) { return !isWithinAnother(place); });
    return outermost;
}

bool IsInstanceData(const Path& path) {
    const std::size_t prefixEnd = path.mPathDescription.find(':');
    const std::size_t nameEnd = path.mPathDescription.find_first_of("/[");
    const bool hasPrefix = prefixEnd != UTF8String::npos && (nameEnd == UTF8String::npos || prefixEnd < nameEnd);
    return IsInstanceData(Place{path.mNamespace, hasPrefix ? path.mPathDescription : "xmpMM:" + path.mPathDescription});
}

MergedEdits::MergedEdits(XMPMetaHandle merged, const PropertyUnits& before, const std::vector<Path>& changes) {
    std::map<Place, UnitEdit> edits;
    for (const Place& region : ChangedRegions(merged, changes)) {
        for (auto& [place, unit] : UnitsAt(before, region)) {
            edits[place].mBefore = unit;
        }
        for (auto& [place, unit] : UnitsAt(merged, region)) {
            edits[place].mAfter = unit;
        }
    }
    for (auto& [place, edit] : edits) {
        if (IsChanged(edit) && !IsInstanceData(place)) {
            edit.mPlace = place;
            mEdits.push_back(std::move(edit));
        }
    }
    // What goes makes room for what comes: a structure may have become a list.
    std::stable_partition(mEdits.begin(), mEdits.end(), [](const UnitEdit& edit) { return !edit.mAfter; });
}

void MergedEdits::ApplyTo(XMPMetaHandle source) const {
    for (const UnitEdit& edit : mEdits) {
        try {
            ApplyUnitEdit(source, edit);
        } catch (const XMPError&) {
            // The source holds something of another shape there, which stays; the other edits are independent of it.
        }
    }
}

void MergedEdits::Settle(PropertyUnits& before) const {
    for (const UnitEdit& edit : mEdits) {
        before.erase(edit.mPlace);
        if (edit.mAfter) {
            before.emplace(edit.mPlace, *edit.mAfter);
        }
    }
}

}  // namespace zephmetadata
