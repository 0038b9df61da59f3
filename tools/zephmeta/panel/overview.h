#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "panel/panel_model.h"

namespace zephmeta {

/// The name by which people ask for the overview, which no registered view has.
inline constexpr const char* kOverview = "overview";
/// What every built-in view's name begins with; people leave it out.
inline constexpr std::string_view kOwnViews = "com.corvid.xmp.view.";

/// What order suits whom.
enum class MediaKind { kPicture, kFilm, kSound };

/// By what the metadata say of the format, else by the file's extension.
MediaKind MediaKindOf(const std::string& file, zephmetadata::XMPMetaHandle tree);

/// A view made for one tree: what people want to know first of files of that kind, section by section, then what else
/// people recorded. The first section holds the facts that belong to the file's name.
zephmetadata::sp<zephmetadata::ViewDefinition> MakeOverview(MediaKind kind, zephmetadata::XMPMetaHandle tree);

/// Leaves in an overview what has a value, each once, and lists what nobody recorded.
void ShortenOverview(Panel& panel);

/// All registered views, those that matter most to a kind of file first.
std::vector<zephmetadata::sp<zephmetadata::ViewDefinition>> ViewsByUse(MediaKind kind);

}  // namespace zephmeta
