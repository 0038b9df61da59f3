#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "zephmetadata/types.h"

/// What "zephmeta check" does with a document of each kind.
namespace zephmeta {

struct DocumentProblem {
    std::size_t mLine = 0;  ///< 0 where it is not known
    std::string mMessage;
};
using DocumentProblems = std::vector<DocumentProblem>;

/// The first element of a document, which may be broken further on.
struct RootElement {
    std::string mName;  ///< without its prefix
    std::string mNamespace;
};
RootElement RootOf(const std::string& bytes);

/// The check of one document by a library that has just been started.
class DocumentCheck {
public:
    DocumentCheck(const std::string& file, const std::string& text);

    const std::string& File() const { return mFile; }
    zephmetadata::UTF16String Path() const;
    const std::string& Text() const { return mText; }

    /// The library is about to read the document: what it has reported so far is about others.
    void Begin();
    void Report(const std::string& message, std::size_t line = 0) { mOwn.push_back({line, message}); }

    /// What was reported and what the library has said since Begin, in the order of the lines.
    DocumentProblems Problems() const;

private:
    const std::string& mFile;
    const std::string& mText;
    std::size_t mBefore = 0;
    DocumentProblems mOwn;
};

/// Each has the library read the document as it would when it is installed; one in the "schema" or "view" folder of an
/// extension package as a part of that package.
void CheckDefinitions(DocumentCheck& check);
void CheckViews(DocumentCheck& check);
void CheckPaths(DocumentCheck& check);
void CheckExtensionManifest(DocumentCheck& check);
void CheckPanelManifest(DocumentCheck& check);

}  // namespace zephmeta
