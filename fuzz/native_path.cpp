// File names are bytes: every name survives the way through UTF-16, and every UTF-16 text has some bytes.
#include "support.h"
#include "zephcore/files.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view name = fuzz::Text(data, size);
    fuzz::Require(zephcore::PathToNative(zephcore::PathFromNative(name)) == name, "a name survives");

    const std::u16string path = fuzz::Text16(data, size);
    const std::string bytes = zephcore::PathToNative(path);
    fuzz::Require(zephcore::PathToNative(zephcore::PathFromNative(bytes)) == bytes, "so do the bytes of any path");
    const zephcore::File file(path);
    fuzz::Require(file.GetTitle() + file.GetExtension(true) == file.GetName(), "title and extension make the name");
    return 0;
}
