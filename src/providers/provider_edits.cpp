#include <utility>

#include "zephmetadata/edits.h"
#include "zephmetadata/providers.h"
#include "zephmetadata/source_provider.h"
#include "zephmetadata/xmp_meta.h"

namespace zephmetadata {

namespace {

/// Gives a file its first metadata; false for any other provider and where that cannot be.
bool Start(MetaDataProvider& provider) {
    if (auto* const media = dynamic_cast<MediaProvider*>(&provider)) {
        return media->StartMetaData();
    }
    if (auto* const source = dynamic_cast<SourceProvider*>(&provider)) {
        return source->StartMetaData();
    }
    auto* const file = dynamic_cast<FileProvider*>(&provider);
    return file != nullptr && file->StartMetaData();
}

void TellOfWriting(WriteReport written, EditReport& report) {
    report.mFailures = std::move(written.mFailures);
    if (report.mFailures.empty() && report.IsChanged() && !written.mHadChanges) {
        report.mStatus = FileStatus::kFileStatus_NotWritten;
    } else if (!report.mFailures.empty()) {
        report.mStatus = report.mFailures.front().mStatus;
        report.mDetail = report.mFailures.front().mDetail;
    }
}

/// Whether the provider has a tree, or gets one because the edits would put something into it.
bool HasTree(const sp<MetaDataProvider>& provider, const std::vector<ValueEdit>& edits) {
    if (*MetaDataReadAccess(provider) != nullptr) {
        return true;
    }
    const XMPMetaPtr empty = CreateXMPMeta();
    return empty && RehearseEdits(empty.get(), edits).IsChanged() && Start(*provider);
}

}  // namespace

EditReport ApplyEdits(const sp<MetaDataProvider>& provider, const std::vector<ValueEdit>& edits) {
    if (!provider || !HasTree(provider, edits)) {
        EditReport report = RehearseEdits(CreateXMPMeta().get(), edits);
        return report.IsChanged() ? ApplyEdits(XMPMetaHandle(nullptr), edits) : report;
    }
    MetaDataUpdateAccess access(provider);
    EditReport report = ApplyEdits(*access, edits);
    for (std::size_t i = 0; i < edits.size(); ++i) {
        if (report.IsChanged() && report.mOutcomes[i].mResult == EditResult::kEditResult_Changed) {
            access.AddChange(edits[i].mPath);
        }
    }
    TellOfWriting(access.Commit(), report);
    return report;
}

EditOutcome MetaDataUpdateAccess::Apply(const ValueEdit& edit) {
    return Recorded(edit.mPath, ApplyEdits(**this, {edit}).mOutcomes.front());
}

EditOutcome MetaDataUpdateAccess::Delete(const Path& path) {
    ValueEdit edit;
    edit.mKind = EditKind::kEditKind_Delete;
    edit.mPath = path;
    return Apply(edit);
}

}  // namespace zephmetadata
