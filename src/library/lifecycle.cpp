#include "definitions/loading.h"
#include "frame/errors.h"
#include "frame/initialization.h"
#include "frame/switches.h"
#include "frame/toolkit/toolkit.h"
#include "values/constructed_values.h"
#include "zephcore/localizer.h"
#include "zephmetadata/library.h"

namespace zephmetadata {

void Initialize() {
    if (++InitializationCount() != 1) {
        return;
    }
    toolkit::Start();
    LoadBuiltInAndCustomDefinitions();
    FillConstructedValues();
    CreateXMPWritingCallbacks();
    CreateErrorCallbacks();
}

void Terminate() {
    if (InitializationCount() == 0) {
        return;
    }
    if (--InitializationCount() != 0) {
        PruneXMPWritingCallbacks();
        PruneErrorCallbacks();
        return;
    }
    DestroyXMPWritingCallbacks();
    DestroyErrorCallbacks();
    ClearErrors();
    ClearConstructedValues();
    ClearDefinitions();
    zephcore::Localizer::Get().Clear();
    toolkit::Stop();
}

}  // namespace zephmetadata
