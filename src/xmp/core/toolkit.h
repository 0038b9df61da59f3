#pragma once

#include <optional>

#include "zephmetadata/types.h"

/// The XMP toolkit as the rest of the library sees it. Only the sources of this folder include the toolkit's headers.
namespace zephmetadata::toolkit {

/// Starts the toolkit; throws XMPError when it cannot be started. Calls need not be counted: a second start does nothing.
/// From here to Stop what the toolkit itself writes to standard error on the calling thread is kept from the host.
void Start();
void Stop() noexcept;
bool IsRunning() noexcept;
/// How often the toolkit was started and stopped: what is remembered of it is worth nothing afterwards.
std::size_t Phase() noexcept;

UTF8String CoreVersion();
UTF8String FilesVersion();

/// True when @p namespaceURI now has exactly @p prefix. An empty or ill-formed prefix, an empty URI and a prefix that
/// belongs to another namespace are refused; a URI that already has another prefix keeps that one.
bool RegisterNamespace(const UTF8String& namespaceURI, const UTF8String& prefix);
/// The registered prefix, without a colon.
std::optional<UTF8String> PrefixOf(const UTF8String& namespaceURI);
std::optional<UTF8String> NamespaceOf(const UTF8String& prefix);

// Path expressions. All throw XMPError for an empty name, an unregistered namespace or an index of 0 or below -1.

/// @p structPath "/" prefix ":" @p fieldName
UTF8String ComposeStructFieldPath(const UTF8String& schema, const UTF8String& structPath,
                                  const UTF8String& fieldNamespace, const UTF8String& fieldName);
/// @p arrayPath "[" @p index "]"; -1 composes "[last()]".
UTF8String ComposeArrayItemPath(const UTF8String& schema, const UTF8String& arrayPath, int index);
/// @p propertyPath "/?" prefix ":" @p qualifierName
UTF8String ComposeQualifierPath(const UTF8String& schema, const UTF8String& propertyPath,
                                const UTF8String& qualifierNamespace, const UTF8String& qualifierName);

}  // namespace zephmetadata::toolkit
