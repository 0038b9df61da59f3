// The text of a simple property through its definition, against the toolkit's own read in an equal tree.
#include "ratio.h"
#include "zephmetadata/zephmetadata.h"

bench::Comparison bench::MakeComparison() {
    zephmetadata::Initialize();
    const auto provider = std::make_shared<zephmetadata::FileProvider>(
        zephcore::PathFromNative(ZEPHMETADATA_SOURCE_DIR "/tests/data/harbour.jpg"));
    const zephmetadata::XMPMetaPtr tree = *zephmetadata::MetaDataReadAccess(provider);
    const std::string packet = zephmetadata::SerializeXMPMeta(tree.get());
    const std::shared_ptr<_Xmp> equalTree(xmp_new(packet.data(), packet.size()), ReleaseHandle());
    const std::shared_ptr<_XmpString> text(xmp_string_new(), ReleaseHandle());

    return {"get value",
            [tree, path = zephmetadata::PathForExpression("xmp:Label")] {
                std::string value;
                Require(zephmetadata::GetValue(tree.get(), path, value) && value == "Green",
                        "reading through the library");
            },
            [equalTree, text] {
                Require(xmp_get_property(equalTree.get(), NS_XAP, "Label", text.get(), nullptr) &&
                            std::string_view(xmp_string_cstr(text.get())) == "Green",
                        "reading through the toolkit");
            },
            4};
}
