#include "media/containers/documents/svg.h"

#include "document_fixture.h"

namespace zephmetadata::media {
namespace {

const std::string kOld = Element('o');
const std::string kNew = Element('n');
const std::string kRoot = "<svg xmlns=\"http://www.w3.org/2000/svg\">";

struct EditCase {
    const char* mName;
    std::string mBefore;  // text before what is replaced
    std::string mOld;
    std::string mNew;
    std::string mAfter;
    bool mHasXMP = true;
};
class SVGEditTest : public testing::TestWithParam<EditCase> {};

TEST_P(SVGEditTest, ReplacesTheElementAlone) {
    const EditCase& edit = GetParam();
    const std::string file = edit.mBefore + edit.mOld + edit.mAfter;
    EXPECT_TRUE(IsSVG(file));
    const FileBlocks blocks = Blocks(SVGContainer(), file);
    EXPECT_EQ(blocks.mStatus, FileStatus::kFileStatus_Success) << blocks.mDetail;
    EXPECT_EQ(blocks.mWhyReadOnly, "");
    EXPECT_EQ(blocks.mXMP, edit.mHasXMP ? std::optional(kOld) : std::nullopt);
    const std::string edited = Edited(SVGContainer(), file, kNew);
    EXPECT_EQ(edited, edit.mBefore + edit.mNew + edit.mAfter);
    EXPECT_EQ(Blocks(SVGContainer(), edited).mXMP, kNew);
}

INSTANTIATE_TEST_SUITE_P(
    Documents, SVGEditTest,
    testing::Values(
        EditCase{"Element", kRoot + "<g/>\r\n<metadata> ", kOld, kNew, "<c/></metadata></svg>\n"},
        EditCase{"Packet", kRoot + "<metadata><?xpacket begin='' id='x'?>", kOld, kNew,
                 "<?xpacket end='w'?></metadata></svg>"},
        EditCase{"Preamble",
                 "\xEF\xBB\xBF<?xml version='1.0' encoding='UTF-8'?>\n<!-- <a> --><?p ?><!DOCTYPE svg PUBLIC \"-\" "
                 "\"x\">\n" +
                     kRoot + "<metadata>",
                 kOld, kNew, "</metadata></svg><!-- end -->"},
        EditCase{"NoNamespace", "<svg><metadata>", kOld, kNew, "</metadata></svg>"},
        EditCase{"SecondMetadata", kRoot + "<metadata>x</metadata><metadata>", kOld, kNew, "</metadata></svg>"},
        EditCase{"FilledMetadata", kRoot + "<metadata>", "", ShortPacket(kNew), "<title>x</title></metadata></svg>",
                 false},
        EditCase{"OpenMetadata", kRoot + "<metadata a='1'>", "", ShortPacket(kNew), "</metadata></svg>", false},
        EditCase{"EmptyMetadata", kRoot + "<metadata a='1'", "/>", ">" + ShortPacket(kNew) + "</metadata>",
                 "<g/></svg>", false},
        EditCase{"NoMetadata", kRoot, "", "\n<metadata>" + ShortPacket(kNew) + "</metadata>", "<g/></svg>", false},
        EditCase{
            "OtherRDF", kRoot + "<metadata>", "", ShortPacket(kNew),
            "<r:RDF xmlns:r='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><w xmlns='urn:w'/></r:RDF></metadata></svg>",
            false},
        EditCase{"NestedIsNotIt", kRoot, "", "\n<metadata>" + ShortPacket(kNew) + "</metadata>",
                 "<g><metadata>" + kOld + "</metadata></g></svg>", false},
        EditCase{"Prefix", "<s:svg xmlns:s='http://www.w3.org/2000/svg'>", "",
                 "\n<s:metadata>" + ShortPacket(kNew) + "</s:metadata>", "<s:g/></s:svg>", false},
        EditCase{"EmptyRoot", "<s:svg xmlns:s='http://www.w3.org/2000/svg' ", "/>",
                 ">\n<s:metadata>" + ShortPacket(kNew) + "</s:metadata>\n</s:svg>", "\n", false}),
    [](const auto& instance) { return std::string(instance.param.mName); });

TEST(SVGTest, PrefixesOfElementsAroundAreBroughtAlong) {
    const std::string file =
        "<svg xmlns='http://www.w3.org/2000/svg' xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#' "
        "xmlns:o='a&amp;\"'><metadata><rdf:RDF/></metadata></svg>";
    EXPECT_EQ(Blocks(SVGContainer(), file).mXMP,
              "<rdf:RDF xmlns:o=\"a&amp;&quot;\" xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\"/>");
}

// Others know a drawing by its first 256 bytes, and take XML with XMP among them for a sidecar.
TEST(SVGTest, TheBeginningOfADeclaredDocumentStaysADrawing) {
    const std::string declared = "<?xml version='1.0'?>" + kRoot;
    for (const std::string& file : {declared + "</svg>", "\xEF\xBB\xBF" + declared + "<metadata></metadata></svg>",
                                    declared + "<metadata/></svg>", std::string("<?xml version='1.0'?><svg/>")}) {
        const std::string edited = Edited(SVGContainer(), file, kNew);
        EXPECT_EQ(edited.find("<?xpacket"), 256U) << file;
        EXPECT_EQ(Blocks(SVGContainer(), edited).mXMP, kNew) << file;
    }
    const std::string wide = declared + std::string(300, ' ') + "<metadata/></svg>";
    EXPECT_EQ(Edited(SVGContainer(), wide, kNew).size(), wide.size() + ShortPacket(kNew).size() + 10);
}

TEST(SVGTest, WhatCannotBeWrittenSaysWhy) {
    const std::string wide("\xFF\xFE<\0s\0v\0g\0/\0>\0", 14);
    for (const std::string& file : {"<!DOCTYPE svg [<!ENTITY a 'b'>]>\n" + kRoot + "</svg>",
                                    "<?xml version='1.0' encoding='iso-8859-1'?>" + kRoot + "</svg>", wide}) {
        EXPECT_TRUE(IsSVG(file)) << file;
        EXPECT_FALSE(Blocks(SVGContainer(), file).mWhyReadOnly.empty()) << file;
    }
    for (const std::string_view file : {"<html/>", "<!-- <svg>", "\x1F\x8B\x08svg", "", "svg", "<x:xmpmeta/>"}) {
        EXPECT_FALSE(IsSVG(file)) << file;
    }
}

TEST(SVGTest, DamagedDocumentsAreNotWritten) {
    for (const std::string& file :
         {kRoot + "<metadata>" + kOld + "</metadata>", kRoot + "</svg", std::string("<svg>&x;</svg>")}) {
        EXPECT_EQ(Blocks(SVGContainer(), file).mStatus, FileStatus::kFileStatus_DamagedFile) << file;
        EXPECT_EQ(Edited(SVGContainer(), file, kNew), "") << file;
    }
    TryDamage(SVGContainer(), kRoot + "<metadata>" + kOld + "</metadata></svg>");
}

}  // namespace
}  // namespace zephmetadata::media
