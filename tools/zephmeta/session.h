#pragma once

#include "zephmetadata/library.h"

namespace zephmeta {

/// The library between its start and its stop.
class Session {
public:
    Session() { zephmetadata::Initialize(); }
    ~Session() { zephmetadata::Terminate(); }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
};

}  // namespace zephmeta
