#pragma once

#include <string_view>

/// Namespaces of the XMP properties that native metadata stands for.
namespace zephmetadata::media {

inline constexpr std::string_view kAUX = "http://ns.adobe.com/exif/1.0/aux/";
inline constexpr std::string_view kDC = "http://purl.org/dc/elements/1.1/";
inline constexpr std::string_view kEXIF = "http://ns.adobe.com/exif/1.0/";
inline constexpr std::string_view kEXIFEX = "http://cipa.jp/exif/1.0/";
inline constexpr std::string_view kIptcCore = "http://iptc.org/std/Iptc4xmpCore/1.0/xmlns/";
inline constexpr std::string_view kPDF = "http://ns.adobe.com/pdf/1.3/";
inline constexpr std::string_view kPhotoshop = "http://ns.adobe.com/photoshop/1.0/";
inline constexpr std::string_view kRiffInfo = "http://ns.adobe.com/riff/info/";
inline constexpr std::string_view kTIFF = "http://ns.adobe.com/tiff/1.0/";
inline constexpr std::string_view kXMP = "http://ns.adobe.com/xap/1.0/";
inline constexpr std::string_view kXMPDM = "http://ns.adobe.com/xmp/1.0/DynamicMedia/";
inline constexpr std::string_view kXMPRights = "http://ns.adobe.com/xap/1.0/rights/";

}  // namespace zephmetadata::media
