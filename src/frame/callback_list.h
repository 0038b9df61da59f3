#pragma once

#include <algorithm>
#include <vector>

#include "zephmetadata/types.h"

namespace zephmetadata {

/// Function objects shared with those who registered them, in the order of registration. Emptying a function object is
/// how a registrant takes itself off: it is then passed over and dropped at the next purge.
template <typename... Arguments>
class CallbackList {
public:
    using Callback = sp<std::function<void(Arguments...)>>;

    void Add(const Callback& callback) {
        Purge();
        mCallbacks.push_back(callback);
    }

    void Purge() {
        std::erase_if(mCallbacks, [](const Callback& callback) { return !IsLive(callback); });
    }

    /// Takes away the first registration of @p callback itself.
    void Remove(const Callback& callback) {
        const auto found = std::find(mCallbacks.begin(), mCallbacks.end(), callback);
        if (found != mCallbacks.end()) {
            mCallbacks.erase(found);
        }
    }

    /// Empties every function object, for all who hold it.
    void EmptyAll() {
        for (const Callback& callback : std::vector<Callback>(mCallbacks)) {
            if (IsLive(callback)) {
                const std::function<void(Arguments...)> keepsItsOwnStateAlive = std::exchange(*callback, nullptr);
            }
        }
    }

    /// Calls what is registered now. A callback may register, remove and empty callbacks: the walk goes over a copy of the
    /// list, and passes over what an earlier one of the same walk emptied. Exceptions pass through and end the walk.
    void Call(Arguments... arguments) const {
        for (const Callback& callback : std::vector<Callback>(mCallbacks)) {
            if (IsLive(callback)) {
                const std::function<void(Arguments...)> survivesBeingEmptied = *callback;
                survivesBeingEmptied(arguments...);
            }
        }
    }

private:
    static bool IsLive(const Callback& callback) { return callback && *callback; }

    std::vector<Callback> mCallbacks;
};

}  // namespace zephmetadata
