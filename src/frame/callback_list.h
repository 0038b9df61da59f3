#pragma once

#include <algorithm>
#include <functional>
#include <mutex>
#include <utility>
#include <vector>

#include "zephmetadata/types.h"

namespace zephmetadata {

/// Guards all lists and the function objects in them, as one of these may be called by several threads at once; never held
/// while one runs. What is dropped from a list may come back here when it is destroyed.
inline std::recursive_mutex& CallbackMutex() {
    static std::recursive_mutex mutex;
    return mutex;
}

/// Function objects shared with those who registered them, in the order of registration. Emptying a function object is
/// how a registrant takes itself off: it is then passed over and dropped at the next purge.
template <typename... Arguments>
class CallbackList {
public:
    using Callback = sp<std::function<void(Arguments...)>>;

    void Add(const Callback& callback) {
        const std::lock_guard lock(CallbackMutex());
        Purge();
        mCallbacks.push_back(callback);
    }

    void Purge() {
        const std::lock_guard lock(CallbackMutex());
        std::erase_if(mCallbacks, [](const Callback& callback) { return !IsLive(callback); });
    }

    /// Takes away the first registration of @p callback itself.
    void Remove(const Callback& callback) {
        const std::lock_guard lock(CallbackMutex());
        const auto found = std::find(mCallbacks.begin(), mCallbacks.end(), callback);
        if (found != mCallbacks.end()) {
            mCallbacks.erase(found);
        }
    }

    /// Empties every function object, for all who hold it.
    void EmptyAll() {
        const std::lock_guard lock(CallbackMutex());
        for (const Callback& callback : std::vector<Callback>(mCallbacks)) {
            if (IsLive(callback)) {
                const std::function<void(Arguments...)> keepsItsOwnStateAlive = std::exchange(*callback, nullptr);
            }
        }
    }

    /// Calls what is registered now. A callback may register, remove and empty callbacks: the walk goes over a copy of the
    /// list, and passes over what an earlier one of the same walk emptied. Exceptions pass through and end the walk.
    void Call(Arguments... arguments) const {
        for (const Callback& callback : Registered()) {
            CallOne(callback, arguments...);
        }
    }

    /// The same, but an exception of one callback keeps no other from being called.
    void CallAll(Arguments... arguments) const {
        for (const Callback& callback : Registered()) {
            try {
                CallOne(callback, arguments...);
            } catch (...) {
                // Who calls is in the middle of its own work and has to finish it, whatever a listener makes of the news.
            }
        }
    }

private:
    using Function = std::function<void(Arguments...)>;

    std::vector<Callback> Registered() const {
        const std::lock_guard lock(CallbackMutex());
        return mCallbacks;
    }

    /// Keeps a function object, with the state that is its own, alive while it runs, even when it is emptied meanwhile:
    /// what is registered passes calls on to it until then. Null where it is empty.
    class Running {
    public:
        explicit Running(const Callback& callback) : mCallback(callback) {
            const std::lock_guard lock(CallbackMutex());
            if (!IsLive(callback)) {
                return;
            }
            if (const Relay* const outer = callback->template target<Relay>()) {
                mFunction = outer->mFunction;  // it called its own list, or runs in another thread
                return;
            }
            mFunction = std::make_shared<Function>(std::move(*callback));
            *callback = Relay{mFunction};
            mIsOutermost = true;
        }
        ~Running() {
            const std::lock_guard lock(CallbackMutex());
            const Relay* const relay = mIsOutermost ? mCallback->template target<Relay>() : nullptr;
            const bool isCopied = mFunction.use_count() > 2;  // a copy made meanwhile goes on passing calls on
            if (relay != nullptr && relay->mFunction == mFunction && !isCopied) {
                *mCallback = Function(std::move(*mFunction));
            }
        }
        Running(const Running&) = delete;
        Running& operator=(const Running&) = delete;

        void operator()(Arguments... arguments) const {
            if (mFunction) {
                (*mFunction)(arguments...);
            }
        }

    private:
        struct Relay {
            sp<Function> mFunction;
            void operator()(Arguments... arguments) const { (*mFunction)(arguments...); }
        };

        const Callback& mCallback;
        sp<Function> mFunction;
        bool mIsOutermost = false;
    };

    static bool IsLive(const Callback& callback) { return callback && *callback; }

    static void CallOne(const Callback& callback, Arguments... arguments) {
        const Running running(callback);
        running(arguments...);
    }

    std::vector<Callback> mCallbacks;
};

}  // namespace zephmetadata
