// SPDX-License-Identifier: MIT
// A function of the host that the libraries call; inside the libraries only.
#pragma once

#include <mutex>
#include <utility>

namespace HostApi {

/// One function at a time, with a lock that the same thread may take again, since what the function
/// does may lead to another call.  Thread: any.
/// @tparam Function  a std::function
template <class Function>
class Sink {
public:
    void Set(Function function) {
        const std::lock_guard lock(mutex_);
        function_ = std::move(function);
    }
    /// Does nothing where there is no function.
    template <class... Arguments>
    void Call(Arguments&&... arguments) {
        const std::lock_guard lock(mutex_);
        if (function_) function_(std::forward<Arguments>(arguments)...);
    }

private:
    std::recursive_mutex mutex_;
    Function function_;
};

}  // namespace HostApi
