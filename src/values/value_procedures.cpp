#include "values/value_procedures.h"

#include <algorithm>

#include "frame/errors.h"
#include "zephcore/localizer.h"
#include "zephcore/text.h"

namespace zephmetadata {

void ReportInvalidData(ErrorKind kind, const Path& path) {
    constexpr std::u16string_view kInvalidData =
        u"$$$/zephmetadata/ErrorInXMPData/InvalidData=invalid data in #{quot}@0#{quot}.";
    SendError(kind, zephcore::ZString(kInvalidData, {zephcore::UTF8to16(path.mNamespace + path.mPathDescription)}), {});
}

bool CameBack(const UTF8String& written, const UTF8String& read) {
    const auto withoutSpaces = [](UTF8String text) {
        std::erase(text, ' ');
        return text;
    };
    return withoutSpaces(written) == withoutSpaces(read);
}

}  // namespace zephmetadata
