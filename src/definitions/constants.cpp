#include "zephmetadata/definitions.h"

#define ZEPHMETADATA_HOST "http://ns.zephmetadata.org"

namespace zephmetadata {

const UTF8String kTypeText = "text";
const UTF8String kTypeInteger = "integer";
const UTF8String kTypeReal = "real";

const UTF8String UINamespaceURI = ZEPHMETADATA_HOST "/metadata/ui/1.0/";
const UTF8String ExtensionNamespaceURI = ZEPHMETADATA_HOST "/metadata/extension/1.0/";
const UTF8String QuilletNamespaceURI = ZEPHMETADATA_HOST "/xmp/quillet/";
const UTF8String QuilletUINamespaceURI = ZEPHMETADATA_HOST "/xmp/quillet/ui/";
const UTF8String DynamicNamespaceBase = ZEPHMETADATA_HOST "/zeph/dynamic/";
const UTF8String AggregateNamespaceURI = ZEPHMETADATA_HOST "/xmp/aggregate/1.0/";
const UTF8String SWFNamespaceURI = ZEPHMETADATA_HOST "/swf/1.0/";
/// Not ours: the URI under which the XMP toolkits know the prefix, so that files written by others resolve.
const UTF8String DICOMNamespaceURI = "http://ns.adobe.com/DICOM/";

}  // namespace zephmetadata

#undef ZEPHMETADATA_HOST
