#include "support/library_test.h"

namespace zephmetadata {
namespace {

class Switches : public support::LibraryTest {
protected:
    ~Switches() override { DisableXMPWriting(false); }
};

TEST_F(Switches, TellOfRealChangesOnly) {
    int calls = 0;
    const auto callback = std::make_shared<std::function<void()>>([&] { ++calls; });
    NotifyWhenXMPWritingChanged(callback);
    DisableXMPWriting(false);
    EXPECT_EQ(calls, 0);
    DisableXMPWriting(true);
    DisableXMPWriting(true);
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(IsXMPWritingDisabled());
    *callback = nullptr;
    DisableXMPWriting(false);
    EXPECT_EQ(calls, 1);
}

TEST_F(Switches, KeepWritingDisabledAcrossTerminate) {
    DisableXMPWriting(true);
    Terminate();
    EXPECT_TRUE(IsXMPWritingDisabled());
    Initialize();
    EXPECT_TRUE(IsXMPWritingDisabled());
}

TEST_F(Switches, ForcedWritableIsKeptInTheSettings) {
    EXPECT_FALSE(IsAllMetadataForcedWritable());
    ForcedAllMetadataWritable(true);
    EXPECT_TRUE(IsAllMetadataForcedWritable());
    ForcedAllMetadataWritable(false);
    EXPECT_FALSE(IsAllMetadataForcedWritable());
}

}  // namespace
}  // namespace zephmetadata
