#include <array>
#include <string_view>

#include "panel/panel_output.h"

namespace zephmeta {

namespace {

using Kind = PanelItem::Kind;
using State = PanelItem::State;

constexpr std::string_view KindName(Kind kind) {
    constexpr auto kNames = std::to_array<std::string_view>({"property", "section", "separator", "note", "formatter"});
    return kNames[static_cast<std::size_t>(kind)];
}

constexpr std::string_view StateName(State state) {
    constexpr auto kNames = std::to_array<std::string_view>({"none", "value", "mixed", "undefined"});
    return kNames[static_cast<std::size_t>(state)];
}

enum class Subject { kView, kFile };

void SetText(Json& json, const char* member, const std::string& text) {
    if (!text.empty()) {
        json[member] = text;
    }
}

Json ItemJson(const PanelItem& item, Subject subject) {
    Json json = {{"kind", KindName(item.mKind)}};
    SetText(json, "path", item.mPath);
    SetText(json, "label", item.mLabel);
    SetText(json, "description", item.mDescription);
    SetText(json, "type", item.mType);
    SetText(json, "widget", item.mWidget);
    const bool canHaveValue = item.mKind == Kind::kProperty || item.mKind == Kind::kFormatter;
    if (subject == Subject::kFile && canHaveValue) {
        json["state"] = StateName(item.mState);
    }
    SetText(json, "value", item.mValue);
    SetText(json, "raw", item.mRaw);
    if (subject == Subject::kFile && item.mKind == Kind::kProperty) {
        json["writable"] = item.mWritable;
    }
    for (const auto& [key, value] : item.mParameters) {
        json["parameters"][key] = value;
    }
    for (const auto& [value, label] : item.mChoices) {
        json["choices"].push_back({{"value", value}, {"label", label}});
    }
    for (const PanelItem& child : item.mItems) {
        json["items"].push_back(ItemJson(child, subject));
    }
    return json;
}

Json ItemsJson(const Panel& panel, Subject subject) {
    Json items = Json::array();
    for (const PanelItem& item : panel.mItems) {
        items.push_back(ItemJson(item, subject));
    }
    return items;
}

}  // namespace

Json ToJson(const Panel& panel, const std::vector<std::string>& files) {
    return {
        {"view", panel.mName}, {"label", panel.mLabel}, {"files", files}, {"items", ItemsJson(panel, Subject::kFile)}};
}

Json DescriptionJson(const Panel& panel) {
    return {{"name", panel.mName},
            {"label", panel.mLabel},
            {"description", panel.mDescription},
            {"pruneEmptyProperties", panel.mPruneEmptyProperties},
            {"items", ItemsJson(panel, Subject::kView)}};
}

}  // namespace zephmeta
