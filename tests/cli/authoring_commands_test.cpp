#include "cli/cli_runner.h"

namespace cli {
namespace {

using Authoring = CliTest;
using ::testing::HasSubstr;

TEST_F(Authoring, MakesASchemaWithoutWritingXML) {
    EXPECT_EQ(Zephmeta({"schema", "new", "tides.xml", "--namespace", "http://example.org/tides/", "--prefix", "tides",
                        "--label", "Tides"}),
              (Outcome{0, "tides.xml: written\n", ""}));
    EXPECT_EQ(Zephmeta({"schema", "add-property", "tides.xml", "height", "--type", "real", "--min", "0", "--max", "20"})
                  .mStatus,
              0);
    EXPECT_EQ(Zephmeta({"schema", "add-property", "tides.xml", "state", "--type", "closedchoice", "--choice",
                        "low=Low \"Tide\"", "--choice", "high"})
                  .mStatus,
              0);
    const std::string written =
        "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n"
        "<xmp_definitions>\n"
        "\t<xmp_schema namespace=\"http://example.org/tides/\" prefix=\"tides\" label=\"Tides\">\n"
        "\t\t<xmp_property category=\"external\" name=\"height\" type=\"real\" label=\"height\" max=\"20\" min=\"0\" "
        "/>\n"
        "\t\t<xmp_property category=\"external\" name=\"state\" type=\"closedchoice\" label=\"state\" "
        "element_type=\"text\">\n"
        "\t\t\t<xmp_choice raw_value=\"low\" label=\"Low &quot;Tide&quot;\" />\n"
        "\t\t\t<xmp_choice raw_value=\"high\" label=\"high\" />\n"
        "\t\t</xmp_property>\n"
        "\t</xmp_schema>\n"
        "</xmp_definitions>\n";
    EXPECT_EQ(Bytes("tides.xml"), written);
    EXPECT_EQ(Zephmeta({"schema", "show", "tides.xml"}), (Outcome{0, written, ""}));
    EXPECT_EQ(Zephmeta({"check", "tides.xml"}), (Outcome{0, "tides.xml: good\n", ""}));
}

TEST_F(Authoring, RefusesWhatWouldBreakOrLoseSomething) {
    Write("own.xml", "<xmp_definitions><!-- mine --><xmp_schema namespace='urn:a:' prefix='a'/></xmp_definitions>");
    Write("broken.xml", "<xmp_definitions><xmp_schema");
    Write("two.xml",
          "<xmp_definitions><xmp_schema namespace='urn:a:' prefix='a'/>"
          "<xmp_schema namespace='urn:b:' prefix='b'/></xmp_definitions>");
    struct Row {
        Arguments mArguments;
        const char* mError;
    };
    const Row rows[] = {
        {{"new", "own.xml", "--namespace", "urn:x:", "--prefix", "x"}, "own.xml: exists already\n"},
        {{"new", "x.xml", "--namespace", "urn:x:", "--prefix", "a b"},
         "x.xml: a schema needs a namespace, and a prefix of letters and digits\n"},
        {{"new", "no/such/../file/", "--namespace", "urn:x:", "--prefix", "x"},
         "no/such/../file/: could not be written\n"},
        {{"add-property", "own.xml", "x"}, "own.xml: holds comments, which would be lost; change it with an editor\n"},
        {{"add-property", "broken.xml", "x"}, "broken.xml: has problems; \"zephmeta check\" lists them\n"},
        {{"add-property", "missing.xml", "x"}, "missing.xml: cannot be read\n"},
        {{"add-property", "two.xml", "x"}, "two.xml: which schema? name one with --prefix\n"},
        {{"add-property", "two.xml", "x", "--prefix", "b", "--type", "nope"},
         "two.xml: no type is named \"nope\"; \"zephmeta types\" lists them\n"},
        {{"add-property", "two.xml", "x", "--prefix", "b", "--min", "much"}, "two.xml: \"much\" is not a number\n"},
    };
    for (const Row& row : rows) {
        const std::string before =
            row.mArguments[1].ends_with(".xml") && row.mArguments[1] != "missing.xml" && row.mArguments[1] != "x.xml"
                ? Bytes(row.mArguments[1])
                : "";
        Arguments arguments = {"schema"};
        arguments.insert(arguments.end(), row.mArguments.begin(), row.mArguments.end());
        EXPECT_EQ(Zephmeta(arguments), (Outcome{1, "", row.mError}));
        if (!before.empty()) {
            EXPECT_EQ(Bytes(row.mArguments[1]), before);
        }
    }
}

TEST_F(Authoring, TellsTheLineOfEachProblem) {
    Write("definitions.xml",
          "<xmp_definitions>\n<xmp_schema namespace='urn:a:' prefix='a'>\n<xmp_prop name='x'/>\n"
          "<xmp_property name='y' type='no.such'/>\n</xmp_schema>\n</xmp_definitions>\n");
    const auto path = [](const std::string& name) {
        const std::string uri = "http://ns.adobe.com/xap/1.0/mm/";
        return "<metadata_path><namespace>" + uri + "</namespace><entry_name>" + name + "</entry_name><description>" +
               name + "</description><parent_id>" + uri + "</parent_id></metadata_path>\n";
    };
    Write("paths.xml",
          "<md.paths>\n" + path("InstanceID") + path("DerivedFrom") + path("nothing") + path("InstanceID"));
    Write("none.xml", "<?xml version='1.0'?>\n<md.paths version='1.0'>\n</md.paths>\n");
    Write("view.xml",
          "<views xmlns='http://ns.zephmetadata.org/metadata/ui/1.0/'>\n<view/>\n<view name='a'>\n"
          "<property name='dc:title'/>\n</view>\n");
    Write("other.xml", "<html/>");
    const Outcome outcome =
        Zephmeta({"check", "definitions.xml", "view.xml", "other.xml", "missing.xml", "paths.xml", "none.xml"});
    EXPECT_EQ(outcome.mStatus, 1);
    EXPECT_EQ(outcome.mOutput, "none.xml: good\n");
    EXPECT_THAT(outcome.mErrors, HasSubstr("definitions.xml:4: Error registering definition: XMP property \"a:y\" has "
                                           "an invalid type \"no.such\"."));
    for (const char* problem :
         {"paths.xml:3: the path \"xmpMM:DerivedFrom\" has paths below it",
          "paths.xml:4: the path \"xmpMM:nothing\" is not defined",
          "paths.xml:5: the path \"xmpMM:InstanceID\" is there before", "paths.xml:6: invalid XML."}) {
        EXPECT_THAT(outcome.mErrors, HasSubstr(problem));
    }
    EXPECT_THAT(outcome.mErrors, HasSubstr("definitions.xml:3: Error parsing definitions file: invalid definitions tag "
                                           "\"xmp_prop\". (the elements are xmp_definitions, "));
    EXPECT_THAT(outcome.mErrors, HasSubstr("view.xml:2: Error parsing view definitions file: <view> tag needs a name "
                                           "attribute. (give the view a name"));
    EXPECT_THAT(outcome.mErrors, HasSubstr("view.xml:4: Error parsing view definitions file: invalid prefix"));
    EXPECT_THAT(outcome.mErrors, HasSubstr("view.xml:6: Error parsing view definitions file: invalid XML."));
    EXPECT_THAT(
        Zephmeta({"check", "definitions.xml", "--lang", "de"}).mErrors,
        ::testing::AllOf(
            HasSubstr("Definition: die XMP-Eigenschaft \"a:y\" hat einen ungültigen Typ \"no.such\". (\"zephmeta"),
            HasSubstr(": ungültiges Element \"xmp_prop\" unter den Definitionen. (the elements are")));
    EXPECT_THAT(outcome.mErrors, HasSubstr("other.xml: is no document of this library"));
    EXPECT_THAT(outcome.mErrors, HasSubstr("missing.xml: cannot be read\n"));
}

TEST_F(Authoring, AppliesATemplateAndSaysWhatItWouldDo) {
    const Outcome plan = Zephmeta({"apply", "packet.png", "plain.jpg", "--mode", "add", "--dry-run"});
    EXPECT_EQ(plan.mStatus, 0);
    EXPECT_THAT(plan.mOutput, HasSubstr("\n  dc:subject: added \"boats; \"dawn; early\"\"\n"));
    EXPECT_EQ(Bytes("plain.jpg"), Sample("plain.jpg"));
    EXPECT_EQ(Zephmeta({"apply", "packet.png", "plain.jpg"}), (Outcome{0, "plain.jpg: written\n", ""}));
    EXPECT_EQ(Zephmeta({"apply", "packet.png", "plain.jpg"}), (Outcome{0, "plain.jpg: unchanged\n", ""}));
    EXPECT_EQ(
        Get("plain.jpg", {"dc:title", "dc:title[?xml:lang=\"de\"]", "dc:subject[2]"}),
        Json({{"dc:title", "Low tide"}, {"dc:title[?xml:lang=\"de\"]", "Ebbe"}, {"dc:subject[2]", "dawn; early"}}));

    EXPECT_EQ(Zephmeta({"apply", "packet.png", "harbour.jpg"}).mOutput, "harbour.jpg: unchanged\n");
    EXPECT_EQ(Zephmeta({"apply", "packet.png", "harbour.jpg", "--mode", "replace"}).mOutput, "harbour.jpg: written\n");
    EXPECT_EQ(Get("harbour.jpg", {"dc:title", "xmpRights:WebStatement"}),
              Json({{"dc:title", "Low tide"}, {"xmpRights:WebStatement", "https://calder.example/licence"}}));
    EXPECT_EQ(Zephmeta({"apply", "plain.png", "harbour.jpg"}),
              (Outcome{1, "", "plain.png: has no XMP to take as a template\n"}));
    EXPECT_EQ(Zephmeta({"apply", "packet.png", "harbour.jpg", "--mode", "merge"}).mStatus, 2);
}

}  // namespace
}  // namespace cli
