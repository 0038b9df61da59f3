// The manifests of extension packages and of panels, and what is written of them.
#include <fstream>

#include "library_session.h"
#include "support.h"
#include "zephcore/files.h"
#include "zephmetadata/extensions.h"

using namespace zephmetadata;

namespace {

using PackageInfo = ExtensionManifestParser::ManifestInfo;
using PanelInfo = GenericPanelManifestParser::ManifestInfo;

/// A manifest that was read can be written, and then says the same.
void CheckWriting(const PackageInfo& read) {
    PanelInfo written;
    written.name = read.name;
    written.version = read.version;
    written.localizationFile = read.locFilePrefix;
    const UTF16String path = zephcore::PathFromNative(fuzz::Folder() + "/written/manifest.xml");
    fuzz::Require(WriteExtensionManifest(written, path), "a manifest can be written");
    PackageInfo again;
    fuzz::Require(ParseExtensionManifestFromDocument(path, again), "what is written can be read");
    fuzz::Require(again.name == read.name && again.version == read.version && again.locFilePrefix == read.locFilePrefix,
                  "what is written reads as it was");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::StartLibrary();
    const std::string file = fuzz::Folder() + "/manifest.xml";
    std::ofstream(file, std::ios::binary) << fuzz::Text(data, size);
    const UTF16String path = zephcore::PathFromNative(file);
    PackageInfo package;
    const bool isPackageManifest = ParseExtensionManifestFromDocument(path, package);
    PanelInfo panel;
    fuzz::Require(ParseManifestFromDocument(path, panel) == isPackageManifest,
                  "both readers agree on what is well formed");
    CheckWriting(package);
    return 0;
}
