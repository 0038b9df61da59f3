// A library to be preloaded (LD_PRELOAD) that lets one call of the system fail, so that a program can be tried with
// every fault that a disk, a network share or a full memory comes up with.
//
// FAILING_CALL="NAME NUMBER ERRNO FILE": of the calls NAME, those are counted that come after a file whose path ends with
// FILE was opened; number NUMBER fails with ERRNO, and those after it too when NUMBER ends with "+". FAILING_TOLD is a
// descriptor to which one byte is written when a call has failed.
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>

namespace {

struct Fault {
    char mName[32] = {};
    char mFile[256] = {};
    long mNumber = 0;
    bool mGoesOn = false;
    int mErrno = 0;
    int mTold = -1;
};

Fault FromEnvironment() {
    Fault fault;
    const char* const text = std::getenv("FAILING_CALL");
    const char* const told = std::getenv("FAILING_TOLD");
    char number[16] = {};
    if (text != nullptr &&
        std::sscanf(text, "%31s %15s %d %255s", fault.mName, number, &fault.mErrno, fault.mFile) == 4) {
        fault.mNumber = std::strtol(number, nullptr, 10);
        fault.mGoesOn = std::strchr(number, '+') != nullptr;
        fault.mTold = told != nullptr ? std::atoi(told) : -1;
    }
    return fault;
}

const Fault& TheFault() {
    static const Fault fault = FromEnvironment();
    return fault;
}

std::atomic<bool> isArmed{false};
std::atomic<long> calls{0};

void NoteOpened(const char* path) {
    const Fault& fault = TheFault();
    if (fault.mNumber > 0 && !isArmed && path != nullptr && std::string_view(path).ends_with(fault.mFile)) {
        isArmed = true;
    }
}

template <typename Function>
Function* Real(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

/// Whether this call of @p name is to fail; errno is set then.
bool Fails(const char* name) {
    const Fault& fault = TheFault();
    if (!isArmed || std::strcmp(name, fault.mName) != 0) {
        return false;
    }
    const long number = ++calls;
    if (number != fault.mNumber && !(fault.mGoesOn && number > fault.mNumber)) {
        return false;
    }
    static auto* const tell = Real<ssize_t(int, const void*, size_t)>("write");
    [[maybe_unused]] const ssize_t told = tell(fault.mTold, "!", 1);
    errno = fault.mErrno;
    return true;
}

mode_t ModeOf(int flags, va_list arguments) {
    const bool isMade = (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
    return isMade ? va_arg(arguments, mode_t) : 0;
}

}  // namespace

extern "C" int open(const char* path, int flags, ...) {
    static auto* const real = Real<int(const char*, int, ...)>("open");
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = ModeOf(flags, rest);
    va_end(rest);
    NoteOpened(path);
    return Fails("open") ? -1 : real(path, flags, mode);
}

extern "C" int openat(int folder, const char* path, int flags, ...) {
    static auto* const real = Real<int(int, const char*, int, ...)>("openat");
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = ModeOf(flags, rest);
    va_end(rest);
    NoteOpened(path);
    return Fails("openat") ? -1 : real(folder, path, flags, mode);
}

#define FAILING_CALL(result, name, parameters, arguments)               \
    extern "C" result name parameters {                                 \
        static auto* const real = Real<result parameters>(#name);       \
        return Fails(#name) ? static_cast<result>(-1) : real arguments; \
    }

FAILING_CALL(ssize_t, read, (int file, void* bytes, size_t size), (file, bytes, size))
FAILING_CALL(ssize_t, write, (int file, const void* bytes, size_t size), (file, bytes, size))
FAILING_CALL(ssize_t, pread, (int file, void* bytes, size_t size, off_t at), (file, bytes, size, at))
FAILING_CALL(ssize_t, pwrite, (int file, const void* bytes, size_t size, off_t at), (file, bytes, size, at))
FAILING_CALL(ssize_t, copy_file_range, (int from, off_t* at, int to, off_t* toAt, size_t size, unsigned flags),
             (from, at, to, toAt, size, flags))
FAILING_CALL(int, ftruncate, (int file, off_t size), (file, size))
FAILING_CALL(int, fstat, (int file, struct stat* status), (file, status))
FAILING_CALL(int, stat, (const char* path, struct stat* status), (path, status))
FAILING_CALL(int, fstatat, (int folder, const char* path, struct stat* status, int flags),
             (folder, path, status, flags))
FAILING_CALL(int, fsync, (int file), (file))
FAILING_CALL(int, flock, (int file, int operation), (file, operation))
FAILING_CALL(int, fchmod, (int file, mode_t mode), (file, mode))
FAILING_CALL(int, fchown, (int file, uid_t user, gid_t group), (file, user, group))
FAILING_CALL(ssize_t, flistxattr, (int file, char* names, size_t size), (file, names, size))
FAILING_CALL(int, linkat, (int from, const char* old, int to, const char* made, int flags),
             (from, old, to, made, flags))
FAILING_CALL(int, rename, (const char* from, const char* to), (from, to))
FAILING_CALL(int, renameat2, (int from, const char* old, int to, const char* made, unsigned flags),
             (from, old, to, made, flags))
FAILING_CALL(int, unlinkat, (int folder, const char* path, int flags), (folder, path, flags))

void* operator new(std::size_t size) {
    void* const memory = Fails("new") ? nullptr : std::malloc(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}
