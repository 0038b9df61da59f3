#include <algorithm>

#include "frame/toolkit/xmp_paths.h"
#include "frame/toolkit/xmp_tree.h"
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

/// The whole that a changed path is part of: an array for one of its items, the outermost structure that is gone.
UTF8String ChangedPath(XMPMetaHandle tree, const Path& path) {
    UTF8String whole = toolkit::NormalPath(tree, path.mNamespace, path.mPathDescription);
    whole.resize(std::min(whole.find('['), whole.size()));
    for (std::size_t step = whole.rfind('/'); step != UTF8String::npos; step = whole.rfind('/')) {
        if (toolkit::PropertyExists(tree, path.mNamespace, whole.substr(0, step))) {
            break;
        }
        whole.resize(step);
    }
    return whole;
}

}  // namespace

DisjointSchemaProxyProvider::DisjointSchemaProxyProvider() : mCopies(std::make_unique<Copies>()) {}

DisjointSchemaProxyProvider::~DisjointSchemaProxyProvider() {
    ResetProxyProviders();
    TakeRoutesOut();
}

void DisjointSchemaProxyProvider::RegisterBaseProvider(const sp<MetaDataProvider>& provider) {
    const sp<MetaDataProvider> released = std::exchange(mBase, provider);
    if (provider) {
        AddProxyProvider(provider);
        OnProxyMetaDataChange(nullptr);
    }
}

void DisjointSchemaProxyProvider::RegisterProvider(const sp<SchemaDefinition>& schema,
                                                   const sp<MetaDataProvider>& provider) {
    if (!schema || !provider) {
        return;
    }
    mRoutes[schema] = provider;
    AddProxyProvider(provider);
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
        if (*source == nullptr) {
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
    std::vector<Path> remaining = changes;
    for (const Routes::value_type& route : Routes(mRoutes)) {
        WriteRoute(route, tree.get(), remaining);
    }
    if (mBase && !remaining.empty()) {
        WriteBase(tree.get(), remaining);
    }
}

/// Writes the changes of one schema to its provider and takes them out of @p remaining; all stay when the provider has
/// no tree.
void DisjointSchemaProxyProvider::WriteRoute(const Routes::value_type& route, XMPMetaHandle tree,
                                             std::vector<Path>& remaining) const {
    const auto& [schema, provider] = route;
    MetaDataUpdateAccess access(provider);
    if (*access == nullptr) {
        return;
    }
    std::vector<Path> others;
    for (const Path& path : remaining) {
        if (path.mNamespace != schema->mNamespace) {
            others.push_back(path);
            continue;
        }
        try {
            const UTF8String changed = ChangedPath(tree, path);
            toolkit::RemoveProperties(*access, path.mNamespace, changed);
            toolkit::DuplicateSubtree(tree, *access, path.mNamespace, changed);
        } catch (const XMPError&) {
            // No such path can be written; the provider is told of it all the same.
        }
        access.AddChange(path);
    }
    remaining = std::move(others);
}

void DisjointSchemaProxyProvider::WriteBase(XMPMetaHandle tree, const std::vector<Path>& changes) {
    for (const auto& [schema, provider] : mRoutes) {
        // A schema whose provider has no tree has no other place than the base provider.
        if (*MetaDataReadAccess(provider) != nullptr) {
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
