#include "support/values_test.h"
#include "zephcore/localizer.h"
#include "zephmetadata/extensions.h"

namespace zephmetadata {
namespace {

struct Finding {
    std::string mPath;
    ValidationSeverity mSeverity;
    std::string mRule;
    std::string mMessage;

    friend bool operator==(const Finding&, const Finding&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Finding& finding) {
        return out << finding.mPath << " (" << finding.mSeverity << ", " << finding.mRule << "): " << finding.mMessage;
    }
};

class Validation : public support::TreeTest {
protected:
    std::vector<Finding> Findings() const {
        std::vector<Finding> findings;
        for (const ValidationFinding& finding : ValidateXMP(Tree())) {
            findings.push_back({finding.path, finding.severity, ValidationRuleName(finding.rule),
                                zephcore::UTF16to8(zephcore::ResolveDisplayEscapes(finding.message))});
        }
        return findings;
    }
};

constexpr ValidationSeverity kError = kValidationSeverity_Error;
constexpr ValidationSeverity kWarning = kValidationSeverity_Warning;

TEST_F(Validation, FindsExactlyTheOneFaultOfAFile) {
    struct Row {
        const char* mBody;
        Finding mFinding;
    };
    const Row rows[] = {
        {"<f:a xmlns:f='urn:foreign:'>1</f:a><f:b xmlns:f='urn:foreign:'>2</f:b>",
         {"f:a", kWarning, "unknown-namespace", "no schema is known for the namespace \"urn:foreign:\""}},
        {"<dc:nope>1</dc:nope>", {"dc:nope", kWarning, "unknown-property", "the schema has no such property"}},
        {"<xmpMM:DerivedFrom rdf:parseType='Resource'><stRef:nope>1</stRef:nope></xmpMM:DerivedFrom>",
         {"xmpMM:DerivedFrom/stRef:nope", kWarning, "unknown-property", "the structure has no such field"}},
        {"<xmp:Identifier>boats</xmp:Identifier>",
         {"xmp:Identifier", kError, "shape", "is a single value where a bag is due"}},
        {"<dc:creator><rdf:Bag><rdf:li>Ines</rdf:li></rdf:Bag></dc:creator>",
         {"dc:creator", kError, "shape", "is a bag where a seq is due"}},
        {"<dc:source rdf:parseType='Resource'><stRef:a>1</stRef:a></dc:source>",
         {"dc:source", kError, "shape", "is a structure where a single value is due"}},
        {"<exif:PixelXDimension>x</exif:PixelXDimension>",
         {"exif:PixelXDimension", kError, "type", "\"x\" is not an integer"}},
        {"<xmp:CreateDate>yesterday</xmp:CreateDate>",
         {"xmp:CreateDate", kError, "type",
          "\"yesterday\" is not a date such as 2024-05-17 or 2024-05-17T09:30:00+02:00"}},
        {"<dc:date><rdf:Seq><rdf:li>2024</rdf:li><rdf:li>x</rdf:li></rdf:Seq></dc:date>",
         {"dc:date[2]", kError, "type", "\"x\" is not a date such as 2024-05-17 or 2024-05-17T09:30:00+02:00"}},
        {"<exif:MeteringMode>9</exif:MeteringMode>",
         {"exif:MeteringMode", kError, "choice", "\"9\" is none of: 1, 2, 3, 4, 5, 6, 255"}},
        {"<xmp:Rating>7</xmp:Rating>", {"xmp:Rating", kError, "bounds", "\"7\" is more than 5"}},
        {"<dc:title><rdf:Alt><rdf:li xml:lang='de'>Hafen</rdf:li><rdf:li "
         "xml:lang='fr'>Port</rdf:li></rdf:Alt></dc:title>",
         {"dc:title", kWarning, "default-language", "no text is marked as the default (x-default)"}},
        {"<xmp:Advisory><rdf:Bag><rdf:li>dc:title</rdf:li></rdf:Bag></xmp:Advisory>",
         {"xmp:Advisory", kWarning, "deprecated", "is deprecated"}},
        {"<exifEX:PhotographicSensitivity "
         "xmlns:exifEX='http://cipa.jp/exif/1.0/'>102400</exifEX:PhotographicSensitivity>",
         {"exifEX:PhotographicSensitivity", kWarning, "bounds",
          "\"102400\" is more than 65535, though CIPA DC-010 allows it"}},
        {"<xmpDM:videoFrameRate xmlns:xmpDM='http://ns.adobe.com/xmp/1.0/DynamicMedia/'>PAL</xmpDM:videoFrameRate>",
         {"xmpDM:videoFrameRate", kWarning, "type",
          "\"PAL\" is not a number, though XMP Specification Part 2 allows it"}},
        {"<xmpDM:markers xmlns:xmpDM='http://ns.adobe.com/xmp/1.0/DynamicMedia/'><rdf:Seq><rdf:li "
         "rdf:parseType='Resource'>"
         "<xmpDM:type>Speech</xmpDM:type></rdf:li></rdf:Seq>"
         "</xmpDM:markers>",
         {"xmpDM:markers[1]/xmpDM:type", kWarning, "choice",
          "\"Speech\" is none of: Chapter, Cue, Beat, Track, Index, though XMP Specification Part 2 allows it"}},
    };
    for (const Row& row : rows) {
        Load(row.mBody);
        EXPECT_THAT(Findings(), ::testing::ElementsAre(row.mFinding)) << row.mBody;
    }
    EXPECT_FALSE(HasErrors());
}

TEST_F(Validation, TellsTheFormsOfTypesAndOfPropertiesApart) {
    Load("<exif:FNumber>2.8</exif:FNumber><exif:GPSLatitude>north</exif:GPSLatitude>");
    const std::vector<Finding> findings = Findings();
    ASSERT_EQ(findings.size(), 2U);
    EXPECT_EQ(findings[0].mRule, "type");
    EXPECT_EQ(findings[0].mMessage, "\"2.8\" does not have the form of Rational, for example 1/250");
    EXPECT_EQ(findings[1].mPath, "exif:GPSLatitude");
}

TEST_F(Validation, HasNothingAgainstWhatIsAllowed) {
    Load(
        "<dc:title><rdf:Alt><rdf:li xml:lang='x-default'>Harbour</rdf:li></rdf:Alt></dc:title>"
        "<dc:subject><rdf:Bag><rdf:li>boats</rdf:li></rdf:Bag></dc:subject><dc:source/>"
        "<xmp:CreateDate/><xmpMM:History><rdf:Seq><rdf:li rdf:parseType='Resource'><stEvt:action>saved</stEvt:action>"
        "<stEvt:when>2024-05-17</stEvt:when></rdf:li></rdf:Seq></xmpMM:History>"
        "<tiff:YCbCrSubSampling><rdf:Seq><rdf:li>2</rdf:li><rdf:li>2</rdf:li></rdf:Seq></tiff:YCbCrSubSampling>"
        "<exif:Flash rdf:parseType='Resource'><exif:Fired>True</exif:Fired><exif:Mode>1</exif:Mode></exif:Flash>");
    EXPECT_THAT(Findings(), ::testing::IsEmpty());
    EXPECT_THAT(ValidateXMP(nullptr), ::testing::IsEmpty());
}

TEST_F(Validation, TakesTheLanguagesInAnArrayForTexts) {
    RegisterBundledPackages();
    Load(
        "<plus:Custom1 xmlns:plus='http://ns.useplus.org/ldf/xmp/1.0/'><rdf:Bag><rdf:li><rdf:Alt>"
        "<rdf:li xml:lang='x-default'>Port</rdf:li></rdf:Alt></rdf:li></rdf:Bag></plus:Custom1>");
    EXPECT_THAT(Findings(), ::testing::IsEmpty());
}

}  // namespace
}  // namespace zephmetadata
