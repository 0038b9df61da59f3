#include "media/containers/scanned.h"

#include "document_fixture.h"
#include "media/bytes.h"

namespace zephmetadata::media {
namespace {

const std::string kFirst = ShortPacket(Element('a'));
const std::string kSecond = ShortPacket(Element('b'));

std::string Wide(const std::string& text, bool isBig) {
    std::string wide;
    for (const char c : text) {
        wide += isBig ? std::string{'\0', c} : std::string{c, '\0'};
    }
    return wide;
}

struct FindCase {
    const char* mName;
    const Container& (*mContainer)();
    std::string mFile;
    std::optional<std::string> mXMP;
    FileStatus mStatus = FileStatus::kFileStatus_Success;
};
class ScanTest : public testing::TestWithParam<FindCase> {};

TEST_P(ScanTest, FindsThePacketOfTheDocument) {
    const FileBlocks blocks = Blocks(GetParam().mContainer(), GetParam().mFile);
    EXPECT_EQ(blocks.mXMP, GetParam().mXMP);
    EXPECT_EQ(blocks.mStatus, GetParam().mStatus);
    EXPECT_EQ(Planned(GetParam().mContainer(), GetParam().mFile, Element('n')).mStatus,
              FileStatus::kFileStatus_CannotCarryXMP);
}

const std::string kMega((1U << 20U) - 5, '.');  // so that what follows lies across two blocks
const std::string kFrame = "\xC5\xD0\xD3\xC6" + NumberBytes(20, 4, ByteOrder::kLittle);
constexpr FileStatus kUnknown = FileStatus::kFileStatus_UnknownFormat;
INSTANTIATE_TEST_SUITE_P(
    Files, ScanTest,
    testing::Values(
        FindCase{"First", &PostScriptContainer, "%!PS\n" + kFirst + kSecond, kFirst},
        FindCase{"MainFirst", &PostScriptContainer, "%!PS\n%ADO_ContainsXMP: MainFirst\n" + kFirst + kSecond, kFirst},
        FindCase{"MainLast", &PostScriptContainer, "%!PS\n%ADO_ContainsXMP: MainLast\r" + kFirst + kSecond, kSecond},
        FindCase{"NoMain", &PostScriptContainer, "%!PS\n%ADO_ContainsXMP: NoMain\n" + kFirst, {}},
        FindCase{"NoPacket", &PostScriptContainer, "%!PS\nshowpage", {}},
        FindCase{"DosEPS", &PostScriptContainer,
                 kFrame + NumberBytes(kSecond.size(), 4, ByteOrder::kLittle) + std::string(8, '\0') + kSecond + kFirst,
                 kSecond},
        FindCase{"DosEPSTooLong",
                 &PostScriptContainer,
                 kFrame + std::string(4, '\xFF'),
                 {},
                 FileStatus::kFileStatus_DamagedFile},
        FindCase{"AcrossBlocks", &ScannedContainer, kMega + kFirst, kFirst},
        FindCase{"UTF16BE", &ScannedContainer, "x" + Wide(kFirst, true), Wide(kFirst, true)},
        FindCase{"UTF16LE", &ScannedContainer, "x" + Wide(kFirst, false) + "x", Wide(kFirst, false)},
        FindCase{"NotRDF", &ScannedContainer, "<?xpacket begin=''?>x<?xpacket end='w'?>" + kFirst, kFirst},
        FindCase{"Open", &ScannedContainer, kFirst.substr(0, kFirst.size() - 1), {}, kUnknown},
        FindCase{"Nothing", &ScannedContainer, "x", {}, kUnknown},
        FindCase{"Empty", &ScannedContainer, "", {}, kUnknown}),
    [](const auto& instance) { return std::string(instance.param.mName); });

/// An InDesign document with a packet among its pages, which is not that of the document.
std::string Book(const std::string& packet, std::uint32_t checksum = 0xFFFFFFFF, std::uint32_t pages = 3) {
    std::string page =
        "\x06\x06\xED\xF5\xD8\x1D\x46\xE5\xBD\x31\xEF\xE7\xFE\x74\xB7\x1D"
        "DOCUMENT\1";
    page.resize(4096);
    std::string second = page;
    page.replace(280, 4, NumberBytes(1, 4, ByteOrder::kLittle));
    second.replace(264, 8, NumberBytes(7, 8, ByteOrder::kLittle));
    second.replace(280, 4, NumberBytes(pages, 4, ByteOrder::kLittle));
    std::string content = kFirst;
    content.resize(4096);
    return page + second + content + "\xDE\x39\x39\x79\x51\x88\x4B\x6C\x8E\x63\xEE\xF8\xAE\xE0\xDD\x38" +
           std::string(12, '\1') + NumberBytes(checksum, 4) + NumberBytes(packet.size(), 4) + packet +
           std::string(32, '\2');
}

TEST(InDesignTest, PacketIsWrittenOverInItsRoom) {
    const std::string packet = WrappedPacket(Element('o'));
    const std::string file = Book(packet);
    EXPECT_TRUE(IsInDesign(file));
    EXPECT_EQ(Blocks(InDesignContainer(), file).mXMP, packet);
    EXPECT_EQ(Edited(InDesignContainer(), file, Element('n', 1000)),
              Book(WrappedPacket(Element('n', 1000), packet.size())));
}

TEST(InDesignTest, WhatCannotBeWrittenInPlaceIsRefused) {
    const std::string packet = WrappedPacket(Element('o'));
    std::string readOnly = packet;
    readOnly.replace(readOnly.size() - 4, 1, "r");
    for (const std::string& file : {Book(kFirst), Book(readOnly), Book(packet, 1), Book("")}) {
        const PlannedEdit edit = Planned(InDesignContainer(), file, Element('n', 100));
        EXPECT_EQ(edit.mStatus, FileStatus::kFileStatus_CannotCarryXMP);
        EXPECT_FALSE(edit.mDetail.empty());
    }
    EXPECT_EQ(Blocks(InDesignContainer(), Book(packet, 1, 1000)).mStatus, FileStatus::kFileStatus_DamagedFile);
    EXPECT_EQ(Blocks(InDesignContainer(), Book(packet).substr(0, 8000)).mStatus, FileStatus::kFileStatus_DamagedFile);
}

}  // namespace
}  // namespace zephmetadata::media
