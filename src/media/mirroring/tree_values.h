#pragma once

#include <memory>
#include <optional>
#include <set>
#include <vector>

#include "media/native/native_value.h"
#include "xmp/tree/place.h"
#include "xmp/tree/written_properties.h"

/// Between trees and the values that native metadata has.
namespace zephmetadata::media {

/// Makes the property what the value says, in place of what was there. Of an alternative that is there only the given
/// languages change. Throws XMPError when the toolkit refuses.
void PutValue(XMPMetaHandle tree, const NativeValue& value);
/// The same where the tree does not hold the property.
void AddValue(XMPMetaHandle tree, const NativeValue& value);

/// The same as it would be in a tree that lacks it, where that needs no toolkit to tell: it takes printable ASCII as it is.
/// @p place is that of the property.
std::optional<toolkit::WrittenProperty> PlainProperty(const NativeValue& value, const toolkit::Place& place);

/// The property as a value; absent when the tree does not hold it. The value refers to @p schema and @p property, which
/// are to outlive it.
std::optional<NativeValue> ValueIn(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& property);

/// What a tree held when this was made. Walking a tree is what costs: one that is compared several times is walked once, and
/// contents share the properties that they have in common.
class TreeContent {
public:
    TreeContent() = default;  ///< of a tree that holds nothing
    explicit TreeContent(XMPMetaHandle tree);

    bool IsEmpty() const { return mProperties.empty(); }
    /// Whether the toolkit would change something in writing the tree.
    bool IsChangedByWriting() const;

    using Property = std::shared_ptr<const toolkit::WrittenProperty>;

    bool Holds(const toolkit::Place& place) const { return At(place) != nullptr; }
    Property At(const toolkit::Place& place) const;  ///< null for none
    /// Has @p property, null for none, at its place.
    void Put(const toolkit::Place& place, Property property);
    /// This with what @p other has at @p places, be it nothing.
    template <typename Places>
    TreeContent With(const TreeContent& other, const Places& places) const {
        TreeContent both = *this;
        for (const toolkit::Place& place : places) {
            both.Put(place, other.At(place));
        }
        return both;
    }
    /// A tree that holds this.
    XMPMetaPtr Tree() const;

    /// The top-level properties in which the two differ, each once, in the order of their places; the path of each has its
    /// prefix.
    friend std::vector<toolkit::Place> ChangedProperties(const TreeContent& before, const TreeContent& after);

private:
    struct ByPlace {
        using is_transparent = void;
        static const toolkit::WrittenProperty& Of(const Property& property) { return *property; }
        static const toolkit::Place& Of(const toolkit::Place& place) { return place; }
        template <typename Left, typename Right>
        bool operator()(const Left& left, const Right& right) const {
            return Of(left) < Of(right);
        }
    };

    std::set<Property, ByPlace> mProperties;
};

std::vector<toolkit::Place> ChangedProperties(const TreeContent& before, const TreeContent& after);

/// What a tree holds at @p place; null for nothing.
TreeContent::Property PropertyAt(XMPMetaHandle tree, const toolkit::Place& place);

/// Makes a property of one tree what it is in another, whether that holds it or not.
void CopyProperty(XMPMetaHandle from, XMPMetaHandle to, const toolkit::Place& property);

}  // namespace zephmetadata::media
