#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

#include "definitions/registry.h"
#include "frame/callback_list.h"
#include "providers/write_reports.h"
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
    // Of the write-back that runs.
    std::optional<WriteFailure> mFailure;
    std::vector<WriteFailure> mInnerFailures;
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
    RegisterFoundSchema(schema);
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

void MetaDataProvider::ReportWriting(const UTF16String& path, const FileReport& report) {
    const bool isFailure = report.mStatus != FileStatus::kFileStatus_Success;
    mState->mFailure = isFailure ? std::optional(WriteFailure{path, report.mStatus, report.mDetail}) : std::nullopt;
}

void MetaDataProvider::ReportWriting(WriteReport written) {
    std::move(written.mFailures.begin(), written.mFailures.end(), std::back_inserter(mState->mInnerFailures));
}

/// What was reported since the last call.
WriteReport MetaDataProvider::TakeReport() {
    WriteReport report{true, std::exchange(mState->mInnerFailures, {})};
    if (std::optional<WriteFailure> failure = std::exchange(mState->mFailure, std::nullopt)) {
        report.mFailures.push_back(*std::move(failure));
    }
    return report;
}

void MetaDataProvider::CallWriteCallbacks() {
    try {
        const XMPMetaPtr staysAliveForThePass = MetaDataAccess();
        mState->mWriteCallbacks.Call(staysAliveForThePass.get());
    } catch (...) {
        // The write is done, whatever a listener makes of the news.
    }
}

WriteReport MetaDataProvider::WriteBack(const std::vector<Path>& changes) {
    const bool hasTree = MetaDataAccess() != nullptr;
    const bool isWrite = hasTree && !changes.empty() && !IsInWrite();
    if (!changes.empty() && IsInWrite()) {
        // The write that runs takes its report for itself.
        return {true, {{FilePathOf(*this), FileStatus::kFileStatus_NotWritten, "it is being written"}}};
    }
    try {
        DoWriteChanges(changes);
    } catch (const std::bad_alloc&) {
        ReportWriting(FilePathOf(*this), {FileStatus::kFileStatus_NotWritten, "out of memory"});
    } catch (const std::exception& error) {
        ReportWriting(FilePathOf(*this), {FileStatus::kFileStatus_NotWritten, error.what()});
    } catch (...) {
        ReportWriting(FilePathOf(*this), {FileStatus::kFileStatus_NotWritten, {}});
    }
    if (!hasTree && !changes.empty()) {
        ReportWriting(FilePathOf(*this), WhyWithoutTree(*this));
    }
    WriteReport report = changes.empty() ? WriteReport() : TakeReport();
    if (isWrite) {
        CallWriteCallbacks();
    }
    return report;
}

MetaDataReadAccess::MetaDataReadAccess(const sp<MetaDataProvider>& provider)
    : mTree(provider ? provider->MetaDataAccess() : nullptr) {}

MetaDataReadAccess::~MetaDataReadAccess() = default;

MetaDataUpdateAccess::MetaDataUpdateAccess(const sp<MetaDataProvider>& provider)
    : MetaDataReadAccess(provider), mProvider(provider) {}

MetaDataUpdateAccess::~MetaDataUpdateAccess() {
    if (!mIsCommitted || HasChanges()) {
        Commit();
    }
}

WriteReport MetaDataUpdateAccess::Commit() noexcept {
    const std::vector<Path> changes = std::exchange(mChanges, {});
    mIsCommitted = true;
    WriteReport report{!changes.empty(), {}};
    try {
        // Made before it is needed, when there may be no memory for it.
        report.mFailures.resize(changes.empty() ? 0 : 1);
        if (mProvider) {
            return mProvider->WriteBack(changes);
        }
        for (WriteFailure& failure : report.mFailures) {
            failure.mStatus = FileStatus::kFileStatus_NoXMP;
        }
    } catch (...) {
        // Of a provider that cannot even hand out its tree. Without the memory for a failure nothing counts as written.
        report.mHadChanges = !report.mFailures.empty();
    }
    return report;
}

EditOutcome MetaDataUpdateAccess::Recorded(const Path& path, EditOutcome outcome) {
    if (outcome.mResult == EditResult::kEditResult_Changed) {
        AddChange(path);
    }
    return outcome;
}

void MetaDataUpdateAccess::AddChange(const Path& path) {
    mChanges.push_back(path);
}

bool MetaDataUpdateAccess::HasChanges() const {
    return !mChanges.empty();
}

}  // namespace zephmetadata
