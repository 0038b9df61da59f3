#include "frame/toolkit/media/packet_depth.h"

#include <random>

#include "media_fixture.h"

namespace zephmetadata::toolkit {
namespace {

std::string Repeated(const std::string& text, std::size_t count) {
    std::string repeated;
    for (std::size_t i = 0; i < count; ++i) {
        repeated += text;
    }
    return repeated;
}

TEST(NestingCounterTest, CountsElementsWhateverStandsBetween) {
    struct Row {
        const char* mCase;
        std::string mBytes;
        std::size_t mDeepest;
    };
    const Row rows[] = {
        {"nothing", "", 0},
        {"text", "a < b > c <3 <> < a>", 0},
        {"siblings", "<a><b/><b></b><b ></b ></a>", 2},
        {"attributes", "<a x='>' y=\"/>\"><b z='1'/></a><a><b><c>", 3},
        {"instructions", "<?xml ?><!DOCTYPE a><!-- <x> --><a>", 2},
        {"a tag that is cut off by another", "<a <b><c", 1},
        {"more ends than starts", "</a></a><a>", 1},
        {"UTF-16", std::string("<\0a\0>\0<\0b\0>\0", 12), 2},
        {"bytes in a tag that no document has", "<a \x01><b\x02>", 0},
        {"names beyond ASCII", "<\xC3\xA9><\xE5\x90\x8D\xE5><\xE5\x90\x8D></\xC3\xA9>", 2},
        {"deep", Repeated("<a>", 100000) + Repeated("</a>", 100000), 100000},
    };
    for (const Row& row : rows) {
        NestingCounter whole;
        whole.Feed(row.mBytes);
        EXPECT_EQ(whole.Deepest(), row.mDeepest) << row.mCase;
        NestingCounter bytewise;
        for (const char c : row.mBytes) {
            bytewise.Feed({&c, 1});
        }
        EXPECT_EQ(bytewise.Deepest(), row.mDeepest) << row.mCase;
    }
}

TEST(NestingCounterTest, TakesNoiseForNoDepth) {
    std::mt19937 random(7);
    std::string noise(std::size_t{8} << 20U, '\0');
    for (char& c : noise) {
        c = static_cast<char>(random());
    }
    NestingCounter counter;
    counter.Feed(noise);
    EXPECT_LT(counter.Deepest(), kMaxFileNesting / 50);
}

class DeepFiles : public MediaTest {
protected:
    /// A PNG file whose packet is @p packet.
    std::filesystem::path Png(const std::string& packet) const {
        const std::string png = support::ReadFile(Fixture("plain.png"));
        const std::string data = std::string("iTXtXML:com.adobe.xmp\0\0\0\0\0", 26) + packet;
        std::string chunk;
        for (int shift = 24; shift >= 0; shift -= 8) {
            chunk += static_cast<char>((data.size() - 4) >> static_cast<unsigned>(shift));
        }
        return mFolder.Write("deep.png", png.substr(0, 33) + chunk + data + "0000" + png.substr(33));
    }
};

TEST_F(DeepFiles, AreRefusedHoweverTheDepthIsHidden) {
    const std::pair<std::string, std::string> levels[] = {
        {"<a>", "</a>"},
        {"<a><!--</a>-->", "</a>"},
        {"<a><![CDATA[</a>]]>", "</a>"},
        {"<a><?x </a>?>", "</a>"},
        {"<a b='\x01'>", "</a>"},
        {std::string("<\0\5\1>\0", 6), std::string("<\0/\0\5\1>\0", 8)},  // UTF-16, a name beyond ASCII
    };
    for (const auto& [open, close] : levels) {
        const bool isWide = open[1] == 0;
        const std::string wrapper = "<?xpacket begin='' id='W5M0MpCehiHzreSzNTczkc9d'?>";
        const std::string nest = Repeated(open, 150000) + Repeated(close, 150000);
        const std::string packet = isWide ? "\xFF\xFE" + nest : wrapper + nest + "<?xpacket end='w'?>";
        EXPECT_EQ(Read(Png(packet)).mStatus, FileStatus::kFileStatus_DamagedXMP) << open;
    }
}

}  // namespace
}  // namespace zephmetadata::toolkit
