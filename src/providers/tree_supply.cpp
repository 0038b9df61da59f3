#include "providers/tree_supply.h"

#include "frame/errors.h"
#include "xmp/core/toolkit.h"
#include "zephcore/localizer.h"

namespace zephmetadata {

bool CanHaveTrees(const UTF16String& context) {
    if (toolkit::IsRunning()) {
        return true;
    }
    constexpr std::u16string_view kText =
        u"$$$/zephmetadata/ErrorInXMPData/NotInitialized=the library is not initialised.";
    SendError(ErrorKind::ErrorReadingXMP, zephcore::ZString(kText), context);
    return false;
}

}  // namespace zephmetadata
