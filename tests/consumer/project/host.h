#pragma once

#include <zephmetadata/zephmetadata.h>

#include <iostream>

/// Leaves the function with 1 when the condition does not hold, saying where.
#define CHECK(condition)                                                              \
    do {                                                                              \
        if (!(condition)) {                                                           \
            std::cerr << __FILE__ << ':' << __LINE__ << ": not so: " #condition "\n"; \
            return 1;                                                                 \
        }                                                                             \
    } while (false)

/// A host that uses all of the library, area by area. Each part returns 0 when the library did as it should.
namespace host {

/// The library, started for the length of a block.
class Session {
public:
    Session() { zephmetadata::Initialize(); }
    ~Session() { zephmetadata::Terminate(); }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
};

struct Arguments {
    std::string mFolder;   ///< the program's own; all base folders of the library lie in it
    std::string mPhoto;    ///< a copy of the sample photo
    std::string mVersion;  ///< of the package that was asked for
};

int CheckLibrary(const Arguments& arguments);
int CheckPlatform(const Arguments& arguments);
int CheckDefinitions(const Arguments& arguments);
int CheckPaths(const Arguments& arguments);
int CheckValues(const Arguments& arguments);
int CheckProviders(const Arguments& arguments);
int CheckViews(const Arguments& arguments);
/// Installs packages: to be run last.
int CheckExtensions(const Arguments& arguments);

}  // namespace host
