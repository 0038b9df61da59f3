#include "library_session.h"

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

void StartLibrary() {
    TheSession().CountInput();
}

const std::string& Folder() {
    return TheSession().FolderPath();
}

}  // namespace fuzz
