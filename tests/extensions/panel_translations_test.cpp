#include "extensions/panel_translations.h"

#include "extensions/panel_fixture.h"
#include "zephcore/localizer.h"

namespace zephmetadata {
namespace {

/// The greatest number of ASCII characters of which the localizer still reads the UTF-16 form.
constexpr std::size_t kMostCharacters = (8U << 20U) - 1;

const std::string kFailedFile =
    "FAILURE - Cannot convert 'PANELS/p'. Localization file 'EXTENSIONS/p/loc/a.dict' cannot be converted.\n\n";

std::string UTF16(std::u16string_view text, bool isBigEndian = false) {
    std::string bytes;
    for (const char16_t unit : text) {
        const std::string low(1, static_cast<char>(unit & 0xFFU));
        const std::string high(1, static_cast<char>(unit >> 8U));
        bytes += isBigEndian ? high + low : low + high;
    }
    return bytes;
}

struct FileRow {
    const char* mLabel;
    std::string mBytes;
    std::string mConverted;
    UTF16String mTranslation;  // of "$$$/k"

    friend void PrintTo(const FileRow& row, std::ostream* out) { *out << row.mLabel; }
};

class PanelTranslations : public support::PanelTest {
protected:
    PanelTranslations() { WritePanel("p", Manifest(), TitleDocument()); }
};

class ConvertedFiles : public PanelTranslations, public ::testing::WithParamInterface<FileRow> {};

TEST_P(ConvertedFiles, AreReadByTheLocalizer) {
    WritePanel("p/loc/a.b.dat", GetParam().mBytes);
    EXPECT_EQ(Convert(), kConverted + kNoneForAll);
    EXPECT_EQ(Package("loc/a.b.dict"), GetParam().mConverted);
    zephcore::Localizer localizer;
    EXPECT_TRUE(localizer.LoadFile(zephcore::PathFromNative((Extensions() / "p/loc/a.b.dict").native())));
    EXPECT_EQ(localizer.Translate(u"$$$/k=default"), GetParam().mTranslation);
}

const FileRow kFileRows[] = {
    {"Ascii", "\"$$$/k=v\"\r\n", UTF16(u"\uFEFF\"$$$/k=v\"\r\n"), u"v"},
    {"Utf8", "$$$/k=\u00E9\U0001F600", UTF16(u"\uFEFF$$$/k=\u00E9\U0001F600"), u"\u00E9\U0001F600"},
    {"Utf8WithMark", "\uFEFF$$$/k=\u00E9", UTF16(u"\uFEFF$$$/k=\u00E9"), u"\u00E9"},
    {"Utf16", UTF16(u"\uFEFF$$$/k=\u00E9"), UTF16(u"\uFEFF$$$/k=\u00E9"), u"\u00E9"},
    {"BigEndian", UTF16(u"\uFEFF$$$/k=\u00E9", true), UTF16(u"\uFEFF$$$/k=\u00E9", true), u"\u00E9"},
    {"WithReplacementCharacter", "$$$/k=\uFFFD", UTF16(u"\uFEFF$$$/k=\uFFFD"), u"\uFFFD"},
    {"Empty", "", UTF16(u"\uFEFF"), u"default"},
};

INSTANTIATE_TEST_SUITE_P(Rows, ConvertedFiles, ::testing::ValuesIn(kFileRows),
                         [](const auto& row) { return row.param.mLabel; });

TEST_F(PanelTranslations, AreNotNeeded) {
    std::filesystem::create_directories(Panels() / "p" / "loc" / "folder");
    EXPECT_EQ(Convert(), kConverted + kNoneForAll);
    EXPECT_FALSE(HasPackage("loc"));
}

TEST_F(PanelTranslations, AreConvertedAsFarAsTheyCanBe) {
    WritePanel("p/loc/a.dat", "$$$/k=\xC3");
    EXPECT_EQ(Convert(), kFailedFile + kNoneForAll);
    EXPECT_TRUE(HasPackage("view/view.xml")) << "the package stays as far as it is";
    EXPECT_FALSE(HasPackage("loc"));

    std::filesystem::remove_all(Extensions());
    WritePanel("p/loc/a.dat", std::string(kMostCharacters + 1, '\n'));
    WritePanel("p/loc/b.dat", "$$$/k=v" + std::string(kMostCharacters - 7, '\n'));
    EXPECT_EQ(Convert(), kFailedFile + kNoneForAll);
    EXPECT_FALSE(HasPackage("loc/a.dict"));
    zephcore::Localizer localizer;
    EXPECT_TRUE(localizer.LoadFile(zephcore::PathFromNative((Extensions() / "p/loc/b.dict").native())));
    EXPECT_EQ(localizer.Translate(u"$$$/k=default"), u"v") << "as large as a file may be";
}

TEST_F(PanelTranslations, NeedAFolder) {
    WritePanel("p/loc/a.dat", "$$$/k=v");
    Folder().Write("package/loc", "x");
    const auto path = [](const std::filesystem::path& native) { return zephcore::PathFromNative(native.native()); };
    UTF16String text;
    ConversionLog log(text);
    EXPECT_FALSE(ConvertTranslations(PanelFolder(zephcore::Dir(path(Panels() / "p"))),
                                     zephcore::Dir(path(Folder().Path() / "package")), log));
    EXPECT_EQ(text, u"FAILURE - Cannot convert '" + path(Panels() / "p") + u"'. Localization folder '" +
                        path(Folder().Path() / "package" / "loc") + u"' cannot be created.\n\n");
    EXPECT_EQ(support::ReadFile(Folder().Path() / "package" / "loc"), "x");
}

}  // namespace
}  // namespace zephmetadata
