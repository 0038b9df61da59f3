#pragma once

#include <boost/range/any_range.hpp>
#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "zephcore/base.h"

#define ZEPHMETADATA_EXPORT ZEPHCORE_EXPORT

namespace zephmetadata {

using UTF8String = std::string;
using UTF16String = std::u16string;

template <typename T>
using sp = std::shared_ptr<T>;

/// The result of the enumeration functions. It yields its elements by value and is made from a vector of T implicitly.
/// A range over a live list is valid until that list next changes.
template <typename T>
using PolyRange = boost::any_range<T, boost::bidirectional_traversal_tag, T, std::ptrdiff_t>;

/// One XMP tree; its content is the library's own.
struct XMPMeta;

/// A tree with its reference count. Functions that take a handle hold no reference beyond the call; null is allowed
/// wherever a handle is taken.
using XMPMetaHandle = XMPMeta*;

ZEPHMETADATA_EXPORT void intrusive_ptr_add_ref(XMPMetaHandle tree) noexcept;
ZEPHMETADATA_EXPORT void intrusive_ptr_release(XMPMetaHandle tree) noexcept;

using XMPMetaPtr = boost::intrusive_ptr<XMPMeta>;

/// A failure of the XMP toolkit. It reaches the host from Initialize and from three of the path constructors only.
class ZEPHMETADATA_EXPORT XMPError : public std::runtime_error {
public:
    XMPError(int id, const UTF8String& message);
    ~XMPError() override;

    /// The toolkit's number of the failure; negative.
    int Id() const noexcept { return mId; }

private:
    int mId;
};

}  // namespace zephmetadata
