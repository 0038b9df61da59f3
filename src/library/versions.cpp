#include "xmp/core/toolkit.h"
#include "zephmetadata/library.h"

namespace zephmetadata {

UTF8String GetXMPCoreVersion() {
    static UTF8String version;
    if (version.empty()) {
        version = toolkit::CoreVersion();
    }
    return version;
}

UTF8String GetXMPFilesVersion() {
    static UTF8String version;
    if (version.empty()) {
        version = toolkit::FilesVersion();
    }
    return version;
}

UTF8String GetLibraryVersion() {
    return ZEPHMETADATA_VERSION;
}

}  // namespace zephmetadata
