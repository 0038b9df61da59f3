#include "support.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "support/temp_folder.h"
#include "zephmetadata/library.h"

namespace fuzz {

namespace {

constexpr int kInputsBetweenStarts = 256;

/// Stops the library before the folder goes.
class Session {
public:
    Session() { zephmetadata::Initialize(); }
    ~Session() { zephmetadata::Terminate(); }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    void CountInput() {
        if (++mInputs % kInputsBetweenStarts == 0) {
            zephmetadata::Terminate();
            zephmetadata::Initialize();
        }
    }
    const std::string& FolderPath() const { return mPath; }

private:
    support::TempFolder mFolder;
    std::string mPath = mFolder.Path().string();
    int mInputs = 0;
};

Session& TheSession() {
    static Session session;
    return session;
}

}  // namespace

std::u16string Text16(const std::uint8_t* data, std::size_t size) {
    std::u16string text(size / sizeof(char16_t), u'\0');
    if (!text.empty()) {
        std::memcpy(text.data(), data, text.size() * sizeof(char16_t));
    }
    return text;
}

void Require(bool holds, const char* promise) {
    if (!holds) {
        std::fprintf(stderr, "broken promise: %s\n", promise);
        std::abort();
    }
}

void StartLibrary() {
    TheSession().CountInput();
}

const std::string& Folder() {
    return TheSession().FolderPath();
}

}  // namespace fuzz
