#include "zephcore/localizer.h"

#include <gtest/gtest.h>

#include "support/temp_folder.h"
#include "zephcore/files.h"
#include "zephcore/text.h"

namespace zephcore {
namespace {

class LocalizerTest : public ::testing::Test {
protected:
    ~LocalizerTest() override { Localizer::Get().Clear(); }
    Localizer& mLocalizer = Localizer::Get();
};

struct EntryRow {
    const char* mLine;
    std::u16string_view mTranslation;
};

TEST_F(LocalizerTest, ReadsEachKindOfLine) {
    constexpr std::u16string_view kSkipped = u"default";
    for (const EntryRow& row : {EntryRow{"\"$$$/a/b=quoted\"", u"quoted"},
                                EntryRow{"\"$$$/a/b=quoted\"  \r", u"quoted"},
                                EntryRow{"  \"$$$/a/b=indented\"", u"indented"},
                                EntryRow{"$$$/a/b=plain text ", u"plain text "},
                                EntryRow{"$$$/a/b=c:\\new \"x\"\r", u"c:\\new \"x\""},
                                EntryRow{"\"$$$/a/b=1\\n2 \\\"3\\\" \\\\n \\t\"", u"1\n2 \"3\" \\n \\t"},
                                EntryRow{"\"$$$/a/b=\"", u""},
                                EntryRow{"$$$/a/b=x=y", u"x=y"},
                                EntryRow{"$$$/a/b=\xC3\xA9\xFF", u"\u00E9\uFFFD"},
                                EntryRow{"$$$/a/b=one\n$$$/a/b=two", u"two"},
                                EntryRow{"# $$$/a/b=x", kSkipped},
                                EntryRow{"#\"$$$/a/b=x\"", kSkipped},
                                EntryRow{"\"$$$/a/b=x", kSkipped},
                                EntryRow{"\"$$$/a/b=x\\\"", kSkipped},
                                EntryRow{"\"$$$/a/b=x\" y", kSkipped},
                                EntryRow{"$$$/a/b", kSkipped},
                                EntryRow{"/a/b=x", kSkipped},
                                EntryRow{"$$$/a/bc=x", kSkipped},
                                EntryRow{"\"", kSkipped},
                                EntryRow{"\n\n=", kSkipped}}) {
        mLocalizer.Clear();
        mLocalizer.LoadBuffer(std::string("not an entry\n\n") + row.mLine + "\n$$$/after=kept");
        EXPECT_EQ(mLocalizer.Translate(u"$$$/a/b=default"), row.mTranslation) << row.mLine;
        EXPECT_EQ(mLocalizer.Translate(u"$$$/after="), u"kept") << row.mLine;
    }
}

TEST_F(LocalizerTest, ReadsEveryEncodingOfAFile) {
    const support::TempFolder folder;
    using namespace std::string_literals;
    const std::string bigEndian = "\xFE\xFF\0$\0$\0$\0/\0a\0=\x20\xAC\0\r\0\n\0"s;
    const std::string littleEndian = "\xFF\xFE$\0$\0$\0/\0a\0=\0\xAC\x20"s;
    for (const std::string& bytes : {bigEndian, littleEndian, std::string("\xEF\xBB\xBF$$$/a=\xE2\x82\xAC")}) {
        mLocalizer.Clear();
        EXPECT_TRUE(mLocalizer.LoadFile(PathFromNative(folder.Write("texts.dat", bytes).native())));
        EXPECT_EQ(mLocalizer.Translate(u"$$$/a=x"), u"\u20AC");
    }
    EXPECT_FALSE(mLocalizer.LoadFile(PathFromNative(folder.Path().native())));
    EXPECT_FALSE(mLocalizer.LoadFile(PathFromNative((folder.Path() / "missing").native())));
    const std::string tooLarge = "$$$/a=large\n" + std::string(17U << 20U, '#');
    EXPECT_FALSE(mLocalizer.LoadFile(PathFromNative(folder.Write("large.dat", tooLarge).native())));
    EXPECT_EQ(mLocalizer.Translate(u"$$$/a=x"), u"\u20AC") << "a failed load changes nothing";
}

TEST_F(LocalizerTest, LeavesOtherTextsUnchanged) {
    mLocalizer.LoadBuffer("$$$/a=A");
    const std::u16string_view texts[] = {u"", u"plain=text", u"$$$/a", u"$$/a=x", u" $$$/a=x"};
    for (const std::u16string_view text : texts) {
        EXPECT_EQ(mLocalizer.Translate(text), text) << UTF16to8(text);
    }
    EXPECT_EQ(mLocalizer.Translate(u"$$$/b=text with #{quot}=sign"), u"text with #{quot}=sign");
}

TEST_F(LocalizerTest, PutsArgumentsIntoTheTranslation) {
    EXPECT_EQ(ReplaceInString(u"@0-@1-@0@9 @x a@ @@1@", {u"@1", u"B"}), u"@1-B-@1 @x a@ @B@");
    EXPECT_EQ(ReplaceInString(u"@9@10", {u"0", u"1", u"2", u"3", u"4", u"5", u"6", u"7", u"8", u"9"}), u"910");
    mLocalizer.LoadBuffer("$$$/swap=@1 @0");
    EXPECT_EQ(ZString(u"$$$/swap=@0 @1", {u"one", u"two"}), u"two one");
    EXPECT_EQ(ZString(u"$$$/other=@0 @1", {u"one", u"two"}), u"one two");
    EXPECT_EQ(ResolveDisplayEscapes(ZString(u"$$$/a=#{quot}@0#{quot}@1", {u"##{U+41}#{#{lt}", u"#{quot}#"})),
              u"\"##{U+41}#{#{lt}\"#{quot}#");
}

TEST(DisplayEscapes, AreResolvedOnce) {
    struct Row {
        std::u16string_view mText, mShown;
    };
    for (const Row& row :
         {Row{u"#{quot}#{amp}#{lt}#{gt}#{apos}", u"\"&<>'"},
          Row{u"a #{U+221E}#{U+41}#{U+01f600} z", u"a \u221EA\U0001F600 z"}, Row{u"#{amp}#{U+23}{lt}", u"&#{lt}"},
          Row{u"##{lt}#", u"#<#"}, Row{u"#{#{lt}", u"#{<"}, Row{u"#{nbsp}#{Quot}#{}#{U+}", u"#{nbsp}#{Quot}#{}#{U+}"},
          Row{u"#{U+D800}#{U+110000}", u"#{U+D800}#{U+110000}"},
          Row{u"#{U+0000041}#{U+4G}#{u+41}", u"#{U+0000041}#{U+4G}#{u+41}"}, Row{u"#{lt", u"#{lt"}, Row{u"#{", u"#{"},
          Row{u"", u""}}) {
        EXPECT_EQ(ResolveDisplayEscapes(row.mText), row.mShown) << UTF16to8(row.mText);
    }
}

}  // namespace
}  // namespace zephcore
