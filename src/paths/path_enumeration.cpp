#include <boost/iterator/iterator_facade.hpp>
#include <boost/range/adaptor/filtered.hpp>
#include <boost/range/adaptor/transformed.hpp>
#include <boost/range/counting_range.hpp>

#include <algorithm>

#include "zephmetadata/paths.h"

namespace zephmetadata {

namespace {

using PathIterator = boost::range_iterator<PolyRange<Path>>::type;

/// No structure of any standard comes near this depth; definitions may refer to themselves.
constexpr std::size_t kMaxHierarchyDepth = 32;

/// How many nodes below the top of a walk are stood upon before structures are no longer entered. Structures that refer to
/// each other have factorially many; no schema of any standard has a tenth of this.
constexpr std::size_t kMaxNestedNodes = 20000;

/// Makes the child of a given number, so that a range over the numbers computes its paths as it is walked.
struct FieldChild {
    Path mParent;
    sp<TypeDefinition> mType;
    bool mArrayed = false;

    Path operator()(std::size_t index) const {
        if (index >= mType->mFields.size()) {
            return {};
        }
        const sp<FieldDefinition>& field = mType->mFields[index];
        try {
            return mArrayed ? CreatePathFromArrayedStructureField(mParent, field)
                            : CreatePathFromStructureField(mParent, field);
        } catch (const XMPError&) {
            return {};  // as for a field that is not arrayed: who walks has no use for the reason
        }
    }
};

struct PropertyChild {
    sp<SchemaDefinition> mSchema;

    Path operator()(std::size_t index) const {
        return index < mSchema->mProperties.size() ? CreatePathFromSchemaProperty(mSchema, mSchema->mProperties[index])
                                                   : Path();
    }
};

struct SameChild {
    Path mChild;

    Path operator()(std::size_t /*index*/) const { return mChild; }
};

template <typename Child>
PolyRange<Path> Children(std::size_t count, Child child) {
    return boost::counting_range<std::size_t>(0, count) | boost::adaptors::transformed(std::move(child));
}

bool IsLeafPath(const Path& path) {
    return boost::empty(ChildPaths(path));
}

/// Depth first, a node before what is below it. Two iterators are equal when they stand on equal paths; one that is
/// through stands on the empty path.
class PathHierarchyIterator
    : public boost::iterator_facade<PathHierarchyIterator, Path, boost::bidirectional_traversal_tag, Path> {
public:
    PathHierarchyIterator() = default;
    explicit PathHierarchyIterator(const PolyRange<Path>& children)
        : mStack({{boost::begin(children), boost::end(children)}}) {}

private:
    friend class boost::iterator_core_access;

    struct Level {
        PathIterator mCurrent;
        PathIterator mEnd;
    };

    Path dereference() const {
        return mStack.empty() || mStack.back().mCurrent == mStack.back().mEnd ? Path() : *mStack.back().mCurrent;
    }

    bool equal(const PathHierarchyIterator& other) const { return dereference() == other.dereference(); }

    void increment() {
        if (mStack.empty() || mStack.back().mCurrent == mStack.back().mEnd) {
            return;
        }
        mNestedNodes += mStack.size() > 1 ? 1 : 0;
        const PolyRange<Path> children = ChildPaths(*mStack.back().mCurrent);
        if (!boost::empty(children) && mStack.size() < kMaxHierarchyDepth && mNestedNodes < kMaxNestedNodes &&
            !IsInsideItself()) {
            mStack.push_back({boost::begin(children), boost::end(children)});
            return;
        }
        ++mStack.back().mCurrent;
        while (mStack.back().mCurrent == mStack.back().mEnd && mStack.size() > 1) {
            mStack.pop_back();
            ++mStack.back().mCurrent;
        }
    }

    void decrement() {}  // the walk goes forward only

    /// Whether the current path is of a type that one of the paths above it is of.
    bool IsInsideItself() const {
        const sp<TypeDefinition> type = TypeEntryDefinition(*mStack.back().mCurrent);
        return std::any_of(mStack.begin(), mStack.end() - 1, [&](const Level& level) {
            return type && !type->mFields.empty() && TypeEntryDefinition(*level.mCurrent) == type &&
                   !(*level.mCurrent == *mStack.back().mCurrent);
        });
    }

    std::vector<Level> mStack;
    std::size_t mNestedNodes = 0;
};

PolyRange<Path> Leaves(const PolyRange<Path>& children) {
    const auto walk = boost::make_iterator_range(PathHierarchyIterator(children), PathHierarchyIterator());
    return walk | boost::adaptors::filtered(&IsLeafPath);
}

}  // namespace

PolyRange<Path> ChildPaths(const Path& path) {
    const sp<EntryDefinition> entry = PathEntryDefinition(path);
    const sp<TypeDefinition> type = TypeEntryDefinition(path);
    if (!entry || !type) {
        return {};
    }
    const bool expanded = IsPathAnArray(path, false);
    if (!type->mFields.empty()) {
        return Children(type->mFields.size(), FieldChild{path, type, expanded});
    }
    return expanded ? Children(1, SameChild{CreatePathFromElementType(path, entry, type)}) : PolyRange<Path>();
}

PolyRange<Path> ChildPaths(const sp<SchemaDefinition>& schema) {
    return schema ? Children(schema->mProperties.size(), PropertyChild{schema}) : PolyRange<Path>();
}

PolyRange<Path> DescendantLeafPaths(const Path& path) {
    return Leaves(ChildPaths(path));
}

PolyRange<Path> DescendantLeafPaths(const sp<SchemaDefinition>& schema) {
    return Leaves(ChildPaths(schema));
}

}  // namespace zephmetadata
