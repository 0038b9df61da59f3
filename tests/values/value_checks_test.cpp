#include "support/values_test.h"
#include "zephcore/localizer.h"

namespace zephmetadata {
namespace {

class ValueChecks : public support::LibraryTest {};

TEST_F(ValueChecks, SayWhyATextIsNotAllowed) {
    struct Row {
        const char* mExpression;
        const char* mValue;
        const char* mReason;
    };
    const Row rows[] = {
        {"dc:source", "anything", ""},
        {"dc:title", "anything", ""},
        {"dc:nothing", "x", "no definition describes it"},
        {"xmpMM:DerivedFrom", "x", "it is a structure; set its fields"},
        {"Iptc4xmpExt:LocationShown", "x", "its items are structures; set their fields"},
        {"xmp:Thumbnails", "x", "its items are structures; set their fields"},
        {"xmpDM:trackNumber", "12", ""},
        {"xmpDM:trackNumber", "12a", "\"12a\" is not an integer"},
        {"xmpDM:trackNumber", "", "\"\" is not an integer"},
        {"xmp:Rating", "4.5", ""},
        {"xmp:Rating", "#{U+41}", "\"#{U+41}\" is not a number"},
        {"xmp:Rating", "6", "\"6\" is more than 5"},
        {"xmp:Rating", "-2", "\"-2\" is less than -1"},
        {"xmpRights:Marked", "true", ""},
        {"xmpRights:Marked", "yes", "\"yes\" is neither True nor False"},
        {"xmp:CreateDate", "2024-02-29", ""},
        {"xmp:CreateDate", "2023-02-29",
         "\"2023-02-29\" is not a date such as 2024-05-17 or 2024-05-17T09:30:00+02:00"},
        {"dc:date", "2024; x", "\"x\" is not a date such as 2024-05-17 or 2024-05-17T09:30:00+02:00"},
        {"Iptc4xmpExt:ModelAge", "3; 5", ""},
        {"Iptc4xmpExt:ModelAge", "3; old", "\"old\" is not an integer"},
        {"exif:FNumber", "28/10", ""},
        {"exif:FNumber", "x", "\"x\" does not have the form of Rational, for example 1/250"},
        {"exif:GPSImgDirection", "3599/10", ""},
        {"exif:GPSImgDirection", "400/1", "\"400/1\" is more than 359.99"},
        {"exif:GPSImgDirection", "-1/1", "\"-1/1\" is less than 0"},
        {"Iptc4xmpCore:Scene", "010100; 011200", ""},
        {"Iptc4xmpCore:Scene", "010100; 1120",
         "\"1120\" does not have the form of IPTC Scene Code, for example 011100"},
        {"exif:GPSLatitude", "58,58.198N", ""},
        {"exif:GPSLatitude", "58,58,11N", ""},
        {"dc:source", "bad \x01", "it holds control characters or bytes that are no UTF-8"},
        {"dc:source", "bad \xC3", "it holds control characters or bytes that are no UTF-8"},
        {"exif:GPSStatus", "A", ""},
        {"exif:GPSStatus", "a", "\"a\" is none of: A, V"},
        {"xmpMM:RenditionClass", "whatever", ""},
    };
    for (const Row& row : rows) {
        const UTF16String reason = WhyNotAllowed(PathForExpression(row.mExpression), row.mValue);
        EXPECT_EQ(zephcore::UTF16to8(zephcore::ResolveDisplayEscapes(reason)), row.mReason)
            << row.mExpression << "=" << row.mValue;
    }
}

}  // namespace
}  // namespace zephmetadata
