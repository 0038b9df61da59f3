#pragma once

#include <string>
#include <vector>

#include "batch/batch.h"
#include "edits/edit_arguments.h"
#include "edits/file_editor.h"
#include "panel/sheet.h"
#include "zephmetadata/library.h"
#include "zephmetadata/values.h"

/// The commands. Each returns its exit status: 0 done, 1 something asked for could not be done (the rest was).
namespace zephmeta {

int Dump(const BatchOptions& options);

struct GetRequest {
    BatchOptions mBatch;
    std::vector<std::string> mArguments;  ///< files and paths as they stand on the command line
    bool mRaw = false;                    ///< stored texts instead of those that are shown
    bool mCSV = false;
    bool mTSV = false;
    bool mTogether = false;  ///< what all files share, as one answer
};
/// 2 when there is no path, or no file.
int Get(GetRequest request);

struct FindRequest {
    BatchOptions mBatch;
    /// A database that export made, to be asked instead of files; the condition may be the only name then.
    std::string mIndex;
    std::string mText;  ///< words to be found in its texts
};
/// Prints the names of the files. 2 when the request itself is wrong.
int Find(const FindRequest& request);

struct SetRequest {
    BatchOptions mBatch;
    std::vector<std::string> mArguments;  ///< files and assignments as they stand on the command line
    EditOptions mEdits;
    std::string mFrom;                    ///< a file to copy properties from
    std::vector<std::string> mFromPaths;  ///< which; empty: all but those that tell one file from another
    WritingOptions mWriting;
    bool mTogether = false;
};
/// 2 when the request itself is wrong (no file, nothing to set).
int Set(SetRequest request);

struct ExportRequest {
    BatchOptions mBatch;
    std::string mJson;  ///< the file to make, "-" for standard output; one of these
    std::string mCSV;
    std::string mSQLite;
    bool mUpdate = false;            ///< bring the database up to date instead of making it
    std::vector<std::string> mOnly;  ///< these columns; empty: all
};
/// 2 when it is not said what to make.
int Export(ExportRequest request);
/// The part of it that makes a database.
int ExportIndex(ExportRequest request, Problems& problems);

struct ImportRequest {
    BatchOptions mBatch;
    WritingOptions mWriting;
    std::string mTable;  ///< "-" for standard input
    bool mDeleteEmpty = false;
};
int Import(const ImportRequest& request);

struct ExtractRequest {
    BatchOptions mBatch;
    std::string mFolder;  ///< empty: beside each file
};
int ExtractPackets(const ExtractRequest& request);

struct UndoRequest {
    BatchOptions mBatch;  ///< its names, files and folders, limit what is done; without any it is all
    bool mDryRun = false;
};
/// Takes back what the last command wrote, or does it again when all of it is taken back.
int Undo(const UndoRequest& request);

/// What can be read and written of each format.
int ShowFormats(bool json);

int ShowSchemas(const std::string& prefix, bool json);
int ShowTypes(const std::string& id, bool json);

/// Findings about the packet, with @p native also about what stands in Exif and IPTC-IIM alone. 1 also when a file has
/// a finding of severity error.
int Validate(const BatchOptions& options, bool native);

struct ApplyRequest {
    BatchOptions mBatch;
    std::string mTemplate;
    zephmetadata::TemplateImportOptions mMode = zephmetadata::kTemplateImport_Add;
    bool mDryRun = false;
};
int Apply(const ApplyRequest& request);

/// 1 when a document has a problem. Starts and stops the library itself.
int CheckDocuments(const std::vector<std::string>& files, bool json);

struct SchemaRequest {
    std::string mFile;
    std::string mNamespace;
    std::string mPrefix;
    std::string mLabel;
    std::string mDescription;
};
int NewSchema(const SchemaRequest& request);

struct PropertyRequest {
    std::string mFile;
    std::string mName;
    std::string mPrefix;  ///< of the schema, where the document has several
    std::string mType = "text";
    std::string mElementType;
    std::string mLabel;
    std::string mDescription;
    std::string mPattern;
    std::string mMin;
    std::string mMax;
    std::vector<std::string> mChoices;  ///< VALUE or VALUE=LABEL
    bool mInternal = false;
};
int AddProperty(const PropertyRequest& request);
/// Prints a definitions document as it would be written.
int ShowSchemaDocument(const std::string& file);

/// Lists the extension packages with what each brought.
int ShowPackages(bool json);

struct PackageRequest {
    std::string mName;
    std::string mFolder;  ///< empty: the user's extensions folder
};
int NewPackage(const PackageRequest& request);

/// Prints the log. 1 when a panel could not be converted.
int ConvertPanels(zephmetadata::OrbVersion generation, bool json);

struct PanelRequest {
    std::vector<std::string> mFiles;
    SheetWish mWish;
};
int ShowPanel(const PanelRequest& request);
int ShowViews(const std::string& name, bool json);

}  // namespace zephmeta
