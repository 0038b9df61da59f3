#include "support/library_test.h"

namespace zephmetadata {
namespace {

TEST(Folders, LieBelowTheirBases) {
    const support::TempFolder folder;
    const std::string base = (folder.Path() / "base").string();
    struct Row {
        UTF16String mActual;
        std::string mExpected;
        bool mCreated;
    };
    const std::string quillet = "/Corvid/XMP/Custom Quillet Panels/";
    const Row rows[] = {
        {CustomDefinitionsGlobalDirectory(), "/SYSTEM" + quillet + "4.0/custom", false},
        {CustomDefinitionsUserDirectory(), "/GLOBAL_PREF" + quillet + "4.0/custom", false},
        {PanelsDefinitionsGlobalDirectory(OrbVersion::kOrbVersion_4_0), "/SYSTEM" + quillet + "4.0/panels", false},
        {PanelsDefinitionsGlobalDirectory(OrbVersion::kOrbVersion_3_0), "/SYSTEM" + quillet + "3.0/panels", false},
        {PanelsDefinitionsUserDirectory(OrbVersion::kOrbVersion_2_0), "/GLOBAL_PREF" + quillet + "2.0/panels", false},
        {PanelsDefinitionsUserDirectory(static_cast<OrbVersion>(7)), "/GLOBAL_PREF" + quillet + "2.0/panels", false},
        {XMPFilesPluginsDirectory(), "/PLUGINS/XMPFiles", false},
        {CustomExtensionsGlobalDirectory(), "/SYSTEM/Corvid/XMP/Metadata Extensions", true},
        {CustomExtensionsUserDirectory(), "/GLOBAL_PREF/Corvid/XMP/Metadata Extensions", true},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(zephcore::UTF16to8(row.mActual), base + row.mExpected);
        EXPECT_EQ(std::filesystem::is_directory(base + row.mExpected), row.mCreated) << row.mExpected;
    }
}

}  // namespace
}  // namespace zephmetadata
