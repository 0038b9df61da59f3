#pragma once

#include <functional>
#include <memory>
#include <string>

#include "exempi/xmp.h"
#include "exempi/xmpconsts.h"

/// One comparison of a benchmark program.
namespace bench {

struct Comparison {
    std::string mName;
    std::function<void()> mOurs;       ///< one round of the library's work
    std::function<void()> mReference;  ///< the same result by what the library is built on
    double mTarget = 1;                ///< the greatest allowed quotient of the two times
};

/// What a benchmark program defines. Called once, with all base folders of the library pointing to empty ones.
Comparison MakeComparison();

/// Ends the program with a message when a round did not do its work: a failing round is a fast one.
void Require(bool done, const char* what);

struct ReleaseHandle {
    void operator()(XmpPtr tree) const noexcept { xmp_free(tree); }
    void operator()(XmpStringPtr text) const noexcept { xmp_string_free(text); }
    void operator()(XmpIteratorPtr iterator) const noexcept { xmp_iterator_free(iterator); }
    void operator()(XmpFilePtr file) const noexcept { xmp_files_free(file); }
};
using TreeHandle = std::unique_ptr<_Xmp, ReleaseHandle>;
using StringHandle = std::unique_ptr<_XmpString, ReleaseHandle>;
using IteratorHandle = std::unique_ptr<_XmpIterator, ReleaseHandle>;
using FileHandle = std::unique_ptr<_XmpFile, ReleaseHandle>;

}  // namespace bench
