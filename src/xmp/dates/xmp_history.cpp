#include "xmp/dates/xmp_history.h"

#include <algorithm>
#include <array>
#include <random>
#include <string_view>

#include "xmp/core/xmp_paths.h"
#include "xmp/dates/xmp_dates.h"
#include "xmp/tree/xmp_tree.h"
#include "zephcore/environment.h"
#include "zephcore/text.h"

namespace zephmetadata::toolkit {
namespace {

const UTF8String kXMPNamespace = "http://ns.adobe.com/xap/1.0/";
const UTF8String kXMPMMNamespace = "http://ns.adobe.com/xap/1.0/mm/";
const UTF8String kEventNamespace = "http://ns.adobe.com/xap/1.0/sType/ResourceEvent#";

// RFC 4122, version 4.
UTF8String RandomUUID() {
    std::random_device random;
    std::array<unsigned char, 16> bytes{};
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<unsigned char>(random() & 0xFFU); });
    bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0FU) | 0x40U);
    bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3FU) | 0x80U);
    constexpr std::string_view kDigits = "0123456789abcdef";
    UTF8String text;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) {
            text.push_back('-');
        }
        text.push_back(kDigits[bytes[i] >> 4U]);
        text.push_back(kDigits[bytes[i] & 0x0FU]);
    }
    return text;
}

// Files hold some of these properties in shapes that they should not have. Such a property stays as it is: what can be
// recorded is, and the change that is saved goes ahead.

bool IsSimple(const std::optional<Property>& property) {
    return property && (property->mOptions & kPropCompositeMask) == 0;
}

void SetSimple(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& name, const UTF8String& value) {
    const std::optional<Property> present = GetProperty(tree, schema, name);
    if (!present || IsSimple(present)) {
        SetProperty(tree, schema, name, value);
    }
}

void SetWhenMissing(XMPMetaHandle tree, const UTF8String& name, const UTF8String& value) {
    const std::optional<Property> present = GetProperty(tree, kXMPMMNamespace, name);
    if (!value.empty() && (!present || (IsSimple(present) && present->mValue.empty()))) {
        SetProperty(tree, kXMPMMNamespace, name, value);
    }
}

/// The text of a simple property; empty where there is none.
UTF8String TextOf(XMPMetaHandle tree, const UTF8String& name) {
    return GetProperty(tree, kXMPMMNamespace, name).value_or(Property()).mValue;
}

bool CanTakeEvents(XMPMetaHandle tree) {
    const std::optional<Property> history = GetProperty(tree, kXMPMMNamespace, "History");
    return !history || (history->mOptions & (kPropValueIsArray | kPropArrayIsAlternate)) == kPropValueIsArray;
}

void AppendEvent(XMPMetaHandle tree, const UTF8String& when, const UTF8String& changed) {
    AppendArrayItem(tree, kXMPMMNamespace, "History", kPropValueIsArray | kPropArrayIsOrdered, {}, kPropValueIsStruct);
    const std::size_t count = CountArrayItems(tree, kXMPMMNamespace, "History");  // once, and not for every field
    const UTF8String event = ItemPath("History", count);
    const auto setField = [&](const UTF8String& name, const UTF8String& value) {
        SetProperty(tree, kXMPMMNamespace, ComposeStructFieldPath(kXMPMMNamespace, event, kEventNamespace, name),
                    value);
    };
    setField("action", "saved");
    setField("instanceID", TextOf(tree, "InstanceID"));
    setField("when", when);
    setField("softwareAgent", zephcore::UTF16to8(zephcore::GetSuiteClientName()));
    setField("changed", changed);
}

UTF8String Joined(const std::vector<UTF8String>& parts) {
    UTF8String joined;
    for (const UTF8String& part : parts) {
        joined.append(joined.empty() ? "" : ";").append(part);
    }
    return joined;
}

}  // namespace

void TXMPDocOps::OpenXMP(XMPMetaHandle tree) {
    mTree = tree;
    mParts.clear();
    mNoted.clear();
}

void TXMPDocOps::NoteChange(const UTF8String& part) {
    if (mNoted.insert(part).second) {
        mParts.push_back(part);
    }
}

void TXMPDocOps::PrepareForSave() {
    if (!mTree || mParts.empty()) {
        return;
    }
    XMPMetaHandle tree = mTree.get();
    const auto isSetByUser = [&](const UTF8String& part) { return mNoted.contains(part); };
    const UTF8String document = "xmp.did:" + RandomUUID();
    const UTF8String now = ConvertFromDate(CurrentDateTime());
    RegisterNamespace(kEventNamespace, "stEvt");
    if (!isSetByUser("/metadata/xmpMM/InstanceID")) {
        SetSimple(tree, kXMPMMNamespace, "InstanceID", "xmp.iid:" + RandomUUID());
    }
    SetWhenMissing(tree, "DocumentID", document);
    SetWhenMissing(tree, "OriginalDocumentID", TextOf(tree, "DocumentID"));
    if (!isSetByUser("/metadata/xmp/MetadataDate")) {
        SetSimple(tree, kXMPNamespace, "MetadataDate", now);
    }
    if (CanTakeEvents(tree)) {
        AppendEvent(tree, now, Joined(mParts));
    }
    mParts.clear();
    mNoted.clear();
}

}  // namespace zephmetadata::toolkit
