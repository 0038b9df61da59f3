#pragma once

#include <string>
#include <vector>

#include "zephmetadata/library.h"
#include "zephmetadata/values.h"

/// The commands. Each returns its exit status: 0 done, 1 something asked for could not be done (the rest was).
namespace zephmeta {

int Dump(const std::vector<std::string>& files, bool json);

/// Files, then paths. 2 when there is no path.
int Get(const std::vector<std::string>& arguments, bool raw, bool json);

struct SetRequest {
    std::vector<std::string> mArguments;  ///< files and assignments as they stand on the command line
    std::vector<std::string> mAdditions;
    std::vector<std::string> mDeletions;
};
/// 2 when the request itself is wrong (no file, nothing to set).
int Set(const SetRequest& request, bool json);

/// What can be read and written of each format.
int ShowFormats(bool json);

int ShowSchemas(const std::string& prefix, bool json);
int ShowTypes(const std::string& id, bool json);

struct PanelRequest {
    std::vector<std::string> mFiles;  ///< several are shown as one
    std::string mView = "basic";      ///< the name of a view, or the end of one of the library's own
    bool mAll = false;                ///< every view instead
    std::string mFormat = "text";
};
/// 1 also when a file has a finding of severity error.
int Validate(const std::vector<std::string>& files, bool json);

struct ApplyRequest {
    std::string mTemplate;
    std::vector<std::string> mFiles;
    zephmetadata::TemplateImportOptions mMode = zephmetadata::kTemplateImport_Add;
    bool mDryRun = false;
};
int Apply(const ApplyRequest& request, bool json);

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

int ShowPanel(const PanelRequest& request);
int ShowViews(const std::string& name, bool json);

}  // namespace zephmeta
