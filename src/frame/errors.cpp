#include "frame/errors.h"

#include <array>
#include <mutex>
#include <optional>

#include "frame/callback_list.h"
#include "zephcore/localizer.h"
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
    std::mutex mMutex;  // guards mInfos alone
    std::vector<ErrorInfo> mInfos;
    std::optional<CallbackList<UTF16String>> mCallbacks;
};

Errors& State() {
    static Errors errors;
    return errors;
}

UTF16String FullMessage(ErrorKind kind, const UTF16String& detail) {
    const auto index = static_cast<std::size_t>(kind);
    const std::u16string_view prefix = index < kPrefixes.size() ? kPrefixes[index] : u"@0";
    return zephcore::ReplaceInString(zephcore::Localizer::Get().Translate(prefix), {detail});
}

}  // namespace

void SendError(ErrorKind kind, const UTF16String& detail, const UTF16String& context) {
    const UTF16String message = FullMessage(kind, detail);
    {
        const std::lock_guard lock(State().mMutex);
        State().mInfos.push_back({kind, message, context, zephcore::CurrentDocumentLine()});
    }
    if (State().mCallbacks) {
        State().mCallbacks->CallAll(message);
    }
}

std::vector<ErrorInfo> GetErrorInfos() {
    const std::lock_guard lock(State().mMutex);
    return State().mInfos;
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
}

}  // namespace zephmetadata
