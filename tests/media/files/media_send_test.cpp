#include "media_fixture.h"

namespace zephmetadata::media {
namespace {

class MediaSend : public MediaTest {
protected:
    /// Sets one property of the bytes, as MediaTest::Edit does of a file.
    static SentMedia Send(const std::shared_ptr<const ByteSource>& source, const std::string& value,
                          ByteTarget& target) {
        const MediaReading file = ReadMedia(source);
        const XMPMetaPtr tree = file.mTree ? file.mTree : NewTree();
        SetProperty(tree.get(), kXMP, "Label", value);
        return SendMedia(source, tree.get(), target);
    }
};

TEST_F(MediaSend, GivesTheBytesThatAFileGets) {
    for (const char* fixture : {"harbour.jpg", "packet.png", "packet.tif", "packet.gif", "packet.mp3", "packet.mp4",
                                "packet.wav", "drawing.svg", "plain.jpg"}) {
        const auto path = Copy(fixture);
        BufferTarget target;
        std::shared_ptr<const ByteSource> source = std::make_shared<BufferSource>(support::ReadFile(path));
        for (const std::size_t size : {6000U, 5U, 70000U}) {
            ASSERT_EQ(Edit(path, std::string(size, 'v')).mStatus, FileStatus::kFileStatus_Success) << fixture;
            const SentMedia sent = Send(source, std::string(size, 'v'), target);
            ASSERT_EQ(sent.mStatus, FileStatus::kFileStatus_Success) << fixture << sent.mDetail;
            EXPECT_TRUE(target.Committed()->Bytes() == support::ReadFile(path)) << fixture << size;
            source = sent.mSource;
        }
        EXPECT_EQ(Send(source, std::string(70000, 'v'), target).mSource, source) << "nothing changed";
    }
}

/// A target that fails in one way, and says whether anything got to it.
class FailingTarget : public ByteTarget {
public:
    enum class Fault { kStart, kAppend, kOtherBytes, kCommit, kUnreadable };
    explicit FailingTarget(Fault fault) : mFault(fault) {}

    bool Start(std::uint64_t size) override {
        mIsStarted = true;
        return mFault != Fault::kStart && mInner.Start(size);
    }
    bool Append(const void* bytes, std::size_t size) override {
        return mFault != Fault::kAppend && mInner.Append(bytes, size);
    }
    sp<const ByteSource> Written() override {
        const sp<const ByteSource> written = mInner.Written();
        std::string bytes = ReadRange(*written, {0, written->Size()}).value_or("");
        bytes.back() ^= mFault == Fault::kOtherBytes ? '\x01' : '\0';
        return mFault == Fault::kUnreadable ? nullptr : std::make_shared<BufferSource>(std::move(bytes));
    }
    FileStatus Commit() override {
        mIsCommitted = mFault == Fault::kUnreadable;
        return mIsCommitted ? FileStatus::kFileStatus_Success : FileStatus::kFileStatus_Changed;
    }

    bool mIsStarted = false;
    bool mIsCommitted = false;

private:
    Fault mFault;
    BufferTarget mInner;
};

TEST_F(MediaSend, IsRefusedWhereItsTargetFails) {
    using enum FileStatus;
    using Fault = FailingTarget::Fault;
    struct Row {
        Fault mFault;
        FileStatus mStatus;
        const char* mDetail;
    };
    const Row rows[] = {{Fault::kStart, kFileStatus_NotWritten, "its target takes nothing"},
                        {Fault::kAppend, kFileStatus_NotWritten, "its target does not take all of it"},
                        {Fault::kOtherBytes, kFileStatus_NotWritten, "the byte at"},
                        {Fault::kCommit, kFileStatus_Changed, ""},
                        {Fault::kUnreadable, kFileStatus_Success, ""}};
    const auto source = std::make_shared<BufferSource>(support::ReadFile(Fixture("harbour.jpg")));
    for (const Row& row : rows) {
        FailingTarget target(row.mFault);
        const SentMedia sent = Send(source, "v", target);
        EXPECT_EQ(sent.mStatus, row.mStatus) << sent.mDetail;
        EXPECT_THAT(sent.mDetail, ::testing::HasSubstr(row.mDetail));
        EXPECT_EQ(target.mIsCommitted, row.mStatus == kFileStatus_Success);
        EXPECT_EQ(sent.mSource, nullptr);
    }
    for (const char* fixture : {"sidecar.xmp", "broken-packet.jpg"}) {
        FailingTarget target(Fault::kUnreadable);
        const auto refused = std::make_shared<BufferSource>(support::ReadFile(Fixture(fixture)));
        EXPECT_NE(Send(refused, "v", target).mStatus, kFileStatus_Success) << fixture;
        EXPECT_FALSE(target.mIsStarted) << fixture;
    }
}

}  // namespace
}  // namespace zephmetadata::media
