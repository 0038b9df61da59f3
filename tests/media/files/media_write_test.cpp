#include "media/files/media_write.h"

#include <fcntl.h>

#include "files_fixture.h"
#include "media/files/plan_check.h"
#include "media/files/plan_execution.h"

namespace zephmetadata::media {
namespace {

class MediaWrites : public FilesTest {
protected:
    static Plan ThreePlaces() {
        Plan plan;
        plan.Replace({10, 5}, "longer than five", Touch::kBlock);
        plan.Insert(40, "inserted", Touch::kStructure);
        plan.Remove({60, 20}, Touch::kSpace);
        return plan;
    }
    static std::string Sample(std::size_t size) {
        std::string bytes;
        for (std::size_t i = 0; i < size; ++i) {
            bytes += static_cast<char>(i * 31 + i / 251);
        }
        return bytes;
    }
};

TEST_F(MediaWrites, CarryOutWhatThePlanSays) {
    const std::size_t block = kCopyBlockBytes;
    for (const std::size_t size : {std::size_t{100}, block, 2 * block + 77}) {
        const std::string bytes = Sample(size);
        const auto path = mFolder.Write("a.jpg", bytes);
        const std::string wanted = Carried(ThreePlaces(), MemorySource(bytes)).value();
        const OpenedMedia media = OpenMediaFile(path.string());
        const MemorySource memory(bytes);
        for (const ByteSource* source :
             {static_cast<const ByteSource*>(media.mSource.get()), static_cast<const ByteSource*>(&memory)}) {
            const OpenFile into(AT_FDCWD, (mFolder.Path() / "b.jpg").string(), O_RDWR | O_CREAT | O_TRUNC, 0600);
            ASSERT_TRUE(CarryOut(ThreePlaces(), *source, into.Number()).IsSuccess());
            EXPECT_TRUE(Bytes(mFolder.Path() / "b.jpg") == wanted) << size;
            EXPECT_EQ(PlanDifference(ThreePlaces(), *source, MemorySource(wanted)), "");
        }
    }
}

TEST_F(MediaWrites, ReportASourceThatCannotBeRead) {
    const auto path = mFolder.Write("a.jpg", Sample(100));
    const OpenedMedia media = OpenMediaFile(path.string());
    std::filesystem::resize_file(path, 70);
    const OpenFile into(AT_FDCWD, (mFolder.Path() / "b.jpg").string(), O_RDWR | O_CREAT, 0600);
    EXPECT_FALSE(CarryOut(ThreePlaces(), *media.mSource, into.Number()).IsSuccess());
    char byte = 0;
    EXPECT_TRUE(media.mSource->ReadAt(69, &byte, 1));
    EXPECT_FALSE(media.mSource->ReadAt(70, &byte, 1));
    EXPECT_FALSE(media.mSource->ReadAt(100, &byte, 1));
    Plan beyond;
    beyond.Remove({90, 20}, Touch::kSpace);
    EXPECT_EQ(CarryOut(beyond, *media.mSource, into.Number()).mDetail, "the plan does not fit the file");
    EXPECT_EQ(PlanDifference(beyond, *media.mSource, *media.mSource), "the plan does not fit the file");
}

TEST_F(MediaWrites, ProveEveryByte) {
    const MemorySource before(Sample(100));
    const std::string right = Carried(ThreePlaces(), before).value();
    EXPECT_EQ(PlanDifference(ThreePlaces(), before, MemorySource(right)), "");
    for (std::size_t at = 0; at < right.size(); ++at) {
        std::string wrong = right;
        wrong[at] = static_cast<char>(wrong[at] ^ 1);
        EXPECT_THAT(PlanDifference(ThreePlaces(), before, MemorySource(wrong)),
                    ::testing::HasSubstr(" at " + std::to_string(at) + " of the new "));
        wrong = right;
        EXPECT_NE(PlanDifference(ThreePlaces(), before, MemorySource(wrong.erase(at, 1))), "");
    }
    EXPECT_EQ(PlanDifference(ThreePlaces(), before, MemorySource(right + "x")),
              "the new file has 100 bytes instead of 99");
}

TEST_F(MediaWrites, ProveReferences) {
    struct Row {
        const char* mCase;
        std::vector<Range> mBefore;
        std::vector<Range> mAfter;
        bool mIsRight;
    };
    const Row rows[] = {
        {"before all", {{0, 10}}, {{0, 10}}, true},
        {"moved", {{15, 25}, {40, 20}}, {{26, 25}, {59, 20}}, true},
        {"not moved", {{15, 25}}, {{15, 25}}, false},
        {"another size", {{15, 25}}, {{26, 24}}, false},
        {"replaced in part", {{5, 10}, {80, 20}}, {{99, 1}, {79, 20}}, true},
        {"something inserted inside", {{30, 20}}, {{41, 28}}, true},
        {"something inserted inside, not counted", {{30, 20}}, {{41, 20}}, false},
        {"empty", {{15, 0}}, {{0, 0}}, true},
        {"exchanged", {{15, 25}, {40, 20}}, {{59, 20}, {26, 25}}, false},
        {"one more", {{15, 25}, {40, 20}}, {{26, 25}, {51, 8}, {59, 20}}, true},
        {"one more, out of order", {{15, 25}, {40, 20}}, {{59, 20}, {26, 25}, {51, 8}}, false},
        {"replaced and gone", {{10, 5}, {40, 20}}, {{59, 20}}, true},
        {"lost", {{15, 25}, {40, 20}}, {{59, 20}}, false},
        {"beyond all files", {{~std::uint64_t{0}, 20}}, {{0, 20}}, true},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(ReferenceDifference(ThreePlaces(), row.mBefore, row.mAfter).empty(), row.mIsRight) << row.mCase;
    }
    EXPECT_EQ(ReferenceDifference(ThreePlaces(), {{15, 25}}, {{15, 25}}),
              "the 25 bytes at 15 that the file refers to should now be 25 bytes at 26, but it does not refer there");
}

TEST_F(MediaWrites, ReplaceOnlyWhatWasAskedAndProven) {
    const std::string old = Sample(100);
    const auto path = mFolder.Write("a.jpg", old);
    const FileStamp stamp = StampOf(path.string());
    const auto plan = [](const std::shared_ptr<const ByteSource>&) { return PlannedEdit{kSuccess, {}, ThreePlaces()}; };
    const auto refuse = [](const auto&) { return RefusedEdit(FileStatus::kFileStatus_CannotCarryXMP, "why"); };
    const auto nothing = [](const auto&) { return PlannedEdit(); };
    EXPECT_EQ(ReplaceMedia(path.string(), stamp, refuse, {}).mDetail, "why");
    EXPECT_EQ(ReplaceMedia(path.string(), stamp, nothing, {}).mStamp, stamp);
    const WriteOutcome doubted = ReplaceMedia(path.string(), stamp, plan, [](const CarriedEdit&) { return "doubt"; });
    EXPECT_EQ(doubted.mStatus, FileStatus::kFileStatus_NotWritten);
    EXPECT_EQ(doubted.mDetail, "doubt");
    EXPECT_EQ(StampOf(path.string()), stamp);
    const auto check = [&](const CarriedEdit& edit) {
        const bool isSo = edit.mAfter->Size() == 99 && edit.mBefore->Size() == 100 && Bytes(path) == old;
        return isSo ? UTF8String() : "not so";
    };
    const WriteOutcome outcome = ReplaceMedia(path.string(), stamp, plan, check);
    EXPECT_EQ(outcome.mStatus, kSuccess) << outcome.mDetail;
    EXPECT_EQ(outcome.mStamp, OpenMediaFile(path.string()).mStamp);
    EXPECT_EQ(Bytes(path), Carried(ThreePlaces(), MemorySource(old)));
    EXPECT_EQ(ReplaceMedia(path.string(), stamp, plan, {}).mStatus, kChanged);
}

TEST_F(MediaWrites, CreateOnlyWhatIsNotThere) {
    const auto path = mFolder.Path() / "a.xmp";
    const mode_t mask = umask(027);
    const WriteOutcome outcome = CreateMedia(path.string(), "packet");
    umask(mask);
    EXPECT_EQ(outcome.mStatus, kSuccess) << outcome.mDetail;
    EXPECT_EQ(outcome.mStamp, StampOf(path.string()));
    EXPECT_EQ(Status(path).st_mode & 0777U, 0640U);
    EXPECT_EQ(CreateMedia(path.string(), "other").mStatus, kChanged);
    EXPECT_EQ(Bytes(path), "packet");
    EXPECT_EQ(CreateMedia((mFolder.Path() / "none/a.xmp").string(), "x").mStatus, FileStatus::kFileStatus_NotWritten);
    EXPECT_EQ(CreateMedia("", "x").mStatus, FileStatus::kFileStatus_NotWritten);
    std::filesystem::create_symlink("nowhere.xmp", mFolder.Path() / "link.xmp");
    EXPECT_EQ(CreateMedia((mFolder.Path() / "link.xmp").string(), "x").mStatus, kChanged);
    const auto body = [&] {
        return CreateMedia((mFolder.Path() / "b.xmp").string(), std::string(5000, 'x')).mStatus ==
               FileStatus::kFileStatus_NotWritten;
    };
    EXPECT_EQ(WithSmallDisk(1000, body), 0);
    EXPECT_THAT(FolderNames(), ::testing::ElementsAre("a.xmp", "link.xmp"));
}

}  // namespace
}  // namespace zephmetadata::media
