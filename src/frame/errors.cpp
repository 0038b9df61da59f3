#include "frame/errors.h"

#include <array>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

#include "frame/callback_list.h"
#include "zephcore/files.h"
#include "zephcore/localizer.h"
#include "zephcore/text.h"
#include "zephcore/xml.h"

namespace zephmetadata {

namespace {

/// The prefix of each kind, in the order of the enumeration; @0 is the detail message.
constexpr std::array<std::u16string_view, 9> kPrefixes = {
    u"$$$/zephmetadata/DefinitionParsingError=Error parsing definitions file: @0",
    u"$$$/zephmetadata/DefinitionRegistrationError=Error registering definition: @0",
    u"$$$/zephmetadata/ErrorReadingXMP=Error reading XMP data: @0",
    u"$$$/zephmetadata/ErrorWritingXMP=Error writing XMP data: @0",
    u"$$$/zephmetadata/ViewDefinitionParsingError=Error parsing view definitions file: @0",
    u"$$$/zephmetadata/ViewDefinitionRegistrationError=Error registering view definition: @0",
    u"@0",
    u"$$$/zephmetadata/ExtensionManifestParsingError=Error parsing manifest file: @0",
    u"$$$/zephmetadata/ExtensionPackageRegistrationError=Error registering extension package: @0",
};

struct Errors {
    std::mutex mMutex;  // guards the next two
    std::deque<ErrorInfo> mInfos;
    std::size_t mReported = 0;
    std::optional<CallbackList<UTF16String>> mCallbacks;
};

Errors& State() {
    static Errors errors;
    return errors;
}

thread_local ErrorScope* innermostScope = nullptr;

constexpr std::u16string_view kMoreProblems =
    u"$$$/zephmetadata/MoreProblems=there are more problems, which are not listed.";

/// Far more than a message with some names in it; documents may have names of any length.
constexpr std::size_t kMostMessageUnits = 4096;

/// The innermost limit of this thread.
RecordLimit*& CurrentLimit() {
    thread_local RecordLimit* limit = nullptr;
    return limit;
}

UTF16String Shortened(const UTF16String& text) {
    if (text.size() <= kMostMessageUnits) {
        return text;
    }
    const bool splitsPair = (text[kMostMessageUnits - 1] & 0xFC00U) == 0xD800U;
    return text.substr(0, kMostMessageUnits - (splitsPair ? 1 : 0)) + u"\u2026";
}

UTF16String FullMessage(ErrorKind kind, const UTF16String& detail) {
    const auto index = static_cast<std::size_t>(kind);
    const std::u16string_view prefix = index < kPrefixes.size() ? kPrefixes[index] : u"@0";
    return zephcore::ReplaceInString(zephcore::Localizer::Get().Translate(prefix), {Shortened(detail)});
}

void Keep(ErrorInfo info) {
    const std::lock_guard lock(State().mMutex);
    if (State().mInfos.size() == kMaxErrorInfos) {
        State().mInfos.pop_front();
    }
    State().mInfos.push_back(std::move(info));
    ++State().mReported;
}

}  // namespace

/// Gets at the scopes.
class ErrorReporter {
public:
    /// False when no scope takes it.
    static bool ToScope(const ErrorInfo& info) {
        if (innermostScope != nullptr) {
            innermostScope->mErrors.push_back(info);
        }
        return innermostScope != nullptr;
    }
};

ErrorScope::ErrorScope() noexcept : mOuter(std::exchange(innermostScope, this)) {}

ErrorScope::~ErrorScope() {
    innermostScope = mOuter;
}

RecordLimit::RecordLimit() : mBefore(std::exchange(CurrentLimit(), this)) {}

RecordLimit::~RecordLimit() {
    CurrentLimit() = mBefore;
}

void SendError(ErrorKind kind, const UTF16String& detail, const UTF16String& context) {
    const std::size_t records = CurrentLimit() == nullptr ? 0 : CurrentLimit()->Count();
    if (records > RecordLimit::kMostRecords) {
        return;
    }
    const bool isLast = records == RecordLimit::kMostRecords;
    const UTF16String message = FullMessage(kind, isLast ? zephcore::ZString(kMoreProblems) : detail);
    ErrorInfo info{kind, message, context, zephcore::CurrentDocumentLine()};
    if (!ErrorReporter::ToScope(info)) {
        Keep(std::move(info));
    }
    if (State().mCallbacks) {
        State().mCallbacks->CallAll(message);
    }
}

UTF8String Describe(const ErrorInfo& error) {
    UTF8String message = zephcore::UTF16to8(zephcore::ResolveDisplayEscapes(error.message));
    if (error.context.empty()) {
        return message;
    }
    const UTF8String place = zephcore::PathToNative(error.context);
    return place + (error.line == 0 ? ": " : ":" + std::to_string(error.line) + ": ") + message;
}

std::vector<ErrorInfo> GetErrorInfos() {
    const std::lock_guard lock(State().mMutex);
    return {State().mInfos.begin(), State().mInfos.end()};
}

std::size_t CountErrors() {
    const std::lock_guard lock(State().mMutex);
    return State().mReported;
}

bool HasErrors() {
    const std::lock_guard lock(State().mMutex);
    return !State().mInfos.empty();
}

void NotifyOnError(const ErrorCallback& callback) {
    if (State().mCallbacks) {
        State().mCallbacks->Add(callback);
    }
}

void CreateErrorCallbacks() {
    State().mCallbacks.emplace();
}

void DestroyErrorCallbacks() {
    State().mCallbacks.reset();
}

void PruneErrorCallbacks() {
    if (State().mCallbacks) {
        State().mCallbacks->Purge();
    }
}

void ClearErrors() {
    const std::lock_guard lock(State().mMutex);
    State().mInfos.clear();
    State().mReported = 0;
}

}  // namespace zephmetadata
