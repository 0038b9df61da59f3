#pragma once

#include "zephmetadata/library.h"
#include "zephmetadata/views.h"

namespace zephmeta {

/// The library between its start and its stop, without views and extension packages.
class Session {
public:
    Session() { zephmetadata::Initialize(); }
    ~Session() { zephmetadata::Terminate(); }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
};

/// The same with both, as files are read and written: packages bring definitions of properties.
class FullSession : public Session {
public:
    FullSession() { zephmetadata::LoadAllViewDefinitions(); }
};

}  // namespace zephmeta
