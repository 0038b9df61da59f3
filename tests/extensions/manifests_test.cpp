#include <filesystem>

#include "support/library_test.h"
#include "zephcore/files.h"
#include "zephmetadata/extensions.h"

namespace zephmetadata {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using zephcore::UTF8to16;
using PanelInfo = GenericPanelManifestParser::ManifestInfo;
using Fields = std::vector<UTF16String>;

const std::string kPanel = "<panel xmlns='http://ns.zephmetadata.org/xmp/quillet/' ";
const Fields kNothing(11);

Fields FieldsOf(const PanelInfo& info) {
    return {info.name,
            info.label,
            info.description,
            info.type,
            info.version,
            info.panelLibrary,
            info.panelClass,
            info.propertyDescriptionFile,
            info.localizationFile,
            info.modifyDate,
            info.visible};
}

struct ManifestRow {
    const char* mLabel;
    std::string mDocument;
    Fields mFields;
    bool mWellFormed = true;

    friend void PrintTo(const ManifestRow& row, std::ostream* out) { *out << row.mDocument; }
};

class Manifests : public support::LibraryTest {
protected:
    UTF16String Path(const fs::path& name) const { return zephcore::PathFromNative((Folder().Path() / name).native()); }
};

class PanelManifests : public Manifests, public ::testing::WithParamInterface<ManifestRow> {};

TEST_P(PanelManifests, AreReadAsTheyAre) {
    const ManifestRow& row = GetParam();
    Folder().Write("manifest.xml", row.mDocument);
    PanelInfo info;
    EXPECT_EQ(ParseManifestFromDocument(Path("manifest.xml"), info), row.mWellFormed);
    EXPECT_EQ(FieldsOf(info), row.mFields);
    if (row.mWellFormed) {
        EXPECT_THAT(Records(), IsEmpty());
    } else {
        EXPECT_THAT(Records(), ElementsAre(Record{ErrorKind::GenericPanelManifestError, "invalid XML.",
                                                  (Folder().Path() / "manifest.xml").string()}));
    }
}

const ManifestRow kRows[] = {
    {"Whole",
     kPanel + "name='1' label='$$$/a=2' description='3' type='4' version='5' panelLibrary='6' panelClass='7' "
              "propertyDescriptionFile='8' localizationFile='9' modifyDate='10' visible='11' other='12'/>",
     {u"1", u"$$$/a=2", u"3", u"4", u"5", u"6", u"7", u"8", u"9", u"10", u"11"}},
    {"AttributesOfAnyNamespace",
     kPanel + "xmlns:a='urn:a' a:name='&quot;&amp;amp;' a:type='generic' Version='1'/>",
     {u"\"&amp;", u"", u"", u"generic", u"", u"", u"", u"", u"", u"", u""}},
    {"LaterValuesReplaceEarlierOnes",
     "<a>" + kPanel +
         "name='first' label='kept'><b/></panel><p:panel xmlns:p='http://ns.zephmetadata.org/xmp/quillet/' "
         "name='second' label=''/></a>",
     {u"second", u"kept", u"", u"", u"", u"", u"", u"", u"", u"", u""}},
    {"OtherElements",
     "<panel name='a'><Panel xmlns='http://ns.zephmetadata.org/xmp/quillet/' name='b'/>"
     "<panel xmlns='http://ns.zephmetadata.org/xmp/quillet' name='c'/></panel>",
     kNothing},
    {"BrokenLater",
     kPanel + "name='read' type='generic'>",
     {u"read", u"", u"", u"generic", u"", u"", u"", u"", u"", u"", u""},
     false},
    {"BrokenAtOnce", kPanel + "name='a", kNothing, false},
};

INSTANTIATE_TEST_SUITE_P(Rows, PanelManifests, ::testing::ValuesIn(kRows),
                         [](const auto& row) { return row.param.mLabel; });

TEST_F(Manifests, OfPackagesAreWrittenFromThoseOfPanels) {
    PanelInfo info;
    info.name = u"A \"B\" & <C>\n\u00E9";
    info.label = u"not written";
    info.version = u"1.5";
    info.localizationFile = u"tides";
    const UTF16String path = Path("new/folder/manifest.xml");
    EXPECT_TRUE(WriteExtensionManifest(info, path));
    EXPECT_EQ(support::ReadFile(Folder().Path() / "new/folder/manifest.xml"),
              "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n"
              "<extension xmlns=\"http://ns.zephmetadata.org/metadata/extension/1.0/\" "
              "name=\"A &quot;B&quot; &amp; &lt;C&gt;&#10;\u00E9\" version=\"1.5\" locFilePrefix=\"tides\">\n"
              "</extension>\n");
    ExtensionManifestParser::ManifestInfo read;
    EXPECT_TRUE(ParseExtensionManifestFromDocument(path, read));
    EXPECT_EQ(read.name, info.name);
    EXPECT_EQ(read.version, u"1.5");
    EXPECT_EQ(read.locFilePrefix, u"tides");

    EXPECT_TRUE(WriteExtensionManifest({}, path));
    EXPECT_EQ(support::ReadFile(Folder().Path() / "new/folder/manifest.xml"),
              "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n"
              "<extension xmlns=\"http://ns.zephmetadata.org/metadata/extension/1.0/\">\n</extension>\n");
    EXPECT_TRUE(ParseExtensionManifestFromDocument(path, read));
    EXPECT_EQ(read.name + read.version + read.locFilePrefix, u"");
    EXPECT_THAT(Records(), IsEmpty());
}

TEST_F(Manifests, AreNotWrittenWithoutAFolder) {
    Folder().Write("file", "x");
    EXPECT_FALSE(WriteExtensionManifest({}, Path("file/manifest.xml")));
    EXPECT_EQ(support::ReadFile(Folder().Path() / "file"), "x");
    fs::create_directory(Folder().Path() / "manifest.xml");
    EXPECT_TRUE(WriteExtensionManifest({}, Path("manifest.xml"))) << "a folder has the name of the file";
}

}  // namespace
}  // namespace zephmetadata
