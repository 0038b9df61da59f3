#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "batch/batch.h"
#include "edits/changes.h"
#include "edits/edit_arguments.h"
#include "media_file.h"
#include "undo/journal.h"

namespace zephmeta {

/// How files are written, for every command that changes values.
struct WritingOptions {
    std::string mBackup;  ///< the suffix of backups; empty: none are made
    bool mKeepTime = false;
    bool mDryRun = false;
};

/// Carries edits out in one file after the other, and tells what became of each. May be used by several threads at once.
class FileEditor {
public:
    /// The edits for a file that holds a tree, which may be null. Asked again when another program changed the file meanwhile.
    using EditSource = std::function<FileEdits(zephmetadata::XMPMetaHandle tree)>;

    FileEditor(const WritingOptions& writing, const BatchOptions& batch) : mWriting(writing), mBatch(batch) {}

    void Edit(MediaFile& file, const EditSource& editsOf, FileResult& result) const;

    /// Keeps the file as it is under a name with the suffix, unless that is there already. Why not; empty when it is there, or
    /// not wanted.
    std::string Backup(const std::string& name) const;

    /// What is said of a file of which the values at some expressions changed.
    void Print(const MediaFile& file, const std::vector<std::string>& changed, const std::vector<Change>& changes,
               FileResult& result) const;

    /// Where what was written is kept, so that it can be taken back.
    Journal& Kept() const { return *mJournal; }

private:
    bool EditOnce(MediaFile& file, const EditSource& editsOf, bool mayTryAgain, FileResult& result) const;
    void Rehearse(const MediaFile& file, const FileEdits& edits, FileResult& result) const;
    bool Write(MediaFile& file, const FileEdits& edits, bool mayTryAgain, FileResult& result) const;
    void MakeSidecar(const MediaFile& file, const FileEdits& edits, FileResult& result) const;

    const WritingOptions& mWriting;
    const BatchOptions& mBatch;
    std::unique_ptr<Journal> mJournal = std::make_unique<Journal>();
};

/// Behind the reason of a refusal.
constexpr const char* kNothingWritten = "; nothing was written";

/// The first refusal of a report that has some, in words.
std::string WhyRefused(const FileEdits& edits, const zephmetadata::EditReport& report);
/// What was changed, each once.
std::vector<std::string> ChangedOf(const FileEdits& edits, const zephmetadata::EditReport& report);
/// Why a file without XMP cannot be given any.
std::string WhyNoFirst(const MediaFile& file);

}  // namespace zephmeta
