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

template <typename Provider>
const FileReport* LastWriteOf(const MetaDataProvider& provider) {
    const auto* const file = dynamic_cast<const Provider*>(&provider);
    return file == nullptr ? nullptr : &file->LastWrite();
}

void TellOfWriting(const MetaDataProvider& provider, EditReport& report) {
    for (const auto& lastWrite : {LastWriteOf<MediaProvider>, LastWriteOf<FileProvider>, LastWriteOf<SidecarProvider>,
                                  LastWriteOf<SourceProvider>}) {
        if (const FileReport* const written = lastWrite(provider)) {
            report.mStatus = written->mStatus;
            report.mDetail = written->mDetail;
        }
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
    EditReport report;
    {
        MetaDataUpdateAccess access(provider);
        report = ApplyEdits(*access, edits);
        for (std::size_t i = 0; i < edits.size(); ++i) {
            if (report.IsChanged() && report.mOutcomes[i].mResult == EditResult::kEditResult_Changed) {
                access.AddChange(edits[i].mPath);
            }
        }
    }
    if (report.IsChanged()) {
        TellOfWriting(*provider, report);
    }
    return report;
}

}  // namespace zephmetadata
