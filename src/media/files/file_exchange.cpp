#include "media/files/file_exchange.h"

#include <cstdio>

namespace zephmetadata::media {

Exchanged ExchangeFiles(const FilePlace& place, const std::string& hiddenName, const FileStamp& expected) {
    constexpr int kMaxAttempts = 16;
    const auto fresh = place.StatusOf(hiddenName);
    if (!fresh) {
        return Exchanged::kImpossible;
    }
    FileStamp put = StampOf(*fresh);
    FileStamp wanted = expected;
    for (int attempt = 0; attempt < kMaxAttempts; ++attempt) {
        if (renameat2(place.Folder(), hiddenName.c_str(), place.Folder(), place.Name().c_str(), RENAME_EXCHANGE) != 0) {
            return attempt == 0 ? Exchanged::kImpossible : Exchanged::kEntangled;
        }
        const auto status = place.StatusOf(hiddenName);
        const FileStamp displaced = status ? StampOf(*status) : FileStamp();
        if (displaced.IsSameContent(wanted)) {
            return put.IsSameFile(StampOf(*fresh)) ? Exchanged::kDone : Exchanged::kTakenBack;
        }
        // What was displaced is the latest word: it goes where it belongs, and should displace what we had put there.
        wanted = std::exchange(put, displaced);
    }
    return Exchanged::kEntangled;
}

}  // namespace zephmetadata::media
