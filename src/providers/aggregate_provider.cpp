#include <algorithm>
#include <unordered_set>

#include "providers/merging/merged_edits.h"
#include "providers/tree_supply.h"
#include "providers/write_reports.h"
#include "xmp/tree/xmp_tree.h"
#include "zephcore/text.h"
#include "zephmetadata/library.h"
#include "zephmetadata/providers.h"

namespace zephmetadata {

struct AggregateProvider::Merge {
    XMPMetaPtr mTree;
    PropertyUnits mUnits;  // what mTree held when it was built, or where it was written since
};

namespace {

using Providers = std::vector<sp<MetaDataProvider>>;

/// Each provider once.
Providers Unique(const Providers& providers) {
    std::unordered_set<const MetaDataProvider*> seen;
    Providers unique;
    std::copy_if(providers.begin(), providers.end(), std::back_inserter(unique),
                 [&](const sp<MetaDataProvider>& provider) { return seen.insert(provider.get()).second; });
    return unique;
}

XMPMetaPtr TreeOf(const sp<MetaDataProvider>& provider) {
    return *MetaDataReadAccess(provider);
}

bool AddTo(TreeMerge& merge, const sp<MetaDataProvider>& provider) {
    const XMPMetaPtr tree = TreeOf(provider);
    try {
        if (tree) {
            merge.Add(tree.get());
        }
        return tree != nullptr;
    } catch (const XMPError&) {
        return false;
    }
}

bool MayWriteAll(const MetaDataProvider& provider, const std::vector<Path>& changes) {
    return std::all_of(changes.begin(), changes.end(),
                       [&](const Path& path) { return provider.QueryPathStatus(path, kPathWritable); });
}

WriteReport LeftOut(const MetaDataProvider& provider) {
    const auto status =
        IsXMPWritingDisabled() ? FileStatus::kFileStatus_WritingDisabled : FileStatus::kFileStatus_ReadOnly;
    return {true, {{FilePathOf(provider), status, {}}}};
}

}  // namespace

AggregateProvider::AggregateProvider() : mMerge(std::make_unique<Merge>()) {}

AggregateProvider::AggregateProvider(const PolyRange<sp<MetaDataProvider>>& providers) : AggregateProvider() {
    ResetProviders(providers);
}

AggregateProvider::~AggregateProvider() {
    ResetProxyProviders();
}

void AggregateProvider::AddProvider(const sp<MetaDataProvider>& provider, bool rebuild) {
    if (!AddProxyProvider(provider)) {
        return;
    }
    mProviders.push_back(provider);
    if (rebuild) {
        OnProxyMetaDataChange(nullptr);
    } else {
        RememberTree();
    }
}

/// What is edited from here on is edited in all providers, also when the tree is still the first one's own.
void AggregateProvider::RememberTree() {
    const XMPMetaPtr tree = MetaDataAccess();
    if (mProviders.size() > 1 && tree && tree != mMerge->mTree && CanHaveTrees()) {
        *mMerge = {tree, UnitsOf(tree.get())};
    }
}

void AggregateProvider::ResetProviders() {
    ResetProviders(Providers());
}

void AggregateProvider::ResetProviders(const PolyRange<sp<MetaDataProvider>>& providers) {
    const Providers released = std::exchange(mProviders, {});
    ResetProxyProviders();
    for (const sp<MetaDataProvider>& provider : providers) {
        if (AddProxyProvider(provider)) {
            mProviders.push_back(provider);
        }
    }
    OnProxyMetaDataChange(nullptr);
}

bool AggregateProvider::QueryPathStatus(const Path& path, PathStatus status) const {
    const Providers stayAlive = mProviders;
    return std::any_of(stayAlive.begin(), stayAlive.end(),
                       [&](const sp<MetaDataProvider>& provider) { return provider->QueryPathStatus(path, status); });
}

void AggregateProvider::GetAllPathsForDynamicSchema(const UTF8String& namespaceURI,
                                                    std::vector<sp<PropertyDefinition>>& properties) {
    properties.clear();
    std::unordered_set<UTF8String> met;
    for (const sp<MetaDataProvider>& provider : Providers(mProviders)) {
        const XMPMetaPtr tree = TreeOf(provider);
        if (!tree || namespaceURI.empty()) {
            continue;
        }
        for (const toolkit::Node& node : toolkit::Nodes(tree.get(), namespaceURI, {}, toolkit::Walk::kSubtree)) {
            if (node.mPath.empty() || !met.insert(node.mPath).second) {
                continue;
            }
            const UTF8String name = node.mPath.substr(node.mPath.find(':') + 1);
            const UTF16String label = zephcore::UTF8to16(name);
            properties.push_back(CreateNewProperty(kPrimitiveType_Text, name, label, label, {}, {}));
        }
    }
}

void AggregateProvider::OnProxyMetaDataChange(XMPMetaHandle /*changed*/) {
    *mMerge = {};
    if (mProviders.empty() || !CanHaveTrees()) {
        ResetMetaData(nullptr, true);
        return;
    }
    const Providers providers = Unique(mProviders);
    XMPMetaPtr tree;
    if (mProviders.size() == 1) {
        tree = TreeOf(providers.front());
    } else {
        TreeMerge merge;
        if (std::count_if(providers.begin(), providers.end(), [&](const auto& one) { return AddTo(merge, one); }) > 0) {
            tree = merge.MergedTree();
            *mMerge = {tree, merge.Units()};
        }
    }
    for (const sp<MetaDataProvider>& provider : tree ? providers : Providers()) {
        if (const XMPMetaPtr own = TreeOf(provider)) {
            GetAllDynamicSchemas(own.get());
        }
    }
    ResetMetaData(tree.get(), true);
}

void AggregateProvider::WriteChanges(const std::vector<Path>& changes) {
    if (mProviders.size() != 1) {
        WriteMerged(changes);
        return;
    }
    MetaDataUpdateAccess access(mProviders.front());
    for (const Path& path : changes) {
        access.AddChange(path);
    }
    ReportWriting(access.Commit());
}

void AggregateProvider::WriteMerged(const std::vector<Path>& changes) {
    std::vector<Path> shared;
    std::copy_if(changes.begin(), changes.end(), std::back_inserter(shared),
                 [](const Path& path) { return !IsInstanceData(path); });
    const XMPMetaPtr tree = MetaDataAccess();
    if (!tree || tree != mMerge->mTree) {
        return;
    }
    Providers writable = Unique(mProviders);
    std::erase_if(writable, [&](const sp<MetaDataProvider>& provider) {
        const bool isLeftOut = !MayWriteAll(*provider, shared);
        if (isLeftOut) {
            ReportWriting(LeftOut(*provider));
        }
        return isLeftOut;
    });
    const MergedEdits edits(tree.get(), mMerge->mUnits, shared);
    std::unordered_set<XMPMetaHandle> edited;  // providers may share a tree
    for (const sp<MetaDataProvider>& provider : writable) {
        try {
            MetaDataUpdateAccess access(provider);
            const bool isOwnTree = *access == tree;  // of the only provider that there was, edited already
            if (*access != nullptr && !isOwnTree && edited.insert(*access).second) {
                edits.ApplyTo(*access);
            }
            for (const Path& path : isOwnTree ? changes : shared) {
                access.AddChange(path);
            }
            ReportWriting(access.Commit());
        } catch (...) {
            // A provider that cannot even hand out its tree keeps the edit from no other.
            ReportWriting({true, {{FilePathOf(*provider), FileStatus::kFileStatus_NotWritten, {}}}});
        }
    }
    if (tree == mMerge->mTree) {  // no source was replaced meanwhile
        edits.Settle(mMerge->mUnits);
    }
}

}  // namespace zephmetadata
