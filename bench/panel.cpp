// Building every built-in view over a photo that has been read, against reading the photo.
#include "panel/panel_model.h"
#include "ratio.h"
#include "zephmetadata/zephmetadata.h"

namespace {

zephmetadata::UTF16String Photo() {
    return zephcore::PathFromNative(ZEPHMETADATA_SOURCE_DIR "/tests/data/harbour.jpg");
}

void BuildAllPanels() {
    static const auto provider = std::make_shared<zephmetadata::FileProvider>(Photo());
    int shown = 0;
    for (const auto& view : zephmetadata::CommonViewDefinitions()) {
        shown += zephmeta::BuildPanel(view, provider, zephmeta::Detail::kValues).HasValue() ? 1 : 0;
    }
    bench::Require(shown > 4, "building the panels");
}

void ReadPhoto() {
    const auto provider = std::make_shared<zephmetadata::FileProvider>(Photo());
    bench::Require(*zephmetadata::MetaDataReadAccess(provider) != nullptr, "reading the photo");
}

}  // namespace

bench::Comparison bench::MakeComparison() {
    zephmetadata::Initialize();
    zephmetadata::LoadAllViewDefinitions();
    return {"panels", BuildAllPanels, ReadPhoto, 1};
}
