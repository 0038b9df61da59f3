#include <utility>

#include "definitions/loading.h"
#include "extensions/bundled_packages.h"
#include "extensions/packages.h"
#include "frame/errors.h"
#include "frame/initialization.h"
#include "frame/switches.h"
#include "frame/translations.h"
#include "values/constructed_values.h"
#include "values/formatting/formatting.h"
#include "views/view_registry.h"
#include "xmp/core/toolkit.h"
#include "zephcore/localizer.h"
#include "zephmetadata/library.h"

namespace zephmetadata {

namespace {

bool viewsAreLoaded = false;

}  // namespace

void Initialize() {
    if (++InitializationCount() != 1) {
        return;
    }
    toolkit::Start();
    LoadBuiltInTranslations();
    LoadBuiltInAndCustomDefinitions();
    FillSpecialFormatters();
    FillConstructedValues();
    CreateXMPWritingCallbacks();
    CreateErrorCallbacks();
}

Library::Library() noexcept {
    try {
        Initialize();
        mIsRunning = toolkit::IsRunning();
    } catch (...) {
        mIsRunning = false;
    }
}

Library::~Library() {
    Terminate();
}

void LoadAllViewDefinitions() {
    if (!IsInitialized() || std::exchange(viewsAreLoaded, true)) {
        return;
    }
    LoadBuiltInViews();
    LoadExtensionPackages({});
}

void RegisterBundledPackages() {
    if (!IsInitialized()) {
        return;
    }
    if (std::exchange(viewsAreLoaded, true)) {
        AddBundledPackages(BundledPackages());
        return;
    }
    LoadBuiltInViews();
    LoadExtensionPackages(BundledPackages());
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
    ClearExtensionPackages();
    ClearErrors();
    ClearSpecialFormatters();
    ClearViewDefinitions();
    viewsAreLoaded = false;
    ClearConstructedValues();
    ClearDefinitions();
    zephcore::Localizer::Get().Clear();
    toolkit::Stop();
}

}  // namespace zephmetadata
