#include "frame/switches.h"

#include <optional>

#include "frame/callback_list.h"
#include "zephcore/environment.h"
#include "zephmetadata/library.h"

namespace zephmetadata {

namespace {

constexpr const char* kForceWritableKey = "ForceMetadataWritable";

struct Switches {
    bool mXMPWritingDisabled = false;
    std::optional<CallbackList<>> mCallbacks;
};

Switches& State() {
    static Switches switches;
    return switches;
}

}  // namespace

void DisableXMPWriting(bool disabled) {
    if (State().mXMPWritingDisabled == disabled) {
        return;
    }
    State().mXMPWritingDisabled = disabled;
    if (State().mCallbacks) {
        State().mCallbacks->Call();
    }
}

bool IsXMPWritingDisabled() {
    return State().mXMPWritingDisabled;
}

void NotifyWhenXMPWritingChanged(const XMPWritingCallback& callback) {
    if (State().mCallbacks) {
        State().mCallbacks->Add(callback);
    }
}

void ForcedAllMetadataWritable(bool forced) {
    using zephcore::DebugDatabase;
    DebugDatabase::Instance().SetEntry(kForceWritableKey,
                                       UTF8String(forced ? DebugDatabase::kTrue : DebugDatabase::kFalse));
}

bool IsAllMetadataForcedWritable() {
    using zephcore::DebugDatabase;
    return DebugDatabase::Instance().GetEntry(kForceWritableKey, "") == DebugDatabase::kTrue;
}

void CreateXMPWritingCallbacks() {
    State().mCallbacks.emplace();
}

void DestroyXMPWritingCallbacks() {
    State().mCallbacks.reset();
}

void PruneXMPWritingCallbacks() {
    if (State().mCallbacks) {
        State().mCallbacks->Purge();
    }
}

}  // namespace zephmetadata
