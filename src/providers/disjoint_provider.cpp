#include <algorithm>
#include <set>

#include "providers/merging/merged_edits.h"
#include "xmp/tree/xmp_tree.h"
#include "zephmetadata/providers.h"

namespace zephmetadata {

/// Which schemas of which tree stand for those of other providers, and what the tree had of them itself.
struct DisjointSchemaProxyProvider::Copies {
    XMPMetaPtr mTree;
    std::vector<UTF8String> mSchemas;
    XMPMetaPtr mOwn;
};

namespace {

/// Copies the properties of one schema from one tree to another, replacing those of the same names.
void CopySchema(XMPMetaHandle source, XMPMetaHandle destination, const UTF8String& schema) {
    for (const toolkit::Node& node : toolkit::Nodes(source, schema, {}, toolkit::Walk::kJustChildren)) {
        toolkit::DuplicateSubtree(source, destination, schema, node.mPath);
    }
}

/// Takes the paths that lead into @p schema out of @p changes, in their order.
std::vector<Path> TakeOut(std::vector<Path>& changes, XMPMetaHandle tree, const UTF8String& schema) {
    const auto leadsElsewhere = [&](const Path& path) {
        try {
            return ChangedRegion(tree, path).mSchema != schema;
        } catch (const XMPError&) {
            return path.mNamespace != schema;
        }
    };
    const auto first = std::stable_partition(changes.begin(), changes.end(), leadsElsewhere);
    std::vector<Path> taken(first, changes.end());
    changes.erase(first, changes.end());
    return taken;
}

/// Makes what a tree holds at a region what @p edited holds there.
void CopyRegion(XMPMetaHandle edited, XMPMetaHandle tree, const toolkit::Place& region) {
    const auto& [schema, path] = region;
    try {
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

}  // namespace

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

/// Gives the tree that routed schemas were copied into what it had of its own.
void DisjointSchemaProxyProvider::TakeRoutesOut() {
    const Copies copies = std::exchange(*mCopies, {});
    try {
        for (const UTF8String& schema : copies.mSchemas) {
            toolkit::RemoveProperties(copies.mTree.get(), schema, {});
            CopySchema(copies.mOwn.get(), copies.mTree.get(), schema);
        }
    } catch (const XMPError&) {
        // The toolkit was stopped before its last host: the tree is read by nobody any more.
    }
}

/// Copies the routed schemas into @p tree; whether there was any to copy.
bool DisjointSchemaProxyProvider::CopyRoutes(XMPMetaHandle tree) {
    *mCopies = {tree, {}, toolkit::NewTree()};
    for (const auto& [schema, provider] : Routes(mRoutes)) {
        const MetaDataReadAccess source(provider);
        if (*source == nullptr || *source == tree) {
            continue;
        }
        std::vector<UTF8String>& copied = mCopies->mSchemas;
        const bool isFirst = std::find(copied.begin(), copied.end(), schema->mNamespace) == copied.end();
        try {
            if (isFirst) {
                copied.push_back(schema->mNamespace);
                CopySchema(tree, mCopies->mOwn.get(), schema->mNamespace);
            }
            CopySchema(*source, tree, schema->mNamespace);
        } catch (const XMPError&) {
            // What the tree cannot take stays with its own provider.
        }
    }
    return !mCopies->mSchemas.empty();
}

void DisjointSchemaProxyProvider::OnProxyMetaDataChange(XMPMetaHandle /*changed*/) {
    TakeRoutesOut();
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
    // Taken before the first provider is written, which may bring about a rebuild.
    const XMPMetaPtr edited = toolkit::NewTree();
    const std::set<toolkit::Place> regions = ChangedRegions(tree.get(), changes);
    for (const auto& [schema, path] : regions) {
        toolkit::DuplicateSubtree(tree.get(), edited.get(), schema, path);
    }
    std::vector<Path> remaining = changes;
    for (const Routes::value_type& route : Routes(mRoutes)) {
        MetaDataUpdateAccess access(route.second);
        if (*access != nullptr) {
            for (const Path& path : TakeOut(remaining, tree.get(), route.first->mNamespace)) {
                access.AddChange(path);
            }
            for (const toolkit::Place& region : regions) {
                if (region.mSchema == route.first->mNamespace && *access != tree) {
                    CopyRegion(edited.get(), *access, region);
                }
            }
        }
    }
    if (mBase && !remaining.empty()) {
        WriteBase(tree.get(), remaining);
    }
}

void DisjointSchemaProxyProvider::WriteBase(XMPMetaHandle tree, const std::vector<Path>& changes) {
    for (const auto& [schema, provider] : mRoutes) {
        // A schema whose provider has no tree of its own has no other place than the base provider.
        const MetaDataReadAccess routed(provider);
        if (*routed != nullptr && *routed != tree) {
            toolkit::RemoveProperties(tree, schema->mNamespace, {});
        }
    }
    {
        MetaDataUpdateAccess access(mBase);
        for (const Path& path : changes) {
            access.AddChange(path);
        }
    }
    CopyRoutes(tree);
}

}  // namespace zephmetadata
