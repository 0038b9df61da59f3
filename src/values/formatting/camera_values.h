#pragma once

#include "zephmetadata/types.h"

/// Values of camera settings in photographic notation. All take the stored text, a rational.
namespace zephmetadata {

UTF8String FormatExposureTime(const UTF8String& seconds);
/// APEX time value (Exif 2.32, annex C): the time is 2 to the power of minus the value.
UTF8String FormatShutterSpeed(const UTF8String& apex);
UTF8String FormatFNumber(const UTF8String& fNumber);
/// APEX aperture value: the f-number is 2 to the power of half the value.
UTF8String FormatAperture(const UTF8String& apex);
/// Metres, without the unit; infinity and unknown distances by their names.
UTF8String FormatDistance(const UTF8String& metres);

}  // namespace zephmetadata
