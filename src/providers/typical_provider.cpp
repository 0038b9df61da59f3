#include "providers/tree_supply.h"
#include "xmp/tree/xmp_tree.h"
#include "zephmetadata/providers.h"

namespace zephmetadata {

TypicalProviderImpl::TypicalProviderImpl(XMPMetaHandle tree) : mTree(tree) {
    MetaDataChanged();
}

TypicalProviderImpl::~TypicalProviderImpl() = default;

XMPMetaHandle TypicalProviderImpl::MetaDataAccess() const {
    return mTree.get();
}

void TypicalProviderImpl::ResetMetaData(XMPMetaHandle tree, bool notify) {
    mTree = tree;
    if (notify) {
        MetaDataChanged();
    }
}

void TypicalProviderImpl::ResetToEmptyMetaData(bool notify) {
    ResetMetaData((CanHaveTrees() ? toolkit::NewTree() : nullptr).get(), notify);
}

}  // namespace zephmetadata
