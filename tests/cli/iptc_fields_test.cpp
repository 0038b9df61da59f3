// Each field of the IPTC standard, set by us and read by another program, and the other way round.
#include <algorithm>
#include <cctype>
#include <set>

#include "cli/cli_runner.h"
#include "extensions/iptc_rows.h"

namespace cli {
namespace {

using support::IptcRow;
using ::testing::HasSubstr;

using Field = support::IptcField;

std::string Local(const std::string& id) {
    return id.substr(id.find(':') + 1);
}

bool IsAlike(const std::string& left, const std::string& right) {
    return std::ranges::equal(left, right, [](char a, char b) { return std::tolower(a) == std::tolower(b); });
}

/// What exiftool calls two properties by names of its own.
std::string NameInOther(const std::string& local) {
    return local == "AddlModelInfo"  ? "AdditionalModelInformation"
           : local == "DigImageGUID" ? "DigitalImageGUID"
                                     : local;
}

/// The text at @p path in what exiftool -struct prints; empty where there is none.
std::string Find(const Json& file, const std::string& path) {
    Json at = file;
    std::istringstream steps(path);
    for (std::string step; std::getline(steps, step, '/');) {
        const std::string name = NameInOther(Local(step.substr(0, step.find('['))));
        Json next;
        for (const auto& [key, value] : at.items()) {
            if (!key.starts_with("IPTC:") && IsAlike(Local(key), name)) {
                next = value.is_array() ? value.at(0) : value;
            }
        }
        at = next;
    }
    return at.is_string() ? at.get<std::string>() : at.is_null() ? "" : at.dump();
}

class IptcFields : public CliTest {
protected:
    void SetUp() override {
        if (RunProgram(At(""), "/bin/sh", {"-c", "command -v exiftool"}).mStatus != 0) {
            GTEST_SKIP() << "exiftool, the other program, is not installed";
        }
        ASSERT_GT(mFields.size(), 150U);
    }
    Outcome Other(const Arguments& arguments) const { return RunProgram(At(""), "exiftool", arguments); }
    /// A file with IPTC-IIM, all fields set by us, as exiftool reads it.
    Json SetByUs() const {
        EXPECT_EQ(Other({"-q", "-overwrite_original", "-IPTC:City=Old", "plain.jpg"}).mStatus, 0);
        Arguments set = {"set", "plain.jpg"};
        for (const Field& field : mFields) {
            set.push_back(field.mPath + "=" + field.mValue);
        }
        EXPECT_EQ(Zephmeta(set), (Outcome{0, "plain.jpg: written\n", ""}));
        return Json::parse(Other({"-json", "-struct", "-G1", "-n", "plain.jpg"}).mOutput).at(0);
    }
    /// Writes the members of @p file whose names begin with @p group into a file by exiftool.
    void WriteByOther(const Json& file, const std::string& group, const std::string& target) const {
        Json members = {{"SourceFile", target}};
        for (const auto& [key, value] : file.items()) {
            if (key.starts_with(group)) {
                members[key] = value;
            }
        }
        Write("members.json", Json::array({members}).dump());
        EXPECT_EQ(Other({"-q", "-n", "-overwrite_original", "-json=members.json", target}), (Outcome{0, "", ""}));
    }

    std::vector<IptcRow> mRows = support::ReadIptcRows(ZEPHMETADATA_TEST_DATA "/../extensions/iptc_rows.tsv");
    std::vector<Field> mFields = support::FieldsOf(mRows);
};

TEST_F(IptcFields, SetByUsAreReadByOthersInXMPAndIIM) {
    const Json file = SetByUs();
    for (const Field& field : mFields) {
        EXPECT_EQ(Find(file, field.mPath), field.mShown) << field.mPath;
    }
    std::size_t datasets = 0;
    for (const IptcRow& row : mRows) {
        const std::size_t end = row.mIIM.find('=');
        if (!row.mIIM.empty()) {
            const std::string expected = end == std::string::npos ? row.Value() : row.mIIM.substr(end + 1);
            EXPECT_EQ(file.value("IPTC:" + row.mIIM.substr(0, end), ""), expected) << row.mId;
            ++datasets;
        }
    }
    EXPECT_EQ(datasets, 20U);
}

TEST_F(IptcFields, SetByOthersInXMPAreReadByUs) {
    // Fields that exiftool 12.57 reads and does not write, or not as a list.
    const std::set<std::string> unwritten = {"DataMining", "GPSAltitudeRef", "ProductId[1]"};
    CliTest::Write("other.jpg", Sample("plain.jpg"));
    WriteByOther(SetByUs(), "XMP-", "other.jpg");
    Arguments paths;
    Json expected = Json::object();
    for (const Field& field : mFields) {
        if (!unwritten.contains(Local(field.mPath.substr(field.mPath.rfind('/') + 1)))) {
            paths.push_back(field.mPath);
            expected[field.mPath] = field.mValue;
        }
    }
    Arguments get = {"get", "--raw", "--json", "other.jpg"};
    get.insert(get.end(), paths.begin(), paths.end());
    const Json read = Json::parse(Zephmeta(get).mOutput);
    for (const auto& [path, value] : expected.items()) {
        EXPECT_EQ(read.value(path, ""), value) << path;
    }
}

TEST_F(IptcFields, SetByOthersInIIMAreReadByUs) {
    CliTest::Write("other.jpg", Sample("plain.jpg"));
    WriteByOther(SetByUs(), "IPTC:", "other.jpg");
    const Json dump = Json::parse(Zephmeta({"dump", "--json", "other.jpg"}).mOutput);
    std::map<std::string, Json> values;
    for (const Json& value : dump["properties"]) {
        values[value["path"]] = value;
    }
    for (const IptcRow& row : mRows) {
        if (!row.mIIM.empty()) {
            const Json& value = values[row.mId];
            EXPECT_EQ(value.value("raw", ""), row.Value()) << row.mId;
            EXPECT_EQ(value.value("origin", ""), "native") << row.mId;
            EXPECT_TRUE(value.value("defined", false)) << row.mId;
        }
    }
    EXPECT_THAT(Zephmeta({"panel", "other.jpg", "--view", "org.zephmetadata.view.iptc-photo-metadata"}).mOutput,
                ::testing::AllOf(HasSubstr("Some City"), HasSubstr("Some Headline"), HasSubstr("Some Credit"),
                                 HasSubstr("Some Source")));
}

}  // namespace
}  // namespace cli
