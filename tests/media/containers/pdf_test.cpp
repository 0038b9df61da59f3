#include "media/containers/documents/pdf.h"

#include "document_fixture.h"

namespace zephmetadata::media {
namespace {

std::string Digits(std::size_t number) {
    const std::string text = std::to_string(number);
    return std::string(10 - text.size(), '0') + text;
}

/// A document of the given objects, of which the first is the catalog, with a table or a stream of their places.
std::string Document(const std::vector<std::string>& objects, bool hasStream = false, const std::string& trailer = "") {
    std::string text = "%PDF-1.5\n";
    std::string table = "0000000000 65535 f \n";
    std::string stream(7, '\0');
    for (std::size_t i = 0; i < objects.size(); ++i) {
        table += Digits(text.size()) + " 00000 n \n";
        stream += '\1' + NumberBytes(text.size(), 4) + std::string(2, '\0');
        text += std::to_string(i + 1) + " 0 obj\n" + objects[i] + "\nendobj\n";
    }
    const std::size_t at = text.size();
    const std::string entries = "/Root 1 0 R " + trailer;
    if (hasStream) {
        stream += '\1' + NumberBytes(at, 4) + std::string(2, '\0');
        text += std::to_string(objects.size() + 1) + " 0 obj\n<< /Type /XRef /W [1 4 2] " + entries + "/Size " +
                std::to_string(objects.size() + 2) + " /Length " + std::to_string(stream.size()) + " >>\nstream\n" +
                stream + "\nendstream\nendobj\n";
    } else {
        const std::string size = std::to_string(objects.size() + 1);
        text += "xref\n0 " + size + "\n" + table + "trailer\n<< " + entries + "/Size " + size + " >>\n";
    }
    return text + "startxref\n" + std::to_string(at) + "\n%%EOF";
}

std::string Stream(const std::string& data) {
    return "<< /Type /Metadata /Subtype /XML /Own (x) /Length " + std::to_string(data.size()) + " >>\nstream\n" + data +
           "\nendstream";
}

const std::string kPages = "<< /Type /Pages /Kids [] /Count 0 >>";
const std::string kCatalog = "<< /Type /Catalog /Pages 2 0 R /Own [(y) 2 0 R] >>";
const std::string kOldPacket = ShortPacket(Element('o'));
const std::vector<std::string> kWithXMP = {"<< /Type /Catalog /Pages 2 0 R /Metadata 3 0 R >>", kPages,
                                           Stream(kOldPacket)};

struct WriteCase {
    const char* mName;
    std::string mFile;
    bool mHasXMP;
};
class PDFWriteTest : public testing::TestWithParam<WriteCase> {};

TEST_P(PDFWriteTest, AppendsOnceAndKeepsEveryByte) {
    const std::string& file = GetParam().mFile;
    const FileBlocks before = Blocks(PDFContainer(), file);
    EXPECT_EQ(before.mStatus, FileStatus::kFileStatus_Success) << before.mDetail;
    EXPECT_EQ(before.mXMP, GetParam().mHasXMP ? std::optional(kOldPacket) : std::nullopt);
    const std::string first = Edited(PDFContainer(), file, Element('a'));
    ASSERT_TRUE(first.starts_with(file));
    EXPECT_EQ(first.find("/Own (x)", file.size()) != std::string::npos, GetParam().mHasXMP);
    EXPECT_EQ(first.find("/Own [ (y) 2 0 R ]", file.size()) != std::string::npos, !GetParam().mHasXMP);
    // What was appended here is replaced: in its room, or as a whole.
    const std::string second = Edited(PDFContainer(), first, Element('b', 30));
    EXPECT_EQ(second.size(), first.size());
    const std::string third = Edited(PDFContainer(), second, Element('c', 5000));
    EXPECT_LT(third.size(), file.size() + 5000 + 4000);
    const std::string fourth = Edited(PDFContainer(), third, Element('d'));
    EXPECT_EQ(fourth.size(), third.size());
    for (const auto& [edited, element] : {std::pair(first, Element('a')), std::pair(second, Element('b', 30)),
                                          std::pair(third, Element('c', 5000)), std::pair(fourth, Element('d'))}) {
        const FileBlocks blocks = Blocks(PDFContainer(), edited);
        EXPECT_TRUE(edited.starts_with(file));
        EXPECT_EQ(blocks.mStatus, FileStatus::kFileStatus_Success) << blocks.mDetail;
        EXPECT_THAT(blocks.mXMP, testing::Optional(testing::HasSubstr(element)));
    }
}

INSTANTIATE_TEST_SUITE_P(Documents, PDFWriteTest,
                         testing::Values(WriteCase{"Table", Document(kWithXMP), true},
                                         WriteCase{"TableWithout", Document({kCatalog, kPages}), false},
                                         WriteCase{"Stream", Document(kWithXMP, true), true},
                                         WriteCase{"StreamWithout", Document({kCatalog, kPages}, true), false},
                                         WriteCase{"Shifted", "junk\n" + Document(kWithXMP), true}),
                         [](const auto& instance) { return std::string(instance.param.mName); });

TEST(PDFTest, AnotherUpdateAfterwardsStays) {
    const std::string first = Edited(PDFContainer(), Document(kWithXMP), Element('a'));
    const std::string other =
        first + "% something that another program added\nstartxref\n" + first.substr(first.rfind("startxref\n") + 10);
    const std::string second = Edited(PDFContainer(), other, Element('b'));
    EXPECT_TRUE(second.starts_with(other));
}

TEST(PDFTest, SignedDocumentsAreReadOnly) {
    const std::string start = "<< /Type /Catalog /Pages 2 0 R ";
    const std::vector<std::pair<std::string, bool>> catalogs = {
        {start + ">>", false},
        {start + "/AcroForm << /Fields [] >> >>", false},
        {start + "/AcroForm << /Fields [] /SigFlags 3 >> >>", true},
        {start + "/AcroForm << /Fields [<< /Kids [<< /FT /Sig /V << >> >>] >>] >> >>", true},
        {start + "/AcroForm << /Fields [<< /FT /Sig >> << /FT /Tx /V (x) >>] >> >>", false},
        {start + "/Perms << /DocMDP << >> >> >>", true}};
    for (const auto& [catalog, isSigned] : catalogs) {
        const FileBlocks blocks = Blocks(PDFContainer(), Document({catalog, kPages}));
        EXPECT_EQ(blocks.mStatus, FileStatus::kFileStatus_Success) << catalog;
        EXPECT_EQ(!blocks.mWhyReadOnly.empty(), isSigned) << catalog;
    }
}

TEST(PDFTest, InformationIsReadAsXMPHasIt) {
    const std::string file =
        Document({kCatalog, kPages,
                  "<< /Title (T\xE9st) /Author <FEFF00C400DF> /Subject ( ) /Keywords (a, b) /Creator (C) /Producer (P)"
                  "/CreationDate (D:20050718143045-04'00') /ModDate (D:2005) /Trapped /True /Own (x) >>"},
                 false, "/Info 3 0 R ");
    std::vector<std::string> found;
    for (const NativeValue& value : Blocks(PDFContainer(), file).mValues) {
        found.push_back(std::string(value.mProperty) + "=" + value.mItems.at(0).mName + value.mItems.at(0).mText);
    }
    EXPECT_THAT(
        found, testing::ElementsAre("title=x-defaultTést", "creator=Äß", "Keywords=a, b", "CreatorTool=C", "Producer=P",
                                    "CreateDate=2005-07-18T14:30:45-04:00", "ModifyDate=2005", "Trapped=True"));
}

TEST(PDFTest, DamagedDocumentsAreReadAsFarAsTheyGoAndNotWritten) {
    const std::string file = Document(kWithXMP);
    std::string shifted = file;
    shifted.insert(shifted.find("2 0 obj"), "   ");
    const FileBlocks blocks = Blocks(PDFContainer(), shifted);
    EXPECT_EQ(blocks.mStatus, FileStatus::kFileStatus_DamagedFile);
    EXPECT_FALSE(blocks.mDetail.empty());
    EXPECT_EQ(blocks.mXMP, kOldPacket);
    TryDamage(PDFContainer(), file);
    TryDamage(PDFContainer(), Document({kCatalog, kPages}, true));
}

}  // namespace
}  // namespace zephmetadata::media
