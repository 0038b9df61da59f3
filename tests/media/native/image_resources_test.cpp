#include "media/native/iim/image_resources.h"

#include <gtest/gtest.h>

#include "media/native/iim/md5.h"
#include "media/support/jpeg_files.h"

namespace zephmetadata::media {
namespace {

using testing_support::Resource;

std::string Hex(std::string_view bytes) {
    std::string text;
    for (const char byte : bytes) {
        text += "0123456789abcdef"[static_cast<unsigned char>(byte) >> 4U];
        text += "0123456789abcdef"[static_cast<unsigned char>(byte) & 0xFU];
    }
    return text;
}

TEST(MD5Test, GivesTheDigestsOfTheStandard) {
    // RFC 1321, A.5, and sizes about the border of a block.
    const std::vector<std::pair<std::string, std::string>> table = {
        {"", "d41d8cd98f00b204e9800998ecf8427e"},
        {"a", "0cc175b9c0f1b6a831c399e269772661"},
        {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
        {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789", "d174ab98d277d9f5a5611c2c9f419d9f"},
        {std::string(55, 'a'), "ef1772b6dff9a122358552954ad0df65"},
        {std::string(56, 'a'), "3b0c8ac703f828b04c6c197006d17218"},
        {std::string(64, 'a'), "014842d480b571495a4a0363793f7367"}};
    for (const auto& [text, digest] : table) {
        EXPECT_EQ(Hex(MD5(text)), digest) << text;
    }
}

struct ReadCase {
    const char* mName;
    std::string mBytes;
    std::vector<std::pair<int, std::string>> mResources;
    bool mIsWhole = true;
};

TEST(ImageResourcesTest, AreReadAsFarAsTheyGo) {
    const std::string odd = Resource(0x0404, "odd", "nam");
    const std::string unpadded = odd.substr(0, odd.size() - 1);
    const std::vector<ReadCase> table = {
        {"none", "", {}},
        {"names", Resource(1, "a", "n") + Resource(2, "bb", "na"), {{1, "a"}, {2, "bb"}}},
        {"signatures",
         Resource(1, "a", {}, "MeSa") + Resource(2, "b", {}, "AgHg") + Resource(3, "c", {}, "PHUT") +
             Resource(4, "d", {}, "DCSR"),
         {{1, "a"}, {2, "b"}, {3, "c"}, {4, "d"}}},
        {"missing padding at the end", unpadded, {{0x0404, "odd"}}},
        {"missing padding between", unpadded + Resource(7, ""), {{0x0404, "odd"}, {7, ""}}},
        {"zeros at the end", odd + std::string(4, '\0'), {{0x0404, "odd"}}},
        {"cut in the data", odd + Resource(7, "1234").substr(0, 14), {{0x0404, "odd"}}, false},
        {"cut in the name", odd + "8BIM\1\2\x20", {{0x0404, "odd"}}, false},
        {"huge size", "8BIM" + std::string("\4\4\0\0\xFF\xFF\xFF\xFF", 8), {}, false},
        {"something else", odd + "something else", {{0x0404, "odd"}}, false}};
    for (const ReadCase& row : table) {
        const ImageResources resources = ReadImageResources(row.mBytes);
        std::vector<std::pair<int, std::string>> found;
        for (const ImageResource& resource : resources.mResources) {
            found.emplace_back(resource.mNumber, row.mBytes.substr(resource.mData.mOffset, resource.mData.mSize));
        }
        EXPECT_EQ(found, row.mResources) << row.mName;
        EXPECT_EQ(resources.mIsWhole, row.mIsWhole) << row.mName;
    }
}

TEST(ImageResourcesTest, EditsKeepAllOthers) {
    struct Case {
        const char* mName;
        std::string mBefore;
        std::vector<ResourceChange> mChanges;
        std::string mAfter;
    };
    const std::string first = Resource(0x03ED, "resolution", "x", "MeSa");
    const std::string last = Resource(0x2710, "abc", "print flags");
    const std::string junk = "no resource";
    const std::vector<Case> table = {
        {"set", first + Resource(9, "old", "odd") + last, {{9, "newer"}}, first + Resource(9, "newer", "odd") + last},
        {"first of two",
         Resource(9, "1") + last + Resource(9, "2"),
         {{9, "new"}},
         Resource(9, "new") + last + Resource(9, "2")},
        {"added", first + last, {{9, "n"}, {8, ""}}, first + last + Resource(9, "n") + Resource(8, "")},
        {"added to none", "", {{9, "n"}}, Resource(9, "n")},
        {"added behind missing padding", last.substr(0, last.size() - 1), {{9, "n"}}, last + Resource(9, "n")},
        {"added before what is none", last + junk, {{9, "n"}}, last + Resource(9, "n") + junk},
        {"removed", Resource(9, "1") + last + Resource(9, "2"), {{9, {}}}, last},
        {"not there", first, {{9, {}}}, first},
        {"replaced the last without padding and added",
         first + last.substr(0, last.size() - 1),
         {{0x2710, "12345"}, {9, "n"}},
         first + Resource(0x2710, "12345", "print flags") + Resource(9, "n")}};
    for (const Case& row : table) {
        EXPECT_EQ(EditedImageResources(row.mBefore, row.mChanges), row.mAfter) << row.mName;
    }
}

TEST(ImageResourcesTest, TheDigestFollowsTheDatasets) {
    const std::string datasets = "\x1C\2\x78";
    const auto edited = [&](const std::string& bytes, std::string_view iim) {
        return EditedImageResources(bytes, IIMChanges(ReadImageResources(bytes), iim));
    };
    const std::string before = Resource(kResourceIIMDigest, std::string(16, 'd')) + Resource(kResourceIIM, "old");
    EXPECT_EQ(edited(before, datasets), Resource(kResourceIIMDigest, MD5(datasets)) + Resource(kResourceIIM, datasets));
    EXPECT_EQ(edited(Resource(7, "x"), datasets), Resource(7, "x") + Resource(kResourceIIM, datasets));
    EXPECT_EQ(edited(before + Resource(7, "x"), ""), Resource(7, "x"));
}

}  // namespace
}  // namespace zephmetadata::media
