#include "xmp/core/toolkit.h"
#include "zephmetadata/library.h"

namespace zephmetadata {

UTF8String GetXMPCoreVersion() {
    return toolkit::CoreVersion();  // remembers it, under a lock
}

UTF8String GetXMPFilesVersion() {
    return toolkit::FilesVersion();
}

UTF8String GetLibraryVersion() {
    return ZEPHMETADATA_VERSION;
}

}  // namespace zephmetadata
