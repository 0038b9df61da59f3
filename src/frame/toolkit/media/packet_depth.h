#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zephmetadata::toolkit {

/// The toolkit reads packets recursively, which takes the more stack the deeper their elements are nested (deep_stack.h).
/// Files that are too large for that to be provided for are looked through before.
inline constexpr std::size_t kMaxFileNesting = 1000000;

/// Counts how deep the elements in a stream of bytes are nested, whatever else stands between them. NUL bytes are passed
/// over, so that UTF-16 with ASCII names counts like UTF-8. Image data looks like a start tag by chance some 15 times in a
/// megabyte, far below the bound.
class NestingCounter {
public:
    void Feed(std::string_view bytes);
    std::size_t Deepest() const { return mDeepest; }

private:
    enum class State { kText, kOpen, kName, kAttributes, kQuoted, kSlash, kClose, kCloseName };

    void Step(char c);
    void Open();

    State mState = State::kText;
    char mQuote = 0;
    unsigned mToFollow = 0;  // bytes that complete a character of a name
    std::size_t mDepth = 0;
    std::size_t mDeepest = 0;
};

/// Whether the file at a native path holds elements nested deeper than kMaxFileNesting. The media data of ISO base media
/// files (MP4, QuickTime) is not looked at. Cost: reads the rest of the file once.
bool IsNestedTooDeep(const std::string& nativePath);

}  // namespace zephmetadata::toolkit
