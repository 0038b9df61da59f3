#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "zephmetadata/types.h"

/// Start and stop of the library, the problems it met, its folders and its process-wide switches.
///
/// Threads: start, stop and switches while no other thread uses the library, errors from any thread (docs/threads.md).
namespace zephmetadata {

// Lifecycle.

/// Starts the library. Calls are counted: only the first does the work. It starts the XMP toolkit, registers the built-in
/// definitions and reads the custom definitions folders, the machine-wide one first. Problems in documents are collected
/// as errors and loading goes on.
///
/// Throws XMPError when the toolkit cannot be started; the call still counts.
ZEPHMETADATA_EXPORT void Initialize();

/// Undoes one Initialize. The last one empties every registry and the error list, releases all callbacks and stops the
/// toolkit. A call without a matching Initialize does nothing.
///
/// Definitions that the host still holds stay valid. Trees that it still holds may be released, nothing else.
ZEPHMETADATA_EXPORT void Terminate();

/// Initialize and Terminate as an object. When the toolkit cannot be started, nothing is thrown and everything answers
/// "nothing there".
class ZEPHMETADATA_EXPORT Library {
public:
    Library() noexcept;
    ~Library();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    /// Whether the library can be used.
    bool IsRunning() const noexcept { return mIsRunning; }

private:
    bool mIsRunning = false;
};

/// The version texts of the two components of the XMP toolkit. They may be asked for at any time.
ZEPHMETADATA_EXPORT UTF8String GetXMPCoreVersion();
ZEPHMETADATA_EXPORT UTF8String GetXMPFilesVersion();

/// The version of this library, for example "0.2.0".
ZEPHMETADATA_EXPORT UTF8String GetLibraryVersion();

// Errors: what went wrong in documents, definitions, packages and values.

/// The activity in which an error arose.
enum ErrorKind : std::int32_t {
    DefinitionParsingError = 0,
    DefinitionRegistrationError = 1,
    ErrorReadingXMP = 2,
    ErrorWritingXMP = 3,
    ViewDefinitionParsingError = 4,
    ViewDefinitionRegistrationError = 5,
    GenericPanelManifestError = 6,
    ExtensionManifestParsingError = 7,
    ExtensionPackageRegistrationError = 8,
};

struct ErrorInfo {
    ErrorKind kind = ErrorKind::DefinitionParsingError;
    /// The full text, localised. Escapes stay as written; zephcore::ResolveDisplayEscapes turns `#{quot}` into a quote.
    UTF16String message;
    /// The full path of the document concerned, or its resource name; empty when there is none.
    UTF16String context;
    /// The line of that document, counted from 1; 0 where it is not known.
    std::size_t line = 0;
};

/// The error as a line for people, in UTF-8 and without escapes: the place, as "FILE:LINE", as far as it is known, and the
/// message, which begins with what was being done. Any thread may call this.
ZEPHMETADATA_EXPORT UTF8String Describe(const ErrorInfo& error);

/// How many errors are kept; beyond that the oldest go.
inline constexpr std::size_t kMaxErrorInfos = 20000;

/// The errors since the last final Terminate or ClearErrors, in the order of reporting. Any thread may call this.
/// Of the reading and of the registering of one document there are at most 10,000, the last of which says that there are
/// more; a message has some 4,000 characters at most.
ZEPHMETADATA_EXPORT std::vector<ErrorInfo> GetErrorInfos();
/// Whether there is any error. Any thread may call this.
ZEPHMETADATA_EXPORT bool HasErrors();
/// How many were reported in that time, those that are no longer kept included. Any thread may call this.
ZEPHMETADATA_EXPORT std::size_t CountErrors();
/// Forgets all of them. Any thread may call this.
ZEPHMETADATA_EXPORT void ClearErrors();

/// Takes the errors that its thread reports while it lives, so that a host knows which ones belong to what it just did.
/// They do not get into GetErrorInfos; callbacks are called as ever. Scopes may be nested: the innermost one takes them. To
/// be destroyed by the thread that made it, the innermost first.
class ZEPHMETADATA_EXPORT ErrorScope {
public:
    ErrorScope() noexcept;
    ~ErrorScope();
    ErrorScope(const ErrorScope&) = delete;
    ErrorScope& operator=(const ErrorScope&) = delete;

    const std::vector<ErrorInfo>& Errors() const { return mErrors; }
    /// Hands the errors over, and has none afterwards.
    std::vector<ErrorInfo> Take() { return std::exchange(mErrors, {}); }

private:
    friend class ErrorReporter;

    ErrorScope* mOuter;
    std::vector<ErrorInfo> mErrors;
};

using ErrorCallback = sp<std::function<void(UTF16String)>>;

/// Has @p callback called with the full text of every error reported from now on, on the reporting thread, with no lock
/// held; by several threads at once when these report. Any thread may call this. The library shares its ownership until the final Terminate. To be called no more, empty the function object;
/// it is dropped at the next registration. An exception that it throws is discarded, and with it the calls of the
/// callbacks after it. Ignored while the library is not initialised.
ZEPHMETADATA_EXPORT void NotifyOnError(const ErrorCallback& callback);

// Folders. The full path of each; only the extension folders are created when they are missing.

/// The generation of older custom panels.
enum OrbVersion : std::int32_t { kOrbVersion_4_0 = 0, kOrbVersion_3_0 = 1, kOrbVersion_2_0 = 2 };

ZEPHMETADATA_EXPORT UTF16String CustomDefinitionsGlobalDirectory();
ZEPHMETADATA_EXPORT UTF16String CustomDefinitionsUserDirectory();
ZEPHMETADATA_EXPORT UTF16String CustomExtensionsGlobalDirectory();
ZEPHMETADATA_EXPORT UTF16String CustomExtensionsUserDirectory();
ZEPHMETADATA_EXPORT UTF16String PanelsDefinitionsGlobalDirectory(OrbVersion version);
ZEPHMETADATA_EXPORT UTF16String PanelsDefinitionsUserDirectory(OrbVersion version);
ZEPHMETADATA_EXPORT UTF16String XMPFilesPluginsDirectory();

// Switches.

/// Stops (true) or allows again (false) all writing of XMP back into files. Kept across Terminate.
ZEPHMETADATA_EXPORT void DisableXMPWriting(bool disabled);
ZEPHMETADATA_EXPORT bool IsXMPWritingDisabled();

using XMPWritingCallback = sp<std::function<void()>>;

/// Has @p callback called after every real change of that switch; otherwise as NotifyOnError.
ZEPHMETADATA_EXPORT void NotifyWhenXMPWritingChanged(const XMPWritingCallback& callback);

/// A debugging aid, kept in the user's settings: text reads then skip display formatting.
ZEPHMETADATA_EXPORT void ForcedAllMetadataWritable(bool forced);
ZEPHMETADATA_EXPORT bool IsAllMetadataForcedWritable();

}  // namespace zephmetadata
