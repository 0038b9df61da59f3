#include "edits/changes.h"

#include <map>

#include "console.h"
#include "listing.h"
#include "zephmetadata/library.h"

namespace zephmeta {

namespace {

using zephmetadata::XMPMetaHandle;

std::map<std::string, std::string> TextsByPath(XMPMetaHandle tree) {
    std::map<std::string, std::string> texts;
    if (tree != nullptr) {
        for (const ListedValue& value : ListValues(tree)) {
            std::string& text = texts[value.mExpression];
            text = value.mItems.empty() ? value.mRaw : value.mDisplay;
            for (const auto& [language, languageText] : value.mLanguages) {
                if (language != "x-default") {
                    text.append(" [").append(language).append("] ").append(languageText);
                }
            }
        }
    }
    return texts;
}

}  // namespace

std::vector<Change> Differences(XMPMetaHandle before, XMPMetaHandle after) {
    const zephmetadata::ErrorScope passedOver;  // of values that nobody asked for
    std::map<std::string, Change> changes;
    for (const auto& [expression, text] : TextsByPath(before)) {
        changes[expression] = {expression, text, {}};
    }
    for (const auto& [expression, text] : TextsByPath(after)) {
        Change& change = changes[expression];
        change.mExpression = expression;
        change.mAfter = text;
    }
    std::vector<Change> differing;
    for (auto& [expression, change] : changes) {
        if (change.mBefore != change.mAfter) {
            differing.push_back(std::move(change));
        }
    }
    return differing;
}

std::string InWords(const Change& change) {
    const auto quoted = [](const std::string& text) { return "\"" + OneLine(text) + "\""; };
    if (change.mBefore.empty()) {
        return "added " + quoted(change.mAfter);
    }
    return change.mAfter.empty() ? "removed " + quoted(change.mBefore)
                                 : quoted(change.mBefore) + " becomes " + quoted(change.mAfter);
}

}  // namespace zephmeta
