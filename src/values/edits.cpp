#include "zephmetadata/edits.h"

#include <algorithm>
#include <map>
#include <set>
#include <unordered_set>

#include "values/refusals.h"
#include "values/value_procedures.h"
#include "xmp/core/xmp_paths.h"
#include "xmp/tree/xmp_marks.h"
#include "zephmetadata/library.h"

namespace zephmetadata {

namespace {

bool IsBag(const Path& path) {
    return PrimitiveTypeOfPath(path) == kPrimitiveType_Bag;
}

/// The array and the number, from 0, of the item that a path leads to.
struct ItemPlace {
    Path mArray;
    int mIndex = 0;
};

std::optional<ItemPlace> ItemAt(const Path& path) {
    const UTF8String expression = ExpressionForPath(path);
    const std::size_t open = expression.rfind('[');
    constexpr std::size_t kMostDigits = 9;
    if (!expression.ends_with(']') || open == UTF8String::npos || expression.size() - open - 2 > kMostDigits) {
        return std::nullopt;
    }
    const UTF8String digits = expression.substr(open + 1, expression.size() - open - 2);
    if (digits.empty() || digits.find_first_not_of("0123456789") != UTF8String::npos) {
        return std::nullopt;
    }
    return ItemPlace{PathForExpression(expression.substr(0, open)), std::stoi(digits) - 1};
}

/// One text of an alternative.
struct LanguagePlace {
    Path mAlternative;
    UTF8String mLanguage;
};

/// The one that an edit is about: it names the language itself, or its path does, or counts the items.
std::optional<LanguagePlace> LanguageOf(XMPMetaHandle tree, const ValueEdit& edit) {
    if (!edit.mLanguage.empty()) {
        return LanguagePlace{edit.mPath, edit.mLanguage};
    }
    const UTF8String expression = ExpressionForPath(edit.mPath);
    const auto named = toolkit::LanguageItemAt(expression);
    const std::optional<ItemPlace> counted = ItemAt(edit.mPath);
    LanguagePlace place;
    if (named) {
        place = {PathForExpression(named->mArray), named->mLanguage};
    } else if (counted) {
        place.mAlternative = counted->mArray;
        GetRawStringValue(tree, PathForExpression(expression + "/?xml:lang"), place.mLanguage);
    }
    const bool isText = !place.mLanguage.empty() && PrimitiveTypeOfPath(place.mAlternative) == kPrimitiveType_Alt;
    return isText ? std::optional(std::move(place)) : std::nullopt;
}

bool Delete(XMPMetaHandle tree, const ValueEdit& edit) {
    if (const std::optional<LanguagePlace> text = LanguageOf(tree, edit)) {
        return SetLanguage(tree, text->mAlternative, text->mLanguage, {});
    }
    if (!HasValue(tree, edit.mPath)) {
        return false;
    }
    const std::optional<ItemPlace> item = ItemAt(edit.mPath);
    return item ? DeleteArrayItem(tree, item->mArray, item->mIndex) : DeleteValue(tree, edit.mPath);
}

/// The node at a path and all below it.
std::vector<toolkit::Node> ContentAt(XMPMetaHandle tree, const Path& path) {
    std::vector<toolkit::Node> nodes =
        toolkit::Nodes(tree, path.mNamespace, path.mPathDescription, toolkit::Walk::kSubtree);
    if (const auto root = toolkit::GetProperty(tree, path.mNamespace, path.mPathDescription)) {
        nodes.push_back({path.mNamespace, path.mPathDescription, root->mValue, root->mOptions});
    }
    return nodes;
}

bool Copy(XMPMetaHandle tree, const ValueEdit& edit) {
    const Path& path = edit.mPath;
    try {
        const std::vector<toolkit::Node> wanted = ContentAt(edit.mSource.get(), path);
        const std::vector<toolkit::Node> held = ContentAt(tree, path);
        if (wanted.empty() || std::equal(wanted.begin(), wanted.end(), held.begin(), held.end(), toolkit::SameNode)) {
            return false;
        }
        toolkit::DuplicateSubtree(edit.mSource.get(), tree, path.mNamespace, path.mPathDescription);
        toolkit::ClearNative(tree, path.mNamespace, path.mPathDescription);
        return true;
    } catch (const XMPError&) {
        ReportInvalidData(ErrorKind::ErrorWritingXMP, path);
        return false;
    }
}

/// Carries edits out in one tree. The texts of a list are read once, however many items are added to it.
class Carrier {
public:
    explicit Carrier(XMPMetaHandle tree) : mTree(tree) {}

    bool CarryOut(const ValueEdit& edit) {
        if (edit.mKind != EditKind::kEditKind_Add) {
            mTexts.clear();
        }
        switch (edit.mKind) {
            case EditKind::kEditKind_Add:
                return Add(edit);
            case EditKind::kEditKind_Delete:
                return Delete(mTree, edit);
            case EditKind::kEditKind_Remove:
            case EditKind::kEditKind_Rename:
                return ReplaceItems(edit);
            case EditKind::kEditKind_Copy:
                return Copy(mTree, edit);
            default:
                return edit.mLanguage.empty() ? SetValue(mTree, edit.mPath, edit.mValue)
                                              : SetLanguage(mTree, edit.mPath, edit.mLanguage, edit.mValue);
        }
    }

private:
    bool Add(const ValueEdit& edit) {
        if (IsBag(edit.mPath) && !TextsOf(edit.mPath).insert(edit.mValue).second) {
            return false;  // an unordered list gains nothing from holding an item twice
        }
        const int count = CountArrayItems(mTree, edit.mPath);
        return SetValue(mTree, CreatePathFromArrayItem(edit.mPath, count + 1), edit.mValue);
    }

    std::unordered_set<UTF8String>& TextsOf(const Path& path) {
        const UTF8String expression = ExpressionForPath(path);
        auto texts = mTexts.find(expression);
        if (texts == mTexts.end()) {
            const std::vector<UTF8String> items = GetItems(mTree, path);
            texts = mTexts.try_emplace(expression, items.begin(), items.end()).first;
        }
        return texts->second;
    }

    /// From the last item to the first, so that numbers stay those of the items that are still to come.
    bool ReplaceItems(const ValueEdit& edit) {
        const std::vector<UTF8String> items = GetItems(mTree, edit.mPath);
        bool isThere = IsBag(edit.mPath) && std::find(items.begin(), items.end(), edit.mNewValue) != items.end();
        bool changed = false;
        for (std::size_t i = items.size(); i > 0 && edit.mValue != edit.mNewValue; --i) {
            if (items[i - 1] != edit.mValue) {
                continue;
            }
            const auto number = static_cast<int>(i);
            const bool goes = edit.mKind == EditKind::kEditKind_Remove || isThere;
            changed |= goes ? DeleteArrayItem(mTree, edit.mPath, number - 1)
                            : SetValue(mTree, CreatePathFromArrayItem(edit.mPath, number), edit.mNewValue);
            isThere = isThere || (!goes && IsBag(edit.mPath));
        }
        return changed;
    }

    XMPMetaHandle mTree;
    std::map<UTF8String, std::unordered_set<UTF8String>> mTexts;  // of bags, by their expressions
};

EditOutcome CarryOut(Carrier& carrier, const ValueEdit& edit) {
    ErrorScope scope;
    const bool isChanged = carrier.CarryOut(edit);
    if (!scope.Errors().empty()) {
        return Refused(Cannot());
    }
    return {isChanged ? EditResult::kEditResult_Changed : EditResult::kEditResult_Unchanged, {}};
}

EditReport AllRefused(const std::vector<ValueEdit>& edits, const Refusal& why) {
    EditReport report;
    report.mOutcomes.assign(edits.size(), Refused(why));
    return report;
}

EditReport CarryOutAll(XMPMetaHandle tree, const std::vector<ValueEdit>& edits) {
    EditReport report;
    Carrier carrier(tree);
    for (const ValueEdit& edit : edits) {
        report.mOutcomes.push_back(CarryOut(carrier, edit));
    }
    return report;
}

/// What makes no sense in any tree is refused without touching one.
EditReport Considered(const std::vector<ValueEdit>& edits) {
    EditReport report;
    for (const ValueEdit& edit : edits) {
        const Refusal why = Consider(edit);
        report.mOutcomes.push_back(why.IsNone() ? EditOutcome() : Refused(why));
    }
    return report;
}

/// The tree as far as the edits see it: each the property that its path leads into.
XMPMetaPtr ConcernedPart(XMPMetaHandle tree, const std::vector<ValueEdit>& edits) {
    std::set<toolkit::Place> places;
    for (const ValueEdit& edit : edits) {
        const UTF8String& path = edit.mPath.mPathDescription;
        const UTF8String property = path.substr(0, path.find_first_of("/["));
        try {
            toolkit::Place place = toolkit::NormalPlace(tree, edit.mPath.mNamespace, property);
            place.mPath.resize(std::min(place.mPath.find_first_of("/["), place.mPath.size()));
            places.insert(std::move(place));
        } catch (const XMPError&) {
            // What cannot be named is in no tree.
        }
    }
    return toolkit::ClonePart(tree, places);
}

bool HasOutcome(const EditReport& report, EditResult result) {
    return std::any_of(report.mOutcomes.begin(), report.mOutcomes.end(),
                       [&](const EditOutcome& outcome) { return outcome.mResult == result; });
}

}  // namespace

bool EditReport::IsRefused() const {
    return HasOutcome(*this, EditResult::kEditResult_Refused);
}

bool EditReport::IsChanged() const {
    return !IsRefused() && HasOutcome(*this, EditResult::kEditResult_Changed);
}

EditReport RehearseEdits(XMPMetaHandle tree, const std::vector<ValueEdit>& edits) {
    EditReport report = Considered(edits);
    if (report.IsRefused()) {
        return report;
    }
    try {
        const XMPMetaPtr part = tree == nullptr ? nullptr : ConcernedPart(tree, edits);
        return part ? CarryOutAll(part.get(), edits) : AllRefused(edits, NoTree());
    } catch (const XMPError&) {
        return AllRefused(edits, NoTree());
    }
}

EditReport ApplyEdits(XMPMetaHandle tree, const std::vector<ValueEdit>& edits) {
    EditReport report = RehearseEdits(tree, edits);
    return report.IsChanged() ? CarryOutAll(tree, edits) : report;
}

}  // namespace zephmetadata
