#include <atomic>
#include <iostream>
#include <memory>
#include <streambuf>

#include "xmp/core/exempi_handles.h"

namespace zephmetadata::toolkit {
namespace {

thread_local int quietDepth = 0;

// Keeps no text of its own, so that threads may write through it as they may through the buffer behind it.
class QuietBuffer final : public std::streambuf {
public:
    void SetTarget(std::streambuf* target) { mTarget = target; }
    std::streambuf* Target() const { return mTarget; }

protected:
    int_type overflow(int_type c) override {
        std::streambuf* const target = mTarget;
        if (quietDepth > 0 || target == nullptr || traits_type::eq_int_type(c, traits_type::eof())) {
            return traits_type::not_eof(c);
        }
        return target->sputc(traits_type::to_char_type(c));
    }
    std::streamsize xsputn(const char* text, std::streamsize size) override {
        std::streambuf* const target = mTarget;
        return quietDepth > 0 || target == nullptr ? size : target->sputn(text, size);
    }
    int sync() override {
        std::streambuf* const target = mTarget;
        return quietDepth > 0 || target == nullptr ? 0 : target->pubsync();
    }

private:
    std::atomic<std::streambuf*> mTarget{nullptr};
};

// std::cerr is used until the very end of the process, so the filter is never destroyed.
union Immortal {
    Immortal() { std::construct_at(&mBuffer); }
    ~Immortal() {}  // NOLINT(modernize-use-equals-default): the default of a union with such a member is no destructor
    QuietBuffer mBuffer;
};

QuietBuffer& Filter() {
    static Immortal filter;
    return filter.mBuffer;
}

bool filterInUse =
    false;  // changed by InstallQuietFilter and RemoveQuietFilter alone, which the toolkit's start serialises

}  // namespace

QuietToolkit::QuietToolkit() noexcept {
    ++quietDepth;
}
QuietToolkit::~QuietToolkit() {
    --quietDepth;
}

void InstallQuietFilter() {
    // A buffer put before the filter may still pass on to it: a second installation would then make a ring.
    if (filterInUse) {
        return;
    }
    Filter().SetTarget(std::cerr.rdbuf());
    std::cerr.rdbuf(&Filter());
    filterInUse = true;
}

void RemoveQuietFilter() noexcept {
    if (!filterInUse || std::cerr.rdbuf() != &Filter()) {
        return;
    }
    // The target stays: another thread may be writing through the filter right now.
    std::streambuf* const target = Filter().Target();
    std::cerr.rdbuf(target);
    filterInUse = false;
}

}  // namespace zephmetadata::toolkit
