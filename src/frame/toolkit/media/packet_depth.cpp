#include "frame/toolkit/media/packet_depth.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <limits>
#include <vector>

namespace zephmetadata::toolkit {

namespace {

bool IsLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == ':';
}

/// How many bytes follow the first one of a character in UTF-8; 0 for a byte that begins no longer character.
unsigned BytesToFollow(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0xF0 && byte <= 0xF4 ? 3 : byte >= 0xE0 && byte < 0xF0 ? 2 : byte >= 0xC2 && byte < 0xE0 ? 1 : 0;
}

bool IsNameStart(char c) {
    return IsLetter(c) || BytesToFollow(c) > 0;
}

bool IsNameCharacter(char c) {
    return IsNameStart(c) || (c >= '0' && c <= '9') || c == '-' || c == '.';
}

bool IsBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

/// Bytes that stand in no XML document: what looked like a tag was chance.
bool IsBinary(char c) {
    return static_cast<unsigned char>(c) < 0x20 && !IsBlank(c);
}

std::uint64_t BigEndian(const char* bytes, std::size_t size) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < size; ++i) {
        value = value << 8U | static_cast<unsigned char>(bytes[i]);
    }
    return value;
}

void Feed(std::ifstream& in, std::uint64_t size, NestingCounter& counter) {
    constexpr std::size_t kBlock = std::size_t{1} << 18U;
    std::vector<char> block(kBlock);
    while (size > 0 && counter.Deepest() <= kMaxFileNesting) {
        in.read(block.data(), static_cast<std::streamsize>(std::min<std::uint64_t>(size, kBlock)));
        if (in.gcount() <= 0) {
            return;
        }
        counter.Feed({block.data(), static_cast<std::size_t>(in.gcount())});
        size -= static_cast<std::uint64_t>(in.gcount());
    }
}

/// Feeds the boxes of an ISO base media file (ISO 14496-12) but for the media data; false when it is none.
bool FeedBoxes(std::ifstream& in, NestingCounter& counter) {
    constexpr std::size_t kHeader = 8;
    constexpr std::size_t kLargeHeader = 16;
    std::array<char, kLargeHeader> header{};
    for (bool first = true;; first = false) {
        in.read(header.data(), kHeader);
        if (in.gcount() < static_cast<std::streamsize>(kHeader) || (first && std::memcmp(&header[4], "ftyp", 4) != 0)) {
            return !first;
        }
        std::uint64_t size = BigEndian(header.data(), 4);
        std::uint64_t read = kHeader;
        if (size == 1) {
            in.read(&header[kHeader], kHeader);
            size = BigEndian(&header[kHeader], kHeader);
            read = kLargeHeader;
        }
        const bool isLast = size < read;  // to the end of the file, or damaged
        if (std::memcmp(&header[4], "mdat", 4) == 0 && !isLast) {
            in.seekg(static_cast<std::streamoff>(
                         std::min<std::uint64_t>(size - read, std::numeric_limits<std::int64_t>::max())),
                     std::ios::cur);
        } else {
            Feed(in, isLast ? std::numeric_limits<std::uint64_t>::max() : size - read, counter);
        }
        if (isLast || !in) {
            return true;
        }
    }
}

}  // namespace

void NestingCounter::Open() {
    mState = State::kText;
    mDeepest = std::max(mDeepest, ++mDepth);
}

void NestingCounter::Step(char c) {
    if (mToFollow > 0) {
        const bool follows = (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
        mToFollow = follows ? mToFollow - 1 : 0;
        mState = follows ? mState : State::kText;
        return;
    }
    const bool inName =
        mState == State::kOpen || mState == State::kClose || mState == State::kName || mState == State::kCloseName;
    mToFollow = inName ? BytesToFollow(c) : 0;
    if (c == '<' && mState != State::kText) {
        mState = State::kOpen;
        return;
    }
    switch (mState) {
        case State::kText:
            mState = c == '<' ? State::kOpen : State::kText;
            break;
        case State::kOpen:
            mState = c == '/' ? State::kClose : IsNameStart(c) ? State::kName : State::kText;
            break;
        case State::kName:
        case State::kAttributes:
        case State::kSlash:
            if (c == '>') {
                mState == State::kSlash ? void(mState = State::kText) : Open();
            } else if (c == '/') {
                mState = State::kSlash;
            } else if (mState == State::kName ? !IsNameCharacter(c) && !IsBlank(c) : IsBinary(c)) {
                mState = State::kText;
            } else if (mState == State::kAttributes && (c == '"' || c == '\'')) {
                mState = State::kQuoted;
                mQuote = c;
            } else if (IsBlank(c)) {
                mState = State::kAttributes;
            }
            break;
        case State::kQuoted:
            mState = c == mQuote ? State::kAttributes : IsBinary(c) ? State::kText : State::kQuoted;
            break;
        case State::kClose:
            mState = IsNameStart(c) ? State::kCloseName : State::kText;
            break;
        case State::kCloseName:
            if (c == '>') {
                mDepth -= mDepth > 0 ? 1U : 0U;
            }
            mState = IsNameCharacter(c) || IsBlank(c) ? State::kCloseName : State::kText;
            break;
    }
}

void NestingCounter::Feed(std::string_view bytes) {
    while (!bytes.empty()) {
        if (mState == State::kText) {
            bytes.remove_prefix(std::min(bytes.find('<'), bytes.size()));
        }
        if (!bytes.empty()) {
            if (bytes.front() != '\0') {
                Step(bytes.front());
            }
            bytes.remove_prefix(1);
        }
    }
}

bool IsNestedTooDeep(const std::string& nativePath) {
    std::ifstream in(nativePath, std::ios::binary);
    NestingCounter counter;
    if (!FeedBoxes(in, counter)) {
        in.clear();
        in.seekg(0);
        Feed(in, std::numeric_limits<std::uint64_t>::max(), counter);
    }
    return counter.Deepest() > kMaxFileNesting;
}

}  // namespace zephmetadata::toolkit
