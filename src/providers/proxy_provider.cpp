#include <algorithm>

#include "xmp/tree/xmp_tree.h"
#include "zephcore/text.h"
#include "zephmetadata/providers.h"

namespace zephmetadata {

ProxyProviderImpl::ProxyProviderImpl() : TypicalProviderImpl(nullptr) {}

ProxyProviderImpl::ProxyProviderImpl(const PolyRange<sp<MetaDataProvider>>& providers) : ProxyProviderImpl() {
    ResetProxyProviders(providers);
}

ProxyProviderImpl::~ProxyProviderImpl() {
    ResetProxyProviders();
}

/// Whether a notification of @p provider arrives here, directly or through other proxies.
bool ProxyProviderImpl::Reaches(const MetaDataProvider* provider) const {
    return this == provider ||
           std::any_of(mInnerProviders.begin(), mInnerProviders.end(), [&](const sp<MetaDataProvider>& inner) {
               const auto* const proxy = dynamic_cast<const ProxyProviderImpl*>(inner.get());
               return inner.get() == provider || (proxy != nullptr && proxy->Reaches(provider));
           });
}

bool ProxyProviderImpl::AddProxyProvider(const sp<MetaDataProvider>& provider) {
    const auto* const proxy = dynamic_cast<const ProxyProviderImpl*>(provider.get());
    if (!provider || (proxy != nullptr && proxy->Reaches(this))) {
        return false;
    }
    const auto callback = std::make_shared<std::function<void(XMPMetaHandle)>>(
        [this](XMPMetaHandle changed) { OnProxyMetaDataChange(changed); });
    mInnerProviders.push_back(provider);
    mCallbacks.push_back(callback);
    provider->NotifyWhenMetaDataChanged(callback);
    return true;
}

void ProxyProviderImpl::ResetProxyProviders() {
    for (const MetaDataCallback& callback : mCallbacks) {
        *callback = nullptr;
    }
    mCallbacks.clear();
    // What a provider takes with it may call back here: it goes when the list is in order again.
    const std::vector<sp<MetaDataProvider>> released = std::exchange(mInnerProviders, {});
}

void ProxyProviderImpl::ResetProxyProviders(const PolyRange<sp<MetaDataProvider>>& providers) {
    ResetProxyProviders();
    for (const sp<MetaDataProvider>& provider : providers) {
        AddProxyProvider(provider);
    }
}

bool ProxyProviderImpl::WritesOwnChangeList() {
    const std::vector<sp<MetaDataProvider>> stayAlive = mInnerProviders;
    return std::all_of(stayAlive.begin(), stayAlive.end(),
                       [](const sp<MetaDataProvider>& inner) { return inner->WritesOwnChangeList(); });
}

void ProxyProviderImpl::DoWriteChanges(const std::vector<Path>& changes) {
    const XMPMetaPtr written = MetaDataAccess();
    if (!written || changes.empty() || IsInWrite()) {
        return;
    }
    GuardedWriteChanges(changes);
    if (written != MetaDataAccess()) {
        // A provider replaced its tree meanwhile, of which nobody could be told during the write.
        OnProxyMetaDataChange(nullptr);
    }
}

namespace {

/// A schema for what @p tree holds of a dynamic namespace; null when that is nothing.
sp<SchemaDefinition> DiscoveredSchema(XMPMetaHandle tree, const UTF8String& namespaceURI) {
    const std::vector<toolkit::Node> nodes = toolkit::Nodes(tree, namespaceURI, {}, toolkit::Walk::kSubtree);
    const auto first =
        std::find_if(nodes.begin(), nodes.end(), [](const toolkit::Node& node) { return !node.mPath.empty(); });
    if (first == nodes.end()) {
        return nullptr;
    }
    auto schema = std::make_shared<SchemaDefinition>();
    schema->mNamespace = namespaceURI;
    schema->mPrefix = first->mPath.substr(0, first->mPath.find(':'));
    schema->mDescription = zephcore::UTF8to16(namespaceURI);
    schema->mDescriptionZString = schema->mDescription;
    schema->mLabel = zephcore::UTF8to16(schema->mPrefix);
    schema->mLabelZString = schema->mLabel;
    schema->mDynamic = true;
    return schema;
}

}  // namespace

void ProxyProviderImpl::GetAllDynamicSchemas(XMPMetaHandle tree) {
    const auto add = [this](const sp<SchemaDefinition>& schema) {
        if (schema && !DoesDynamicNamespaceExist(schema->mNamespace)) {
            AddDynamicSchemaDefinition(schema);
        }
    };
    for (const sp<SchemaDefinition>& schema : zephmetadata::DynamicSchemaDefinitions()) {
        add(schema);
    }
    for (const toolkit::Node& node : toolkit::Nodes(tree, {}, {}, toolkit::Walk::kJustChildren)) {
        if (IsDynamicNamespace(node.mSchema) && !DoesDynamicNamespaceExist(node.mSchema)) {
            add(DiscoveredSchema(tree, node.mSchema));
        }
    }
}

}  // namespace zephmetadata
