#include "cli/cli_runner.h"

namespace cli {
namespace {

using ::testing::HasSubstr;

class ConvertPanelsCommand : public CliTest {
protected:
    Outcome Run(const Arguments& arguments) const {
        Arguments all = {"ZEPHCORE_SYSTEM_DIR=" + At("system").string(),
                         "ZEPHCORE_GLOBAL_PREF_DIR=" + At("user").string(), ZEPHMETA_PROGRAM, "convert-panels"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        return RunProgram(At(""), "env", all);
    }
    std::string Panels(const std::string& base) const {
        return At(base + "/Corvid/XMP/Custom Quillet Panels/4.0/panels").string();
    }
    void WritePanel(const std::string& name, const std::string& document) const {
        const std::string folder = "user/Corvid/XMP/Custom Quillet Panels/4.0/panels/" + name;
        Write(folder + "/manifest.xml",
              "<panel xmlns='http://ns.zephmetadata.org/xmp/quillet/' name='P' "
              "type='generic' propertyDescriptionFile='p.xml'/>");
        Write(folder + "/p.xml", document);
    }
};

TEST_F(ConvertPanelsCommand, PrintsTheLog) {
    const std::string none = "INFO - No Generic Panels found in folder '" + Panels("system") + "' to convert.\n\n";
    EXPECT_EQ(
        Run({"--generation", "4.0"}),
        (Outcome{0, "INFO - No Generic Panels found in folder '" + Panels("user") + "' to convert.\n\n" + none, ""}));
    const std::string package = At("user/Corvid/XMP/Metadata Extensions/p").string();
    WritePanel("p", "<xmp_definitions/>");
    EXPECT_EQ(Run({"--generation", "4.0"}),
              (Outcome{0, "SUCCESS - Converted '" + Panels("user") + "/p' to '" + package + "'\n\n" + none, ""}));

    WritePanel("a\n\nb\x1b", "<");
    const std::string broken = Panels("user") + "/a\n\nb\x1b";
    const Outcome json = Run({"--json", "--generation=4.0"});
    EXPECT_EQ(json.mStatus, 1);
    const Json expected = {
        {"entries",
         {{{"kind", "failure"},
           {"message", "Cannot convert '" + broken + "'. Found invalid XML in '" + broken + "/p.xml'."}},
          {{"kind", "info"},
           {"message",
            "Cannot convert '" + Panels("user") + "/p'. Extension Package folder '" + package + "' already exists."}},
          {{"kind", "info"},
           {"message", "No Generic Panels found in folder '" + Panels("system") + "' to convert."}}}}};
    EXPECT_EQ(Json::parse(json.mOutput, nullptr, false), expected);
    EXPECT_THAT(json.mErrors, HasSubstr("p.xml:1: Error parsing definitions file: invalid XML.\n"));
    const Outcome text = Run({"--generation", "4.0"});
    EXPECT_EQ(text.mStatus, 1);
    EXPECT_THAT(text.mOutput, HasSubstr("/a\n\nb\\x1b'. Found")) << "harmless to a terminal";
}

TEST_F(ConvertPanelsCommand, NeedsAGeneration) {
    EXPECT_EQ(Run({}), (Outcome{2, "", "zephmeta: --generation is required; see \"zephmeta --help\"\n"}));
    EXPECT_EQ(Run({"--generation", "1"}).mStatus, 2);
    EXPECT_THAT(Run({"--help"}).mOutput, HasSubstr("\"Corvid/XMP/Metadata Extensions\""));
}

}  // namespace
}  // namespace cli
