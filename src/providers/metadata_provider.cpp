#include <algorithm>

#include "frame/callback_list.h"
#include "xmp/dates/xmp_history.h"
#include "zephmetadata/library.h"
#include "zephmetadata/providers.h"

namespace zephmetadata {

struct MetaDataProvider::State {
    bool mInWrite = false;  // true only while the provider's own WriteChanges runs
    std::vector<sp<SchemaDefinition>> mDynamicSchemas;
    std::set<UTF8String> mDynamicNamespaces;
    CallbackList<XMPMetaHandle> mCallbacks;
    CallbackList<XMPMetaHandle> mWriteCallbacks;
};

MetaDataProvider::MetaDataProvider() : mState(std::make_unique<State>()) {}

MetaDataProvider::~MetaDataProvider() {
    mState->mCallbacks.EmptyAll();
    mState->mWriteCallbacks.EmptyAll();
}

bool MetaDataProvider::QueryPathStatus(const Path& /*path*/, PathStatus status) const {
    return status != PathStatus::kPathWritable || !IsXMPWritingDisabled();
}

bool MetaDataProvider::WritesOwnChangeList() {
    return false;
}

void MetaDataProvider::GetAllPathsForDynamicSchema(const UTF8String& /*namespaceURI*/,
                                                   std::vector<sp<PropertyDefinition>>& /*properties*/) {}

std::string MetaDataProvider::DebugSerializedXMP() const {
    return {};
}

std::string MetaDataProvider::DebugDescription(bool /*verbose*/, int /*indent*/) const {
    return {};
}

void MetaDataProvider::NotifyWhenMetaDataChanged(const MetaDataCallback& callback) {
    mState->mCallbacks.Add(callback);
}

void MetaDataProvider::RemoveMetaDataChangedNotification(const MetaDataCallback& callback) {
    mState->mCallbacks.Remove(callback);
}

void MetaDataProvider::NotifyWhenMetaDataWritten(const MetaDataCallback& callback) {
    mState->mWriteCallbacks.Add(callback);
}

void MetaDataProvider::RemoveMetaDataWrittenNotification(const MetaDataCallback& callback) {
    mState->mWriteCallbacks.Remove(callback);
}

void MetaDataProvider::AddDynamicSchemaDefinition(sp<SchemaDefinition> schema) {
    if (!schema) {
        return;
    }
    if (mState->mDynamicNamespaces.insert(schema->mNamespace).second) {
        mState->mDynamicSchemas.push_back(schema);
    }
    if (!NamespaceDefinition(schema->mNamespace)) {
        RegisterSchemaDefinition(schema, {}, false);
    }
}

bool MetaDataProvider::DoesDynamicNamespaceExist(const UTF8String& namespaceURI) {
    return mState->mDynamicNamespaces.contains(namespaceURI);
}

PolyRange<sp<SchemaDefinition>> MetaDataProvider::DynamicSchemaDefinitions() {
    return mState->mDynamicSchemas;
}

void MetaDataProvider::MetaDataChanged() {
    if (mState->mInWrite) {
        return;
    }
    const XMPMetaPtr staysAliveForThePass = MetaDataAccess();
    mState->mCallbacks.Call(staysAliveForThePass.get());
}

bool MetaDataProvider::IsInWrite() const {
    return mState->mInWrite;
}

void MetaDataProvider::GuardedWriteChanges(const std::vector<Path>& changes) {
    struct InWrite {
        explicit InWrite(bool& flag) : mFlag(flag) { mFlag = true; }
        ~InWrite() { mFlag = false; }
        InWrite(const InWrite&) = delete;
        InWrite& operator=(const InWrite&) = delete;
        bool& mFlag;
    };
    const InWrite inWrite(mState->mInWrite);
    WriteChanges(changes);
}

namespace {

/// The part of the document that a changed path belongs to, as document history names it.
UTF8String HistoryPart(const Path& path) {
    const sp<SchemaDefinition> schema = NamespaceDefinition(path.mNamespace);
    return schema ? "/metadata/" + schema->mPrefix + "/" + path.mPathDescription : "/metadata";
}

void RecordHistory(XMPMetaHandle tree, const std::vector<Path>& changes) {
    toolkit::TXMPDocOps history;
    history.OpenXMP(tree);
    for (const Path& path : changes) {
        history.NoteChange(HistoryPart(path));
    }
    history.PrepareForSave();
}

}  // namespace

void MetaDataProvider::DoWriteChanges(const std::vector<Path>& changes) {
    const XMPMetaPtr tree = MetaDataAccess();
    if (!tree || changes.empty() || IsInWrite()) {
        return;
    }
    if (!WritesOwnChangeList()) {
        RecordHistory(tree.get(), changes);
    }
    GuardedWriteChanges(changes);
}

void MetaDataProvider::WriteBack(const std::vector<Path>& changes) {
    const bool isWrite = MetaDataAccess() != nullptr && !changes.empty() && !IsInWrite();
    try {
        DoWriteChanges(changes);
    } catch (...) {
        // Nobody is there to be told; providers that can fail say so themselves, as FileProvider::LastWrite does.
    }
    if (isWrite) {
        const XMPMetaPtr staysAliveForThePass = MetaDataAccess();
        mState->mWriteCallbacks.Call(staysAliveForThePass.get());
    }
}

MetaDataReadAccess::MetaDataReadAccess(const sp<MetaDataProvider>& provider)
    : mTree(provider ? provider->MetaDataAccess() : nullptr) {}

MetaDataReadAccess::~MetaDataReadAccess() = default;

MetaDataUpdateAccess::MetaDataUpdateAccess(const sp<MetaDataProvider>& provider)
    : MetaDataReadAccess(provider), mProvider(provider) {}

MetaDataUpdateAccess::~MetaDataUpdateAccess() {
    if (!mProvider) {
        return;
    }
    try {
        mProvider->WriteBack(mChanges);
    } catch (...) {
        // A callback's, or one of a provider that cannot even hand out its tree: a destructor has nobody to tell.
    }
}

void MetaDataUpdateAccess::AddChange(const Path& path) {
    mChanges.push_back(path);
}

bool MetaDataUpdateAccess::HasChanges() const {
    return !mChanges.empty();
}

}  // namespace zephmetadata
