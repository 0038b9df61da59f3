#include <algorithm>
#include <set>
#include <unordered_map>
#include <unordered_set>

#include "providers/merging/merged_edits.h"
#include "providers/tree_supply.h"
#include "xmp/tree/xmp_tree.h"
#include "zephmetadata/providers.h"

namespace zephmetadata {

/// Which properties of which tree stand for those of other providers, and what the tree had of their schemas itself.
struct DisjointSchemaProxyProvider::Copies {
    /// Has @p edited, properties of routed schemas, stand for those of the routes from now on. Those that are gone and
    /// that the tree had itself as well: they go there too, so as not to come to light again.
    std::set<toolkit::Place> Settle(XMPMetaHandle edited, const std::set<toolkit::Place>& properties);

    XMPMetaPtr mTree;
    std::set<toolkit::Place> mProperties;
    XMPMetaPtr mOwn;
};

namespace {

using toolkit::Place;

std::vector<toolkit::Node> PropertiesOf(XMPMetaHandle tree, const UTF8String& schema) {
    return toolkit::Nodes(tree, schema, {}, toolkit::Walk::kJustChildren);
}

/// Copies a property or a part of one, if there is such; what the destination cannot take stays where it is.
void Copy(XMPMetaHandle source, XMPMetaHandle destination, const Place& place) {
    try {
        toolkit::DuplicateSubtree(source, destination, place.mSchema, place.mPath);
    } catch (const XMPError&) {
        // The other properties are independent of it.
    }
}

Place TopLevelOf(Place place) {
    place.mPath.resize(std::min(place.mPath.find('/'), place.mPath.size()));
    return place;
}

bool Holds(XMPMetaHandle tree, const Place& place) {
    return toolkit::PropertyExists(tree, place.mSchema, place.mPath);
}

template <typename Visit>
void ForEachOf(const std::set<Place>& places, const UTF8String& schema, const Visit& visit) {
    for (auto place = places.lower_bound({schema, {}}); place != places.end() && place->mSchema == schema; ++place) {
        visit(*place);
    }
}

bool HoldsMixed(XMPMetaHandle tree, const Place& place) {
    const std::vector<toolkit::Node> nodes = toolkit::Nodes(tree, place.mSchema, place.mPath, toolkit::Walk::kSubtree);
    return std::any_of(nodes.begin(), nodes.end(),
                       [&](const toolkit::Node& node) { return toolkit::IsMixed(tree, node.mSchema, node.mPath); });
}

/// Makes what a tree holds at a region what @p edited holds there. A property that the tree lacks comes as a whole: the
/// part alone would take the place of the others that are shown.
void CopyRegion(XMPMetaHandle edited, XMPMetaHandle tree, const Place& region) {
    try {
        const Place property = TopLevelOf(region);
        const bool isWhole = Holds(edited, property) && !Holds(tree, property) && !HoldsMixed(edited, property);
        const Place& place = isWhole ? property : region;
        const auto& [schema, path] = place;
        // What the sources of the base differ in is theirs, and no value for another provider.
        const bool isForeign = toolkit::IsMixed(edited, schema, path) && !toolkit::IsMixed(tree, schema, path);
        if (!isForeign) {
            toolkit::RemoveProperties(tree, schema, path);
            toolkit::DuplicateSubtree(edited, tree, schema, path);
        }
    } catch (const XMPError&) {
        // What the tree cannot take is not written; its provider is told of the change all the same.
    }
}

/// What was changed, as it was when the write-back began: a provider that is written may bring about a rebuild.
class EditedParts {
public:
    EditedParts(XMPMetaHandle tree, const std::vector<Path>& changes) : mTree(toolkit::NewTree()) {
        for (const Path& path : changes) {
            Place place{path.mNamespace, {}};
            try {
                place = ChangedRegion(tree, path);
                mRegions.insert(place);
                if (mProperties.insert(TopLevelOf(place)).second) {
                    Copy(tree, mTree.get(), TopLevelOf(place));
                }
            } catch (const XMPError&) {
                // It can be no path, which is for the provider of its schema to hear of.
            }
            mPaths[place.mSchema].push_back(path);
            mPlaces.push_back(std::move(place));
        }
    }

    XMPMetaHandle Tree() const { return mTree.get(); }
    /// Of each change, in their order.
    const std::vector<Place>& Places() const { return mPlaces; }
    /// The properties that the changes are, or are parts of.
    const std::set<Place>& Properties() const { return mProperties; }

    /// Takes the changes of a schema to its provider, whose tree may be the edited one itself.
    void WriteTo(MetaDataUpdateAccess& access, const UTF8String& schema, bool isEdited) const {
        if (!isEdited) {
            ForEachOf(mRegions, schema, [&](const Place& region) { CopyRegion(mTree.get(), *access, region); });
        }
        if (const auto paths = mPaths.find(schema); paths != mPaths.end()) {
            std::for_each(paths->second.begin(), paths->second.end(),
                          [&](const Path& path) { access.AddChange(path); });
        }
    }

private:
    XMPMetaPtr mTree;
    std::vector<Place> mPlaces;
    std::set<Place> mRegions;
    std::set<Place> mProperties;
    std::unordered_map<UTF8String, std::vector<Path>> mPaths;  // by schema
};

/// Those of @p properties that belong to a route with a tree of its own.
template <typename Routes>
std::set<Place> OfRoutes(const Routes& routes, const std::set<Place>& properties, XMPMetaHandle tree) {
    std::set<Place> routed;
    for (const auto& [schema, provider] : routes) {
        const MetaDataReadAccess access(provider);
        if (*access != nullptr && *access != tree) {
            ForEachOf(properties, schema->mNamespace, [&](const Place& property) { routed.insert(property); });
        }
    }
    return routed;
}

}  // namespace

std::set<Place> DisjointSchemaProxyProvider::Copies::Settle(XMPMetaHandle edited, const std::set<Place>& properties) {
    std::set<Place> gone;
    for (const Place& property : mOwn ? properties : std::set<Place>()) {
        mProperties.insert(property);
        if (!Holds(edited, property) && toolkit::DeleteProperty(mOwn.get(), property.mSchema, property.mPath)) {
            gone.insert(property);
        }
    }
    return gone;
}

DisjointSchemaProxyProvider::DisjointSchemaProxyProvider() : mCopies(std::make_unique<Copies>()) {}

DisjointSchemaProxyProvider::~DisjointSchemaProxyProvider() {
    ResetProxyProviders();
    TakeRoutesOut();
}

void DisjointSchemaProxyProvider::RegisterBaseProvider(const sp<MetaDataProvider>& provider) {
    if (provider && !AddProxyProvider(provider)) {
        return;
    }
    const sp<MetaDataProvider> released = std::exchange(mBase, provider);
    if (provider) {
        OnProxyMetaDataChange(nullptr);
    }
}

void DisjointSchemaProxyProvider::RegisterProvider(const sp<SchemaDefinition>& schema,
                                                   const sp<MetaDataProvider>& provider) {
    if (!schema || !AddProxyProvider(provider)) {
        return;
    }
    const sp<MetaDataProvider> released = std::exchange(mRoutes[schema], provider);
    OnProxyMetaDataChange(nullptr);
}

void DisjointSchemaProxyProvider::ClearProviders() {
    const sp<MetaDataProvider> releasedBase = std::exchange(mBase, nullptr);
    const Routes releasedRoutes = std::exchange(mRoutes, {});
    ResetProxyProviders();
    OnProxyMetaDataChange(nullptr);
}

bool DisjointSchemaProxyProvider::QueryPathStatus(const Path& path, PathStatus status) const {
    const auto route = mRoutes.find(NamespaceDefinition(path.mNamespace));
    const sp<MetaDataProvider> provider = route == mRoutes.end() ? mBase : route->second;
    return provider ? provider->QueryPathStatus(path, status) : MetaDataProvider::QueryPathStatus(path, status);
}

/// Gives the tree that routed properties were copied into what it had in their places.
void DisjointSchemaProxyProvider::TakeRoutesOut() {
    const Copies copies = std::exchange(*mCopies, {});
    for (const Place& place : copies.mProperties) {
        try {
            toolkit::RemoveProperties(copies.mTree.get(), place.mSchema, place.mPath);
            Copy(copies.mOwn.get(), copies.mTree.get(), place);
        } catch (const XMPError&) {
            // The toolkit was stopped before its last host: the tree is read by nobody any more.
        }
    }
}

/// Copies the routed properties into @p tree; whether any route has a tree.
bool DisjointSchemaProxyProvider::CopyRoutes(XMPMetaHandle tree) {
    *mCopies = {tree, {}, toolkit::NewTree()};
    std::unordered_set<UTF8String> schemas;
    for (const auto& [definition, provider] : Routes(mRoutes)) {
        const MetaDataReadAccess source(provider);
        if (*source == nullptr || *source == tree) {
            continue;
        }
        const UTF8String& schema = definition->mNamespace;
        if (schemas.insert(schema).second) {
            for (const toolkit::Node& node : PropertiesOf(tree, schema)) {
                Copy(tree, mCopies->mOwn.get(), {schema, node.mPath});
            }
        }
        for (const toolkit::Node& node : PropertiesOf(*source, schema)) {
            mCopies->mProperties.insert({schema, node.mPath});
            Copy(*source, tree, {schema, node.mPath});
        }
    }
    return !schemas.empty();
}

void DisjointSchemaProxyProvider::OnProxyMetaDataChange(XMPMetaHandle /*changed*/) {
    TakeRoutesOut();
    if ((!mBase && mRoutes.empty()) || !CanHaveTrees()) {
        ResetMetaData(nullptr, true);
        return;
    }
    XMPMetaPtr tree = *MetaDataReadAccess(mBase);
    const bool hasBase = tree != nullptr;
    if (!hasBase) {
        tree = toolkit::NewTree();
    }
    const bool copied = CopyRoutes(tree.get());
    if (!hasBase && !copied) {
        tree = nullptr;
    } else {
        GetAllDynamicSchemas(tree.get());
    }
    ResetMetaData(tree.get(), true);
}

void DisjointSchemaProxyProvider::WriteChanges(const std::vector<Path>& changes) {
    const XMPMetaPtr tree = MetaDataAccess();
    if (!tree) {
        return;
    }
    const EditedParts edited(tree.get(), changes);
    const std::set<Place> gone =
        mCopies->Settle(edited.Tree(), OfRoutes(Routes(mRoutes), edited.Properties(), tree.get()));
    std::unordered_set<UTF8String> written;
    for (const auto& [schema, provider] : Routes(mRoutes)) {
        try {
            MetaDataUpdateAccess access(provider);
            if (*access != nullptr) {
                written.insert(schema->mNamespace);
                edited.WriteTo(access, schema->mNamespace, *access == tree);
            }
            ReportWriting(access.Commit());
        } catch (...) {
            // A provider that cannot even hand out its tree keeps the edit from no other.
        }
    }
    std::vector<Path> remaining;
    for (std::size_t i = 0; i < changes.size(); ++i) {
        const Place& place = edited.Places()[i];
        if (!written.contains(place.mSchema) || gone.contains(TopLevelOf(place))) {
            remaining.push_back(changes[i]);
        }
    }
    if (mBase && !remaining.empty()) {
        WriteBase(remaining);
    }
}

/// Writes the base without what belongs to routes.
void DisjointSchemaProxyProvider::WriteBase(const std::vector<Path>& changes) {
    const XMPMetaPtr tree = mCopies->mTree;
    TakeRoutesOut();
    try {
        MetaDataUpdateAccess access(mBase);
        std::for_each(changes.begin(), changes.end(), [&](const Path& path) { access.AddChange(path); });
        ReportWriting(access.Commit());
    } catch (...) {
        // As with the routes, whose properties are put back in any case.
    }
    if (tree && !mCopies->mTree) {  // else a rebuild has taken place meanwhile
        CopyRoutes(tree.get());
    }
}

}  // namespace zephmetadata
