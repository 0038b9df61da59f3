#include <sstream>

#include "support/values_test.h"
#include "xmp/tree/xmp_tree.h"

namespace zephmetadata {
namespace {

class ConstructedText : public support::TreeTest {
protected:
    /// Elements of the schemas that constructors read: "exif:A=1 tiff:B=2".
    void LoadValues(const std::string& values) {
        std::string body;
        std::istringstream in(values);
        for (std::string value; in >> value;) {
            const std::string name = value.substr(0, value.find('='));
            const std::string text = value.substr(value.find('=') + 1);
            const bool isArray = name == "exif:ISOSpeedRatings";
            body += "<" + name + " xmlns:exifEX='http://cipa.jp/exif/1.0/'>" +
                    (isArray ? "<rdf:Seq><rdf:li>" + text + "</rdf:li></rdf:Seq>" : text) + "</" + name + ">";
        }
        Load(body);
    }
};

TEST_F(ConstructedText, IsMadeOfOtherProperties) {
    struct Row {
        const char* mExpression;
        const char* mValues;
        const char* mText;
    };
    constexpr const char* kPixels = "corvid:ImageSize";
    constexpr const char* kResolution = "corvid:ImageResolution";
    constexpr const char* kShutter = "corvid:ShutterSpeed";
    constexpr const char* kSpeed = "corvid:PhotographicSensitivity";
    const Row rows[] = {
        {kPixels, "exif:PixelXDimension=4000 exif:PixelYDimension=3000", "4000 x 3000"},
        {kPixels, "exif:PixelXDimension=4000 exif:PixelYDimension=3000 tiff:Orientation=4", "4000 x 3000"},
        {kPixels, "exif:PixelXDimension=4000 exif:PixelYDimension=3000 tiff:Orientation=5", "3000 x 4000"},
        {kPixels, "exif:PixelXDimension=4000 exif:PixelYDimension=3000 tiff:Orientation=6", "3000 x 4000"},
        {kPixels, "exif:PixelXDimension=4000 exif:PixelYDimension=3000 tiff:Orientation=8", "3000 x 4000"},
        {kPixels, "exif:PixelXDimension=4000 exif:PixelYDimension=3000 tiff:Orientation=9", "4000 x 3000"},
        {kPixels, "exif:PixelXDimension=4000 tiff:ImageWidth=40 tiff:ImageLength=30", "40 x 30"},
        {kPixels, "exif:PixelXDimension=4000 tiff:ImageLength=30", "<none>"},
        {kResolution, "tiff:XResolution=72/1 tiff:YResolution=144/2", "72"},
        {kResolution, "tiff:XResolution=72/1 tiff:YResolution=300/1", "72 x 300"},
        {kResolution, "tiff:XResolution=72/1 tiff:YResolution=300/1 tiff:Orientation=7", "300 x 72"},
        {kResolution, "tiff:XResolution=72/1", "72 x "},
        {kResolution, "tiff:YResolution=72/1", "<none>"},
        {kShutter, "exif:ShutterSpeedValue=8/1 exif:ExposureTime=1/10", "1/250 sec"},
        {kShutter, "exif:ExposureTime=1/10", "1/10 sec"},
        {kShutter, "exif:FNumber=8/1", "<none>"},
        {kSpeed, "exifEX:PhotographicSensitivity=200 exif:ISOSpeedRatings=200", "ISO 200"},
        {kSpeed, "exif:ISOSpeedRatings=200", "ISO 200"},
        {kSpeed, "exifEX:PhotographicSensitivity=200 exifEX:SensitivityType=2 exif:ISOSpeedRatings=200", "ISO 200"},
        {kSpeed, "exifEX:PhotographicSensitivity=65535 exif:ISOSpeedRatings=12800", "ISO 12800"},
        {kSpeed, "exifEX:PhotographicSensitivity=65535 exifEX:SensitivityType=1 exif:ISOSpeedRatings=12800",
         "SOS 12800"},
        {kSpeed, "exifEX:PhotographicSensitivity=65535 exifEX:SensitivityType=2 exif:ISOSpeedRatings=12800",
         "REI 12800"},
        {kSpeed, "exifEX:PhotographicSensitivity=65535 exifEX:SensitivityType=3 exif:ISOSpeedRatings=12800",
         "ISO 12800"},
        {kSpeed, "exifEX:PhotographicSensitivity=65535 exifEX:SensitivityType=4 exif:ISOSpeedRatings=12800",
         "SOS 12800"},
        {kSpeed, "exifEX:PhotographicSensitivity=200", "<none>"},
    };
    for (const Row& row : rows) {
        LoadValues(row.mValues);
        EXPECT_EQ(Text(row.mExpression), row.mText) << row.mExpression << " of " << row.mValues;
    }
    EXPECT_FALSE(HasErrors());
}

TEST_F(ConstructedText, IsNoneWhereSourcesDiffer) {
    struct Row {
        const char* mExpression;
        const char* mMixed;
    };
    const Row rows[] = {{"corvid:ImageSize", "exif:PixelXDimension"},
                        {"corvid:ImageSize", "exif:PixelYDimension"},
                        {"corvid:ImageSize", "tiff:Orientation"},
                        {"corvid:ShutterSpeed", "exif:ShutterSpeedValue"},
                        {"exifEX:LensModel", "exifEX:LensModel"},
                        {"exifEX:LensModel", "aux:Lens"},
                        {"corvid:ImageResolution", "tiff:YResolution"},
                        {"corvid:ImageResolution", "tiff:Orientation"},
                        {"corvid:PhotographicSensitivity", "exifEX:PhotographicSensitivity"},
                        {"corvid:PhotographicSensitivity", "exif:ISOSpeedRatings"}};
    for (const Row& row : rows) {
        LoadValues(
            "exif:PixelXDimension=40 exif:PixelYDimension=30 tiff:ImageWidth=40 tiff:ImageLength=30 "
            "exif:ShutterSpeedValue=8/1 exif:ExposureTime=1/10 aux:Lens=50mm tiff:Orientation=1 tiff:XResolution=72/1 "
            "tiff:YResolution=72/1 exifEX:PhotographicSensitivity=200 exif:ISOSpeedRatings=200");
        const Path mixed = At(row.mMixed);
        EXPECT_NE(Text(row.mExpression), "<none>");
        toolkit::MarkMixed(Tree(), mixed.mNamespace, mixed.mPathDescription);
        std::string text = "kept";
        GetValueResult result{};
        EXPECT_FALSE(GetValue(Tree(), At(row.mExpression), text, &result)) << row.mExpression;
        EXPECT_EQ(result, kGetValueResult_Mixed) << row.mExpression << ", mixed " << row.mMixed;
        EXPECT_EQ(text, "kept");
        EXPECT_FALSE(GetValue(Tree(), At(row.mExpression), text));
    }
}

}  // namespace
}  // namespace zephmetadata
