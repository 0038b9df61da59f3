#include "cli/cli_runner.h"

namespace cli {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

struct UsageRow {
    const char* mLabel;
    Arguments mArguments;
    int mStatus;
    std::string mOutput;  // a part of it
    std::string mErrors;  // all of it
};

class Usage : public CliTest, public ::testing::WithParamInterface<UsageRow> {};

TEST_P(Usage, IsExplained) {
    const UsageRow& row = GetParam();
    SCOPED_TRACE(::testing::PrintToString(row.mArguments));
    const Outcome outcome = Zephmeta(row.mArguments);
    EXPECT_EQ(outcome.mStatus, row.mStatus);
    EXPECT_THAT(outcome.mOutput, HasSubstr(row.mOutput));
    EXPECT_EQ(outcome.mOutput.empty(), row.mOutput.empty());
    EXPECT_EQ(outcome.mErrors, row.mErrors);
}

const UsageRow kUsageRows[] = {
    {"Version", {"--version"}, 0, "zephmeta 0.2.0\nExempi", ""},
    {"Help", {"--help"}, 0, "Exit status: 0 done, 1 ", ""},
    {"NoCommand", {}, 2, "", "zephmeta: A subcommand is required; see \"zephmeta --help\"\n"},
    {"MistypedCommand", {"sett", "packet.jpg"}, 2, "", "zephmeta: no such command: sett; did you mean set?\n"},
    {"MistypedPartOfACommand",
     {"schema", "shwo", "x.xml"},
     2,
     "",
     "zephmeta: no such command: shwo; did you mean show?\n"},
    {"ChoicesInWords", {"apply", "--help"}, 0, "--mode add|replace|clear=add\n", ""},
    {"NoChoice",
     {"apply", "a.xmp", "packet.jpg", "--mode", "ad"},
     2,
     "",
     "zephmeta: --mode: \"ad\" is none of add, clear, replace; see \"zephmeta --help\"\n"},
    {"NoFile", {"dump"}, 2, "", "zephmeta: FILE is required; see \"zephmeta --help\"\n"},
    {"NoPath", {"get", "packet.jpg"}, 2, "", "zephmeta: no path to read; see \"zephmeta get --help\"\n"},
    {"UnknownOption",
     {"dump", "--n\x1bope", "packet.jpg"},
     2,
     "",
     "zephmeta: The following argument was not expected: --n\\x1bope; see \"zephmeta --help\"\n"},
    {"NothingToSet", {"set", "packet.jpg"}, 2, "", "zephmeta: nothing to set; see \"zephmeta set --help\"\n"},
    {"NothingToSetItIn", {"set", "dc:title=x"}, 2, "", "zephmeta: no file to change; see \"zephmeta set --help\"\n"},
    {"AdditionWithoutValue",
     {"set", "packet.jpg", "--add", "dc:subject"},
     2,
     "",
     "zephmeta: --add wants PATH=VALUE, not \"dc:subject\"\n"},
    {"Schemas",
     {"schemas"},
     0,
     "  iXML               1 property      http://ns.adobe.com/ixml/1.0/                             iXML\n",
     ""},
    {"Schema", {"schemas", "dc"}, 0, "\n  format       mimetype           internal  Format\n", ""},
    {"SchemaNobodyKnows",
     {"schemas", "nope"},
     1,
     "",
     "zephmeta: no schema has the prefix \"nope\"; \"zephmeta schemas\" lists them\n"},
    {"Types", {"types"}, 0, "\n  resourceevent               structure            Resource Event\n", ""},
    {"Type", {"types", "thumbnail"}, 0, "\n  xmpGImg:format  closedchoice of text  Format\n", ""},
    {"TypeNobodyKnows",
     {"types", "nope"},
     1,
     "",
     "zephmeta: no type is named \"nope\"; \"zephmeta types\" lists them\n"},
};

INSTANTIATE_TEST_SUITE_P(Rows, Usage, ::testing::ValuesIn(kUsageRows),
                         [](const auto& row) { return row.param.mLabel; });

/// Every command, and the commands of a command, shows three lines that can be typed.
void ExpectExamples(const Json& command, const std::string& name) {
    for (const Json& child : command.at("commands")) {
        ExpectExamples(child, name + " " + child.at("name").get<std::string>());
    }
    if (command.at("commands").empty()) {
        const std::string footer = command.at("footer");
        std::size_t examples = 0;
        for (std::size_t at = footer.find("Examples:\n"); at != std::string::npos; at = footer.find('\n', at + 1)) {
            const std::string line = footer.substr(at + 1, footer.find('\n', at + 1) - at - 1);
            examples += line.find(name) != std::string::npos || line.ends_with("| zephmeta import -") ? 1 : 0;
        }
        EXPECT_GE(examples, 3U) << name << footer;
    }
}

class Registry : public CliTest {};

TEST_F(Registry, IsListedAsJson) {
    const Json schemas = Json::parse(Zephmeta({"schemas", "--json"}).mOutput);
    const Json types = Json::parse(Zephmeta({"types", "--json"}).mOutput);
    EXPECT_GT(schemas.size(), 25U);
    EXPECT_GT(types.size(), 50U);
    const Json thumbnail = Json::parse(Zephmeta({"types", "thumbnail", "--json"}).mOutput).at(0);
    EXPECT_EQ(thumbnail.at("fields").size(), 4U);
    EXPECT_EQ(thumbnail.at("fields").at(2).at("prefix"), "xmpGImg");
    EXPECT_EQ(thumbnail.at("fields").at(2).at("choices").at(0).at("value"), "JPEG");
    EXPECT_FALSE(thumbnail.contains("pattern"));
    const Json rating = Json::parse(Zephmeta({"types", "rating", "--json"}).mOutput).at(0);
    EXPECT_EQ(rating.at("extends"), "real");
    const Json schema = Json::parse(Zephmeta({"schemas", "dc", "--json"}).mOutput).at(0);
    EXPECT_EQ(schema.at("namespace"), "http://purl.org/dc/elements/1.1/");
    EXPECT_EQ(schema.at("properties").size(), 15U);
    EXPECT_EQ(schema.at("properties").at(2).at("elementType"), "propername");
    EXPECT_EQ(schema.at("properties").at(5).at("internal"), true);
}

TEST_F(Registry, OfCommandsHasExamplesOfEach) {
    ExpectExamples(Json::parse(Zephmeta({"--describe"}).mOutput), "zephmeta");
}

TEST_F(Registry, TakesCommonOptionsOnBothSidesOfTheCommand) {
    const Outcome after = Zephmeta({"schemas", "dc", "--json", "--lang", "en_US"});
    EXPECT_THAT(after.mOutput, StartsWith("[\n"));
    EXPECT_EQ(Zephmeta({"--json", "--lang", "en_US", "schemas", "dc"}), after);
    EXPECT_EQ(Zephmeta({"--lang", "xx", "types", "thumbnail"}), Zephmeta({"types", "--lang=xx", "thumbnail"}));
}

}  // namespace
}  // namespace cli
