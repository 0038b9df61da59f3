// Reading a photo and listing all its values, against the toolkit opening the same file and visiting every node.
#include "listing.h"
#include "ratio.h"
#include "zephmetadata/zephmetadata.h"

namespace {

constexpr const char* kPhoto = ZEPHMETADATA_SOURCE_DIR "/tests/data/harbour.jpg";

void ListPhoto() {
    const auto provider = std::make_shared<zephmetadata::FileProvider>(zephcore::PathFromNative(kPhoto));
    const zephmetadata::MetaDataReadAccess access(provider);
    bench::Require(zephmeta::ListValues(*access).size() > 20, "listing the photo");
}

void VisitPhoto() {
    const bench::FileHandle file(xmp_files_open_new(kPhoto, XMP_OPEN_READ));
    const bench::TreeHandle tree(xmp_files_get_new_xmp(file.get()));
    const bench::IteratorHandle iterator(xmp_iterator_new(tree.get(), nullptr, nullptr, XMP_ITER_PROPERTIES));
    const bench::StringHandle schema(xmp_string_new());
    const bench::StringHandle path(xmp_string_new());
    const bench::StringHandle value(xmp_string_new());
    int nodes = 0;
    std::uint32_t options = 0;
    while (xmp_iterator_next(iterator.get(), schema.get(), path.get(), value.get(), &options)) {
        ++nodes;
    }
    xmp_files_close(file.get(), XMP_CLOSE_NOOPTION);
    bench::Require(nodes > 40, "visiting the nodes of the photo");
}

}  // namespace

bench::Comparison bench::MakeComparison() {
    zephmetadata::Initialize();
    return {"dump", ListPhoto, VisitPhoto, 2};
}
