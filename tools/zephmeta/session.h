#pragma once

#include "zephmetadata/extensions.h"
#include "zephmetadata/library.h"

namespace zephmeta {

/// The library between its start and its stop, without views and extension packages.
class Session {
public:
    Session() { zephmetadata::Initialize(); }
    ~Session() { zephmetadata::Terminate(); }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
};

/// The same with both, as files are read and written: packages, those of the library first, bring definitions of
/// properties.
class FullSession : public Session {
public:
    FullSession() { zephmetadata::RegisterBundledPackages(); }
};

}  // namespace zephmeta
