#include "frame/errors.h"

#include "support/library_test.h"

namespace zephmetadata {
namespace {

using ::testing::ElementsAre;

class Errors : public support::LibraryTest {};

TEST_F(Errors, GetThePrefixOfTheirKind) {
    struct Row {
        std::int32_t mKind;
        const char* mMessage;
    };
    const Row rows[] = {{0, "Error parsing definitions file: what."},
                        {1, "Error registering definition: what."},
                        {2, "Error reading XMP data: what."},
                        {3, "Error writing XMP data: what."},
                        {4, "Error parsing view definitions file: what."},
                        {5, "Error registering view definition: what."},
                        {6, "what."},
                        {7, "Error parsing manifest file: what."},
                        {8, "Error registering extension package: what."},
                        {9, "what."},
                        {-1, "what."}};
    std::vector<Record> expected;
    for (const Row& row : rows) {
        SendError(static_cast<ErrorKind>(row.mKind), u"what.", u"/some/file");
        expected.push_back({static_cast<ErrorKind>(row.mKind), row.mMessage, "/some/file"});
    }
    EXPECT_EQ(Records(), expected);
    EXPECT_TRUE(HasErrors());
}

TEST_F(Errors, KeepEscapesAndTheArgumentsOwnMarks) {
    SendError(ErrorKind::ErrorReadingXMP, u"#{quot}@1#{quot}", u"");
    EXPECT_THAT(Records(),
                ElementsAre(Record{ErrorKind::ErrorReadingXMP, "Error reading XMP data: #{quot}@1#{quot}", ""}));
}

TEST_F(Errors, ReachCallbacksInOrderAndOncePerRegistration) {
    std::vector<std::string> calls;
    const auto make = [&](const std::string& name) {
        return std::make_shared<std::function<void(UTF16String)>>(
            [&calls, name](const UTF16String& message) { calls.push_back(name + zephcore::UTF16to8(message)); });
    };
    const ErrorCallback first = make("1");
    const ErrorCallback second = make("2");
    NotifyOnError(first);
    NotifyOnError(second);
    NotifyOnError(first);
    NotifyOnError(nullptr);
    SendError(ErrorKind::GenericPanelManifestError, u"a", u"");
    EXPECT_THAT(calls, ElementsAre("1a", "2a", "1a"));

    *first = nullptr;
    calls.clear();
    SendError(ErrorKind::GenericPanelManifestError, u"b", u"");
    EXPECT_THAT(calls, ElementsAre("2b"));

    NotifyOnError(second);  // drops the emptied entries
    EXPECT_EQ(first.use_count(), 1);
}

TEST_F(Errors, LetACallbackReadTheListAndReachThoseAfterOneThatThrows) {
    bool sawItself = false;
    NotifyOnError(std::make_shared<std::function<void(UTF16String)>>([](const UTF16String&) { throw 1; }));
    NotifyOnError(
        std::make_shared<std::function<void(UTF16String)>>([&](const UTF16String&) { sawItself = HasErrors(); }));
    EXPECT_NO_THROW(SendError(ErrorKind::ErrorReadingXMP, u"", u""));
    EXPECT_TRUE(sawItself);
}

/// A listener with state of its own, which reports an error itself when it is called for the second time, and takes
/// itself off at the third call.
struct Counter {
    std::vector<int>* mSeen;
    std::shared_ptr<std::weak_ptr<std::function<void(UTF16String)>>> mSelf;
    int mCalls = 0;

    void operator()(const UTF16String& /*message*/) {
        if (++mCalls == 2) {
            SendError(ErrorKind::ErrorReadingXMP, u"", u"");
        } else if (mCalls == 3) {
            *mSelf->lock() = nullptr;
        }
        mSeen->push_back(mCalls);
    }
};

TEST_F(Errors, LeaveACallbackItsOwnStateEvenWhenItEmptiesItself) {
    std::vector<int> seen;
    const auto self = std::make_shared<std::weak_ptr<std::function<void(UTF16String)>>>();
    const ErrorCallback callback = std::make_shared<std::function<void(UTF16String)>>(Counter{&seen, self});
    *self = callback;
    NotifyOnError(callback);
    SendError(ErrorKind::ErrorReadingXMP, u"", u"");
    EXPECT_EQ(callback->target<Counter>()->mCalls, 1);
    SendError(ErrorKind::ErrorReadingXMP, u"", u"");
    SendError(ErrorKind::ErrorReadingXMP, u"", u"");
    EXPECT_THAT(seen, ElementsAre(1, 3, 3));
    EXPECT_FALSE(*callback);
}

TEST(ErrorsOutside, AreKeptUntilTheFinalTerminate) {
    const support::TempFolder folder;
    SendError(ErrorKind::ErrorReadingXMP, u"early", u"");
    const auto callback = std::make_shared<std::function<void(UTF16String)>>([](const UTF16String&) { FAIL(); });
    NotifyOnError(callback);
    Initialize();
    Initialize();
    SendError(ErrorKind::ErrorReadingXMP, u"late", u"");
    Terminate();
    EXPECT_EQ(Records().size(), 2U);
    Terminate();
    EXPECT_FALSE(HasErrors());
}

}  // namespace
}  // namespace zephmetadata
