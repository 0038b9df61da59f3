#include "media/native/exif/exif_table.h"

#include <algorithm>
#include <array>

#include "media/native/exif/exif_codecs.h"
#include "media/native/namespaces.h"

namespace zephmetadata::media {

namespace {

constexpr TiffDirectory kMain = TiffDirectory::kMain;
constexpr TiffDirectory kExif = TiffDirectory::kExif;
constexpr TiffDirectory kGPS = TiffDirectory::kGPS;

constexpr TiffType kByte = TiffType::kByte;
constexpr TiffType kAscii = TiffType::kAscii;
constexpr TiffType kShort = TiffType::kShort;
constexpr TiffType kLong = TiffType::kLong;
constexpr TiffType kRational = TiffType::kRational;
constexpr TiffType kUndefined = TiffType::kUndefined;
constexpr TiffType kSRational = TiffType::kSRational;

constexpr ValueForm kSimple = ValueForm::kSimple;
constexpr ValueForm kSeq = ValueForm::kSeq;
constexpr ValueForm kLangAlt = ValueForm::kLangAlt;
constexpr ValueForm kStruct = ValueForm::kStruct;

constexpr ExifCount kOne{1, 1};
constexpr ExifCount kAny{1, kMaxExifItems};
constexpr std::uint8_t kStored = kExifRow_Structural;
constexpr std::uint8_t kMakes = kExifRow_MakesBlock;

// A table: one row a line, whatever its width.
// clang-format off
constexpr auto kRows = std::to_array<ExifRow>({
    {kMain, 0x0100, kLong,      kOne,   kTIFF, "ImageWidth",                kSimple, &kIntegerCodec, kStored},
    {kMain, 0x0101, kLong,      kOne,   kTIFF, "ImageLength",               kSimple, &kIntegerCodec, kStored},
    {kMain, 0x0102, kShort,     kAny,   kTIFF, "BitsPerSample",             kSeq,    &kIntegerCodec, kStored},
    {kMain, 0x0103, kShort,     kOne,   kTIFF, "Compression",               kSimple, &kIntegerCodec, kStored},
    {kMain, 0x0106, kShort,     kOne,   kTIFF, "PhotometricInterpretation", kSimple, &kIntegerCodec, kStored},
    {kMain, 0x0112, kShort,     kOne,   kTIFF, "Orientation",               kSimple, &kIntegerCodec, kMakes},
    {kMain, 0x0115, kShort,     kOne,   kTIFF, "SamplesPerPixel",           kSimple, &kIntegerCodec, kStored},
    {kMain, 0x011C, kShort,     kOne,   kTIFF, "PlanarConfiguration",       kSimple, &kIntegerCodec, kStored},
    {kMain, 0x0211, kRational,  {3, 3}, kTIFF, "YCbCrCoefficients",         kSeq,    &kRationalCodec, kStored},
    {kMain, 0x0212, kShort,     {2, 2}, kTIFF, "YCbCrSubSampling",          kSeq,    &kIntegerCodec, kStored},
    {kMain, 0x0213, kShort,     kOne,   kTIFF, "YCbCrPositioning",          kSimple, &kIntegerCodec, kStored},
    {kMain, 0x011A, kRational,  kOne,   kTIFF, "XResolution",               kSimple, &kRationalCodec},
    {kMain, 0x011B, kRational,  kOne,   kTIFF, "YResolution",               kSimple, &kRationalCodec},
    {kMain, 0x0128, kShort,     kOne,   kTIFF, "ResolutionUnit",            kSimple, &kIntegerCodec},
    {kMain, 0x012D, kShort,     kAny,   kTIFF, "TransferFunction",          kSeq,    &kIntegerCodec, kStored},
    {kMain, 0x013E, kRational,  {2, 2}, kTIFF, "WhitePoint",                kSeq,    &kRationalCodec, kStored},
    {kMain, 0x013F, kRational,  {6, 6}, kTIFF, "PrimaryChromaticities",     kSeq,    &kRationalCodec, kStored},
    {kMain, 0x0214, kRational,  {6, 6}, kTIFF, "ReferenceBlackWhite",       kSeq,    &kRationalCodec, kStored},
    {kMain, 0x010F, kAscii,     kOne,   kTIFF, "Make",                      kSimple, &kTextCodec},
    {kMain, 0x0110, kAscii,     kOne,   kTIFF, "Model",                     kSimple, &kTextCodec},
    {kMain, 0x0131, kAscii,     kOne,   kXMP,  "CreatorTool",               kSimple, &kTextCodec},
    {kMain, 0x0132, kAscii,     kOne,   kXMP,  "ModifyDate",                kSimple, &kDateCodec, 0, {0x9010, 0x9290}},
    {kMain, 0x010E, kAscii,     kOne,   kDC,   "description",               kLangAlt, &kTextCodec},
    {kMain, 0x013B, kAscii,     kOne,   kDC,   "creator",                   kSeq,    &kCreatorsCodec},
    {kMain, 0x8298, kAscii,     kOne,   kDC,   "rights",                    kLangAlt, &kCopyrightCodec},

    {kExif, 0x9000, kUndefined, kOne,   kEXIF, "ExifVersion",               kSimple, &kVersionCodec, kStored},
    {kExif, 0xA000, kUndefined, kOne,   kEXIF, "FlashpixVersion",           kSimple, &kVersionCodec, kStored},
    {kExif, 0xA001, kShort,     kOne,   kEXIF, "ColorSpace",                kSimple, &kIntegerCodec, kStored},
    {kExif, 0xA500, kRational,  kOne,   kEXIFEX, "Gamma",                   kSimple, &kRationalCodec, kStored},
    {kExif, 0x9101, kUndefined, {4, 4}, kEXIF, "ComponentsConfiguration",   kSeq,    &kIntegerCodec, kStored},
    {kExif, 0x9102, kRational,  kOne,   kEXIF, "CompressedBitsPerPixel",    kSimple, &kRationalCodec, kStored},
    {kExif, 0xA002, kLong,      kOne,   kEXIF, "PixelXDimension",           kSimple, &kIntegerCodec, kStored},
    {kExif, 0xA003, kLong,      kOne,   kEXIF, "PixelYDimension",           kSimple, &kIntegerCodec, kStored},
    {kExif, 0x9286, kUndefined, kOne,   kEXIF, "UserComment",               kLangAlt, &kCharsetTextCodec},
    {kExif, 0xA004, kAscii,     kOne,   kEXIF, "RelatedSoundFile",          kSimple, &kTextCodec},
    {kExif, 0x9003, kAscii,     kOne,   kEXIF, "DateTimeOriginal",          kSimple, &kDateCodec, kMakes, {0x9011, 0x9291}},
    {kExif, 0x9003, kAscii,     kOne,   kPhotoshop, "DateCreated",          kSimple, &kDateCodec, 0, {0x9011, 0x9291}},
    {kExif, 0x9004, kAscii,     kOne,   kXMP,  "CreateDate",                kSimple, &kDateCodec, 0, {0x9012, 0x9292}},
    {kExif, 0x829A, kRational,  kOne,   kEXIF, "ExposureTime",              kSimple, &kRationalCodec},
    {kExif, 0x829D, kRational,  kOne,   kEXIF, "FNumber",                   kSimple, &kRationalCodec},
    {kExif, 0x8822, kShort,     kOne,   kEXIF, "ExposureProgram",           kSimple, &kIntegerCodec},
    {kExif, 0x8824, kAscii,     kOne,   kEXIF, "SpectralSensitivity",       kSimple, &kTextCodec},
    {kExif, 0x8827, kShort,     kOne,   kEXIFEX, "PhotographicSensitivity", kSimple, &kSensitivityCodec},
    {kExif, 0x8827, kShort,     kAny,   kEXIF, "ISOSpeedRatings",           kSeq,    &kIntegerCodec},
    {kExif, 0x8828, kUndefined, kOne,   kEXIF, "OECF",                      kStruct, &kResponseCodec},
    {kExif, 0x8830, kShort,     kOne,   kEXIFEX, "SensitivityType",         kSimple, &kIntegerCodec},
    {kExif, 0x8831, kLong,      kOne,   kEXIFEX, "StandardOutputSensitivity", kSimple, &kIntegerCodec},
    {kExif, 0x8832, kLong,      kOne,   kEXIFEX, "RecommendedExposureIndex", kSimple, &kIntegerCodec},
    {kExif, 0x8833, kLong,      kOne,   kEXIFEX, "ISOSpeed",                kSimple, &kIntegerCodec},
    {kExif, 0x8834, kLong,      kOne,   kEXIFEX, "ISOSpeedLatitudeyyy",     kSimple, &kIntegerCodec},
    {kExif, 0x8835, kLong,      kOne,   kEXIFEX, "ISOSpeedLatitudezzz",     kSimple, &kIntegerCodec},
    {kExif, 0x9201, kSRational, kOne,   kEXIF, "ShutterSpeedValue",         kSimple, &kRationalCodec},
    {kExif, 0x9202, kRational,  kOne,   kEXIF, "ApertureValue",             kSimple, &kRationalCodec},
    {kExif, 0x9203, kSRational, kOne,   kEXIF, "BrightnessValue",           kSimple, &kRationalCodec},
    {kExif, 0x9204, kSRational, kOne,   kEXIF, "ExposureBiasValue",         kSimple, &kRationalCodec},
    {kExif, 0x9205, kRational,  kOne,   kEXIF, "MaxApertureValue",          kSimple, &kRationalCodec},
    {kExif, 0x9206, kRational,  kOne,   kEXIF, "SubjectDistance",           kSimple, &kRationalCodec},
    {kExif, 0x9207, kShort,     kOne,   kEXIF, "MeteringMode",              kSimple, &kIntegerCodec},
    {kExif, 0x9208, kShort,     kOne,   kEXIF, "LightSource",               kSimple, &kIntegerCodec},
    {kExif, 0x9209, kShort,     kOne,   kEXIF, "Flash",                     kStruct, &kFlashCodec},
    {kExif, 0x920A, kRational,  kOne,   kEXIF, "FocalLength",               kSimple, &kRationalCodec},
    {kExif, 0x9214, kShort,     {2, 4}, kEXIF, "SubjectArea",               kSeq,    &kIntegerCodec},
    {kExif, 0x9400, kSRational, kOne,   kEXIFEX, "Temperature",             kSimple, &kRationalCodec},
    {kExif, 0x9401, kRational,  kOne,   kEXIFEX, "Humidity",                kSimple, &kRationalCodec},
    {kExif, 0x9402, kRational,  kOne,   kEXIFEX, "Pressure",                kSimple, &kRationalCodec},
    {kExif, 0x9403, kSRational, kOne,   kEXIFEX, "WaterDepth",              kSimple, &kRationalCodec},
    {kExif, 0x9404, kRational,  kOne,   kEXIFEX, "Acceleration",            kSimple, &kRationalCodec},
    {kExif, 0x9405, kSRational, kOne,   kEXIFEX, "CameraElevationAngle",    kSimple, &kRationalCodec},
    {kExif, 0xA20B, kRational,  kOne,   kEXIF, "FlashEnergy",               kSimple, &kRationalCodec},
    {kExif, 0xA20C, kUndefined, kOne,   kEXIF, "SpatialFrequencyResponse",  kStruct, &kResponseCodec},
    {kExif, 0xA20E, kRational,  kOne,   kEXIF, "FocalPlaneXResolution",     kSimple, &kRationalCodec},
    {kExif, 0xA20F, kRational,  kOne,   kEXIF, "FocalPlaneYResolution",     kSimple, &kRationalCodec},
    {kExif, 0xA210, kShort,     kOne,   kEXIF, "FocalPlaneResolutionUnit",  kSimple, &kIntegerCodec},
    {kExif, 0xA214, kShort,     {2, 2}, kEXIF, "SubjectLocation",           kSeq,    &kIntegerCodec},
    {kExif, 0xA215, kRational,  kOne,   kEXIF, "ExposureIndex",             kSimple, &kRationalCodec},
    {kExif, 0xA217, kShort,     kOne,   kEXIF, "SensingMethod",             kSimple, &kIntegerCodec},
    {kExif, 0xA300, kUndefined, kOne,   kEXIF, "FileSource",                kSimple, &kIntegerCodec},
    {kExif, 0xA301, kUndefined, kOne,   kEXIF, "SceneType",                 kSimple, &kIntegerCodec},
    {kExif, 0xA302, kUndefined, kOne,   kEXIF, "CFAPattern",                kStruct, &kColorFilterCodec},
    {kExif, 0xA401, kShort,     kOne,   kEXIF, "CustomRendered",            kSimple, &kIntegerCodec},
    {kExif, 0xA402, kShort,     kOne,   kEXIF, "ExposureMode",              kSimple, &kIntegerCodec},
    {kExif, 0xA403, kShort,     kOne,   kEXIF, "WhiteBalance",              kSimple, &kIntegerCodec},
    {kExif, 0xA404, kRational,  kOne,   kEXIF, "DigitalZoomRatio",          kSimple, &kRationalCodec},
    {kExif, 0xA405, kShort,     kOne,   kEXIF, "FocalLengthIn35mmFilm",     kSimple, &kIntegerCodec},
    {kExif, 0xA406, kShort,     kOne,   kEXIF, "SceneCaptureType",          kSimple, &kIntegerCodec},
    {kExif, 0xA407, kShort,     kOne,   kEXIF, "GainControl",               kSimple, &kIntegerCodec},
    {kExif, 0xA408, kShort,     kOne,   kEXIF, "Contrast",                  kSimple, &kIntegerCodec},
    {kExif, 0xA409, kShort,     kOne,   kEXIF, "Saturation",                kSimple, &kIntegerCodec},
    {kExif, 0xA40A, kShort,     kOne,   kEXIF, "Sharpness",                 kSimple, &kIntegerCodec},
    {kExif, 0xA40B, kUndefined, kOne,   kEXIF, "DeviceSettingDescription",  kStruct, &kDeviceSettingCodec},
    {kExif, 0xA40C, kShort,     kOne,   kEXIF, "SubjectDistanceRange",      kSimple, &kIntegerCodec},
    {kExif, 0xA420, kAscii,     kOne,   kEXIF, "ImageUniqueID",             kSimple, &kTextCodec},
    {kExif, 0xA430, kAscii,     kOne,   kEXIFEX, "CameraOwnerName",         kSimple, &kTextCodec},
    {kExif, 0xA430, kAscii,     kOne,   kAUX,  "OwnerName",                 kSimple, &kTextCodec},
    {kExif, 0xA431, kAscii,     kOne,   kEXIFEX, "BodySerialNumber",        kSimple, &kTextCodec},
    {kExif, 0xA431, kAscii,     kOne,   kAUX,  "SerialNumber",              kSimple, &kTextCodec},
    {kExif, 0xA432, kRational,  {4, 4}, kEXIFEX, "LensSpecification",       kSeq,    &kRationalCodec},
    {kExif, 0xA432, kRational,  {4, 4}, kAUX,  "LensInfo",                  kSimple, &kJoinedRationalCodec},
    {kExif, 0xA433, kAscii,     kOne,   kEXIFEX, "LensMake",                kSimple, &kTextCodec},
    {kExif, 0xA434, kAscii,     kOne,   kEXIFEX, "LensModel",               kSimple, &kTextCodec},
    {kExif, 0xA434, kAscii,     kOne,   kAUX,  "Lens",                      kSimple, &kTextCodec},
    {kExif, 0xA435, kAscii,     kOne,   kEXIFEX, "LensSerialNumber",        kSimple, &kTextCodec},
    {kExif, 0xA436, kAscii,     kOne,   kEXIFEX, "ImageTitle",              kSimple, &kTextCodec},
    {kExif, 0xA437, kAscii,     kOne,   kEXIFEX, "Photographer",            kSimple, &kTextCodec},
    {kExif, 0xA438, kAscii,     kOne,   kEXIFEX, "ImageEditor",             kSimple, &kTextCodec},
    {kExif, 0xA439, kAscii,     kOne,   kEXIFEX, "CameraFirmware",          kSimple, &kTextCodec},
    {kExif, 0xA43A, kAscii,     kOne,   kEXIFEX, "RAWDevelopingSoftware",   kSimple, &kTextCodec},
    {kExif, 0xA43B, kAscii,     kOne,   kEXIFEX, "ImageEditingSoftware",    kSimple, &kTextCodec},
    {kExif, 0xA43C, kAscii,     kOne,   kEXIFEX, "MetadataEditingSoftware", kSimple, &kTextCodec},
    {kExif, 0xA460, kShort,     kOne,   kEXIFEX, "CompositeImage",          kSimple, &kIntegerCodec},
    {kExif, 0xA461, kShort,     {2, 2}, kEXIFEX, "CompositeImageCount",     kSeq,    &kIntegerCodec},
    {kExif, 0xA462, kUndefined, kOne,   kEXIFEX, "CompositeImageExposureTimes", kStruct, &kCompositeTimesCodec},

    {kGPS,  0x0000, kByte,      kOne,   kEXIF, "GPSVersionID",              kSimple, &kDottedVersionCodec},
    {kGPS,  0x0002, kRational,  kOne,   kEXIF, "GPSLatitude",               kSimple, &kCoordinateCodec, kMakes, {0x0001}},
    {kGPS,  0x0004, kRational,  kOne,   kEXIF, "GPSLongitude",              kSimple, &kCoordinateCodec, kMakes, {0x0003}},
    {kGPS,  0x0005, kByte,      kOne,   kEXIF, "GPSAltitudeRef",            kSimple, &kIntegerCodec, kMakes},
    {kGPS,  0x0006, kRational,  kOne,   kEXIF, "GPSAltitude",               kSimple, &kRationalCodec, kMakes},
    {kGPS,  0x0007, kRational,  kOne,   kEXIF, "GPSTimeStamp",              kSimple, &kGPSTimeCodec, 0, {0x001D}},
    {kGPS,  0x0008, kAscii,     kOne,   kEXIF, "GPSSatellites",             kSimple, &kTextCodec},
    {kGPS,  0x0009, kAscii,     kOne,   kEXIF, "GPSStatus",                 kSimple, &kTextCodec},
    {kGPS,  0x000A, kAscii,     kOne,   kEXIF, "GPSMeasureMode",            kSimple, &kTextCodec},
    {kGPS,  0x000B, kRational,  kOne,   kEXIF, "GPSDOP",                    kSimple, &kRationalCodec},
    {kGPS,  0x000C, kAscii,     kOne,   kEXIF, "GPSSpeedRef",               kSimple, &kTextCodec},
    {kGPS,  0x000D, kRational,  kOne,   kEXIF, "GPSSpeed",                  kSimple, &kRationalCodec},
    {kGPS,  0x000E, kAscii,     kOne,   kEXIF, "GPSTrackRef",               kSimple, &kTextCodec},
    {kGPS,  0x000F, kRational,  kOne,   kEXIF, "GPSTrack",                  kSimple, &kRationalCodec},
    {kGPS,  0x0010, kAscii,     kOne,   kEXIF, "GPSImgDirectionRef",        kSimple, &kTextCodec},
    {kGPS,  0x0011, kRational,  kOne,   kEXIF, "GPSImgDirection",           kSimple, &kRationalCodec},
    {kGPS,  0x0012, kAscii,     kOne,   kEXIF, "GPSMapDatum",               kSimple, &kTextCodec},
    {kGPS,  0x0014, kRational,  kOne,   kEXIF, "GPSDestLatitude",           kSimple, &kCoordinateCodec, 0, {0x0013}},
    {kGPS,  0x0016, kRational,  kOne,   kEXIF, "GPSDestLongitude",          kSimple, &kCoordinateCodec, 0, {0x0015}},
    {kGPS,  0x0017, kAscii,     kOne,   kEXIF, "GPSDestBearingRef",         kSimple, &kTextCodec},
    {kGPS,  0x0018, kRational,  kOne,   kEXIF, "GPSDestBearing",            kSimple, &kRationalCodec},
    {kGPS,  0x0019, kAscii,     kOne,   kEXIF, "GPSDestDistanceRef",        kSimple, &kTextCodec},
    {kGPS,  0x001A, kRational,  kOne,   kEXIF, "GPSDestDistance",           kSimple, &kRationalCodec},
    {kGPS,  0x001B, kUndefined, kOne,   kEXIF, "GPSProcessingMethod",       kSimple, &kCharsetTextCodec},
    {kGPS,  0x001C, kUndefined, kOne,   kEXIF, "GPSAreaInformation",        kSimple, &kCharsetTextCodec},
    {kGPS,  0x001E, kShort,     kOne,   kEXIF, "GPSDifferential",           kSimple, &kIntegerCodec},
    {kGPS,  0x001F, kRational,  kOne,   kEXIFEX, "GPSHPositioningError",    kSimple, &kRationalCodec},
});
// clang-format on

}  // namespace

std::span<const ExifRow> ExifRows() {
    return kRows;
}

const ExifRow* FindExifRow(std::string_view nameSpace, std::string_view property) {
    const auto* const found = std::find_if(kRows.begin(), kRows.end(), [&](const ExifRow& row) {
        return row.mProperty == property && row.mNamespace == nameSpace;
    });
    return found == kRows.end() ? nullptr : found;
}

}  // namespace zephmetadata::media
