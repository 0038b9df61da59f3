#include "zephcore/text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "zephcore/xml.h"

namespace zephcore {
namespace {

struct ConversionRow {
    std::string_view mUTF8;
    std::u16string_view mUTF16;
};

TEST(Text, ConvertsWellFormedTextBothWays) {
    using namespace std::string_view_literals;
    for (const ConversionRow& row : {ConversionRow{"", u""},
                                     {"plain", u"plain"},
                                     {"\xC3\xA9\xE2\x82\xAC", u"\u00E9\u20AC"},
                                     {"\xF0\x9F\x98\x80", u"\U0001F600"},
                                     {"a\0b\0"sv, u"a\0b\0"sv},
                                     {"\xEF\xBB\xBFx", u"\uFEFFx"}}) {
        TextError error = TextError::kMalformed;
        EXPECT_EQ(UTF8to16(row.mUTF8, &error), row.mUTF16);
        EXPECT_EQ(error, TextError::kNone) << row.mUTF8;
        error = TextError::kMalformed;
        EXPECT_EQ(UTF16to8(row.mUTF16, &error), row.mUTF8);
        EXPECT_EQ(error, TextError::kNone) << row.mUTF8;
    }
}

TEST(Text, ReplacesAndReportsIllFormedText) {
    for (const ConversionRow& row : {ConversionRow{"a\xFF", u"a\uFFFD"},
                                     {"\xC0\xBC", u"\uFFFD\uFFFD"},
                                     {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},
                                     {"\xE2\x82", u"\uFFFD"},
                                     {"\xF4\x90\x80\x80x", u"\uFFFD\uFFFD\uFFFD\uFFFDx"}}) {
        TextError error = TextError::kNone;
        EXPECT_EQ(UTF8to16(row.mUTF8, &error), row.mUTF16);
        EXPECT_EQ(error, TextError::kMalformed);
    }
    const std::u16string_view loneSurrogates[] = {u"\xD83Dx", u"\xDE00x"};
    for (const std::u16string_view text : loneSurrogates) {
        TextError error = TextError::kNone;
        EXPECT_EQ(UTF16to8(text, &error), "\xEF\xBF\xBDx");
        EXPECT_EQ(error, TextError::kMalformed);
    }
}

struct NumberRow {
    double mValue;
    int mIntegerDigits;
    int mFractionDigits;
    int mWidth;
    const char* mText;
};

class NumberText : public ::testing::TestWithParam<NumberRow> {};

TEST_P(NumberText, IsPlainDecimal) {
    const NumberRow& row = GetParam();
    EXPECT_EQ(UTF16to8(NumberToString(row.mValue, row.mIntegerDigits, row.mFractionDigits, 0, row.mWidth)), row.mText);
}

constexpr double kInfinity = std::numeric_limits<double>::infinity();

INSTANTIATE_TEST_SUITE_P(
    Text, NumberText,
    ::testing::Values(NumberRow{0, 1, 3, 31, "0"}, NumberRow{-0.0, 1, 3, 31, "0"}, NumberRow{2.0, 1, 3, 31, "2"},
                      NumberRow{1.005, 1, 2, 31, "1.01"} /* 1.00499... in binary */, NumberRow{-2.5, 1, 0, 31, "-3"},
                      NumberRow{0.5, 1, 0, 31, "1"}, NumberRow{-0.04, 1, 1, 31, "0"},
                      NumberRow{-0.05, 1, 1, 31, "-0.1"}, NumberRow{9.995, 1, 2, 31, "10"},
                      NumberRow{999.96, 1, 1, 31, "1000"}, NumberRow{7.25, 3, 2, 31, "007.25"},
                      NumberRow{-7.25, 3, 1, 31, "-007.3"}, NumberRow{-0.0, 2, 1, 31, "00"},
                      NumberRow{1e21, 1, 2, 31, "1000000000000000000000"}, NumberRow{1e-7, 1, 9, 31, "0.0000001"},
                      NumberRow{3.14159, 1, -1, 31, "3"}, NumberRow{3.14159, 1, 5, 4, "3.14"},
                      NumberRow{-3.14159, 1, 5, 4, "-3.1"}, NumberRow{12345.678, 1, 3, 4, "12345"},
                      NumberRow{1.001, 1, 3, 4, "1"}, NumberRow{-0.001, 1, 3, 4, "0"},
                      NumberRow{kInfinity, 1, 3, 31, "inf"}, NumberRow{-kInfinity, 1, 3, 31, "-inf"},
                      NumberRow{std::nan(""), 1, 3, 31, "nan"}));

TEST(Text, WritesTheLargestAndSmallestNumbers) {
    EXPECT_EQ(NumberToString(-std::numeric_limits<double>::max(), 1, 2).size(), 310U);
    EXPECT_EQ(NumberToString(std::numeric_limits<double>::denorm_min(), 1, 400, 0, 400).size(), 326U);
}

TEST(Text, ReadsTheNumberAtTheStart) {
    struct Row {
        std::u16string_view mText;
        double mValue;
    };
    const std::u16string manyDigits(400, u'1');
    for (const Row& row : {Row{u"", 0},
                           Row{u" \t\n12", 12},
                           Row{u"+1.5", 1.5},
                           Row{u"-1.5e2mm", -150},
                           Row{u"+-1", 0},
                           Row{u"- 1", 0},
                           Row{u".5", 0.5},
                           Row{u"1e", 1},
                           Row{u"1,5", 1},
                           Row{u"0x10", 0},
                           Row{u"inf", 0},
                           Row{u"\uFF11", 0},
                           Row{u"1e999", kInfinity},
                           Row{u"-1e999", -kInfinity},
                           Row{u"1e-999", 0},
                           Row{u"0e999", 0},
                           Row{manyDigits, kInfinity},
                           Row{u"1e99999999999999999999", kInfinity},
                           Row{u"1e-99999999999999999999", 0},
                           Row{u"0.1", 0.1}}) {
        EXPECT_EQ(StringToNumber(row.mText), row.mValue) << UTF16to8(row.mText);
    }
}

TEST(Text, EncodesForXml) {
    struct Row {
        std::string mText;
        std::string mEncoded;
    };
    for (const Row& row :
         {Row{"<a b=\"c\" d='e'>&amp;", "&lt;a b=&quot;c&quot; d=&apos;e&apos;&gt;&amp;amp;"},
          Row{"\t\n\r ", "&#9;&#10;&#13; "}, Row{std::string("a\0b\x1F\x7F", 5), "ab\x7F"},
          Row{"\xC3\xA9\xF0\x9F\x98\x80", "\xC3\xA9\xF0\x9F\x98\x80"}, Row{"a\xC3", "a"},
          Row{"a\xFF\xED\xA0\x80z", "az"}, Row{"\xEF\xBF\xBE\xEF\xBF\xBF\xEF\xBF\xBD", "\xEF\xBF\xBD"}}) {
        EXPECT_EQ(EncodeReservedCharacters(row.mText), row.mEncoded);
    }
}

TEST(Text, DecodesReferencesInOnePass) {
    struct Row {
        UTF16String mText;
        UTF16String mDecoded;
    };
    for (const Row& row : {Row{u"&lt;&gt;&amp;&quot;&apos;", u"<>&\"'"}, Row{u"&amp;lt;", u"&lt;"},
                           Row{u"&#65;&#x41;&#x1F600;&#0000065;", u"AA\U0001F600A"}, Row{u"&#9;&#xA;", u"\t\n"},
                           Row{u"&nbsp;&LT;&lt", u"&nbsp;&LT;&lt"}, Row{u"a&", u"a&"}, Row{u"&&lt;", u"&<"},
                           Row{u"&#;&#x;&#X41;&#-1;&#6a;", u"&#;&#x;&#X41;&#-1;&#6a;"},
                           Row{u"&#0;&#1;&#xD800;&#xFFFE;", u"&#0;&#1;&#xD800;&#xFFFE;"},
                           Row{u"&#x110000;&#99999999999999999999;", u"&#x110000;&#99999999999999999999;"},
                           Row{u"&#65", u"&#65"}, Row{u"&#", u"&#"}}) {
        EXPECT_EQ(DecodeReservedCharacters(row.mText), row.mDecoded) << UTF16to8(row.mText);
    }
}

TEST(Text, EncodedAttributeValuesComeBackFromTheParser) {
    struct ValueHandler : AbstractParseHandler {
        explicit ValueHandler(UTF16String& value) : mValue(value) {}
        void StartElement(const UTF16String&, const AttributeMap& attributes) override { mValue = attributes.at(u"b"); }
        UTF16String& mValue;
    };
    const UTF8String text = "\t<&>\r\n'\"  \xE2\x82\xAC ";
    UTF16String value;
    const auto parser = GetParser(std::make_unique<ValueHandler>(value));
    EXPECT_EQ(parser->ParseBuffer("<a b='" + EncodeReservedCharacters(text) + "'/>"), 0);
    EXPECT_EQ(UTF16to8(value), text);
}

TEST(MatchesPattern, HoldsAllOfATextAgainstAPattern) {
    struct Row {
        const char* mPattern;
        std::string mText;
        bool mMatches;
    };
    const Row rows[] = {
        {"[0-9]+/[0-9]+", "28/10", true},
        {"[0-9]+/[0-9]+", "28/10 ", false},
        {"[0-9]+", "", false},
        {"\xC3\xA9+", "\xC3\xA9\xC3\xA9", true},
        {"[0-9", "anything: the pattern is none", true},
        {"(a+)+b", std::string(200, 'a') + "c: takes too long", true},
        {"(a|b)*", std::string(100000, 'a'), true},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(MatchesPattern(row.mPattern, row.mText), row.mMatches)
            << row.mPattern << " " << row.mText.substr(0, 40);
    }
}

}  // namespace
}  // namespace zephcore
