#pragma once

#include <exempi/xmp.h>
#include <exempi/xmperrors.h>

#include <memory>
#include <string>
#include <string_view>

/// Owners of the toolkit's C handles. Private to this folder, as the toolkit's headers are.
namespace zephmetadata::toolkit {

struct ReleaseHandle {
    void operator()(XmpPtr tree) const noexcept { xmp_free(tree); }
    void operator()(XmpStringPtr text) const noexcept { xmp_string_free(text); }
    void operator()(XmpIteratorPtr iterator) const noexcept { xmp_iterator_free(iterator); }
};

using TreeHandle = std::unique_ptr<_Xmp, ReleaseHandle>;
using IteratorHandle = std::unique_ptr<_XmpIterator, ReleaseHandle>;

/// A text that the toolkit fills in. It may hold NUL bytes.
class ToolkitString {
public:
    ToolkitString() : mHandle(xmp_string_new()) {}

    XmpStringPtr Get() const noexcept { return mHandle.get(); }
    std::string_view View() const { return {xmp_string_cstr(mHandle.get()), xmp_string_len(mHandle.get())}; }
    std::string Text() const { return std::string(View()); }

private:
    std::unique_ptr<_XmpString, ReleaseHandle> mHandle;
};

/// While one lives, what the toolkit writes to std::cerr on this thread (a line for every failing call) is dropped,
/// given that Start() was called. May be nested. Declare one before every call that can fail.
class QuietToolkit {
public:
    QuietToolkit() noexcept;
    ~QuietToolkit();
    QuietToolkit(const QuietToolkit&) = delete;
    QuietToolkit& operator=(const QuietToolkit&) = delete;
};

/// Called by Start and Stop: puts the filter for QuietToolkit before the buffer that std::cerr has, and takes it away
/// when it is still the foremost.
void InstallQuietFilter();
void RemoveQuietFilter() noexcept;

/// Throws XMPError with the toolkit's number of the last failure on this thread; @p what says in English what failed.
[[noreturn]] void ThrowToolkitError(std::string_view what);
/// Throws XMPError with @p id, one of the toolkit's numbers.
[[noreturn]] void ThrowError(int id, std::string_view what);

}  // namespace zephmetadata::toolkit
