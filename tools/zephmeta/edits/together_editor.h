#pragma once

#include <string>
#include <vector>

#include "edits/file_editor.h"

namespace zephmeta {

/// Carries edits out in several files as one, as an editor shows them: what they share changes in all, the rest stays each
/// file's own.
class TogetherEditor {
public:
    TogetherEditor(const WritingOptions& writing, const BatchOptions& batch, FileEditor::EditSource editsOf)
        : mWriting(writing), mBatch(batch), mEditor(writing, batch), mEditsOf(std::move(editsOf)) {}

    /// The exit status.
    int Edit(std::vector<MediaFile> files, Problems& problems) const;

private:
    bool CanStart(MediaFile& file, Problems& problems) const;
    std::string Backup(const std::vector<MediaFile>& files) const;
    zephmetadata::EditReport Write(const std::vector<MediaFile>& files,
                                   const zephmetadata::sp<zephmetadata::MetaDataProvider>& provider,
                                   const FileEdits& edits, std::vector<FileResult>& results) const;

    const WritingOptions& mWriting;
    const BatchOptions& mBatch;
    FileEditor mEditor;
    FileEditor::EditSource mEditsOf;
};

}  // namespace zephmeta
