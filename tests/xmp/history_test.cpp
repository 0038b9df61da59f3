#include "xmp/dates/xmp_history.h"

#include <gmock/gmock.h>

#include "xmp/dates/xmp_dates.h"
#include "xmp/toolkit_fixture.h"
#include "zephcore/environment.h"
#include "zephcore/text.h"

namespace zephmetadata::toolkit {
namespace {

const std::string kMM = "http://ns.adobe.com/xap/1.0/mm/";
constexpr const char* kUUID = "[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}";

class HistoryTest : public RunningToolkit<> {
protected:
    std::string Value(const std::string& path) {
        return GetProperty(mTree.get(), kMM, path).value_or(Property{"none", 0}).mValue;
    }
    void Save(const std::vector<const char*>& parts) {
        TXMPDocOps history;
        history.OpenXMP(mTree.get());
        for (const char* const part : parts) {
            history.NoteChange(part);
        }
        history.PrepareForSave();
    }
    XMPMetaPtr mTree = NewTree();
};

TEST_F(HistoryTest, EachSaveIsOneEvent) {
    Save({"/metadata/dc/title", "/metadata", "/metadata/dc/title"});
    const std::string document = Value("DocumentID");
    const std::string first = Value("InstanceID");
    EXPECT_THAT(document, ::testing::MatchesRegex(std::string("xmp\\.did:") + kUUID));
    EXPECT_THAT(first, ::testing::MatchesRegex(std::string("xmp\\.iid:") + kUUID));
    EXPECT_EQ(Value("OriginalDocumentID"), document);
    EXPECT_EQ(Value("History[1]/stEvt:action"), "saved");
    EXPECT_EQ(Value("History[1]/stEvt:instanceID"), first);
    EXPECT_EQ(Value("History[1]/stEvt:changed"), "/metadata/dc/title;/metadata");
    EXPECT_EQ(Value("History[1]/stEvt:softwareAgent"), zephcore::UTF16to8(zephcore::GetSuiteClientName()));
    const std::string when = Value("History[1]/stEvt:when");
    EXPECT_EQ(GetProperty(mTree.get(), "http://ns.adobe.com/xap/1.0/", "MetadataDate")->mValue, when);
    EXPECT_TRUE(ConvertToDate(when).mHasTimeZone);

    Save({"/metadata/own/a"});
    EXPECT_EQ(CountArrayItems(mTree.get(), kMM, "History"), 2U);
    EXPECT_EQ(Value("DocumentID"), document);
    EXPECT_NE(Value("InstanceID"), first);
    EXPECT_EQ(Value("History[2]/stEvt:instanceID"), Value("InstanceID"));
    EXPECT_EQ(Value("History[1]/stEvt:instanceID"), first);
}

TEST_F(HistoryTest, KnownIdentifiersStay) {
    SetProperty(mTree.get(), kMM, "DocumentID", "uuid:mine");
    Save({"/metadata"});
    EXPECT_EQ(Value("DocumentID") + Value("OriginalDocumentID"), "uuid:mineuuid:mine");
}

TEST_F(HistoryTest, OddShapesStayAndTheRestIsRecorded) {
    const std::string array = "<rdf:Bag><rdf:li>a</rdf:li></rdf:Bag>";
    const std::string alternative = "<rdf:Alt><rdf:li xml:lang='x-default'>a</rdf:li></rdf:Alt>";
    const struct {
        const char* mName;
        std::string mContent;
        const char* mStays;
        const char* mNew;  ///< what is recorded all the same
    } rows[] = {{"History", "text", "xmpMM:History=text\n", "DocumentID"},
                {"History", "<rdf:Description><own:f>a</own:f></rdf:Description>",
                 "xmpMM:History=\nxmpMM:History/own:f=a\n", "InstanceID"},
                {"History", alternative, "xmpMM:History=\nxmpMM:History[1]=a\n", "InstanceID"},
                {"InstanceID", "<rdf:Description><own:f>a</own:f></rdf:Description>",
                 "xmpMM:InstanceID=\nxmpMM:InstanceID/own:f=a\n", "History[1]/stEvt:when"},
                {"DocumentID", array, "xmpMM:DocumentID=\nxmpMM:DocumentID[1]=a\n", "History[1]/stEvt:changed"},
                {"OriginalDocumentID", array, "xmpMM:OriginalDocumentID[1]=a\n", "History[1]/stEvt:changed"}};
    for (const auto& row : rows) {
        const std::string name = std::string("xmpMM:") + row.mName;
        mTree = Parsed(Packet("<" + name + " xmlns:xmpMM='" + kMM + "'>" + row.mContent + "</" + name + ">"));
        EXPECT_EQ(ErrorOf([&] { Save({"/metadata/dc/title"}); }), 0) << name << row.mContent;
        EXPECT_THAT(Listing(mTree.get()), ::testing::HasSubstr(row.mStays));
        EXPECT_NE(Value(row.mNew), "none") << name;
        EXPECT_TRUE(TreesEqual(Parsed(SerializePacket(mTree.get())).get(), mTree.get())) << name;
    }
}

TEST_F(HistoryTest, WhatTheUserSetStays) {
    const std::string xmp = "http://ns.adobe.com/xap/1.0/";
    constexpr const char* kInstance = "/metadata/xmpMM/InstanceID";
    constexpr const char* kDate = "/metadata/xmp/MetadataDate";
    struct Row {
        std::vector<const char*> mParts;
        bool mKeepsInstance;
        bool mKeepsDate;
    };
    const Row rows[] = {{{kInstance}, true, false},
                        {{kDate}, false, true},
                        {{"/metadata/dc/title", kDate, kInstance}, true, true},
                        {{"/metadata"}, false, false},
                        {{"/metadata/xmpMM/InstanceIDs", "/metadata/xmp"}, false, false}};
    int saves = 0;
    for (const Row& row : rows) {
        SetProperty(mTree.get(), kMM, "InstanceID", "mine");
        SetProperty(mTree.get(), xmp, "MetadataDate", "2001");
        Save(row.mParts);
        EXPECT_EQ(Value("InstanceID") == "mine", row.mKeepsInstance) << row.mParts[0];
        EXPECT_EQ(GetProperty(mTree.get(), xmp, "MetadataDate")->mValue == "2001", row.mKeepsDate) << row.mParts[0];
        const std::string event = "History[" + std::to_string(++saves) + "]/stEvt:";
        EXPECT_EQ(Value(event + "instanceID"), Value("InstanceID")) << row.mParts[0];
        EXPECT_NE(Value(event + "when"), "2001") << row.mParts[0];
    }
    SetProperty(mTree.get(), kMM, "InstanceID", "");
    Save({kInstance});
    EXPECT_EQ(Value("InstanceID"), "") << "emptied by the user";
}

TEST_F(HistoryTest, WithoutChangesNothingIsWritten) {
    Save({});
    EXPECT_EQ(Listing(mTree.get()), "");
}

}  // namespace
}  // namespace zephmetadata::toolkit
