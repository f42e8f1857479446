// SPDX-License-Identifier: MIT
// The queue of the main thread; inside the library only.
#pragma once

#include "ApiThreadState.h"

#include <functional>

namespace HostApi {

enum class QueueEnd : std::uint8_t { Front, Back };

/// Where queued work belongs: an object, and the message that asked for it if there was one.
struct WorkKey {
    const void* object;
    const t_symbol* selector;
    bool operator==(const WorkKey&) const = default;
};

/// Queues work for the main thread. It stays when its object dies, as in Max: the call is then
/// reported instead of made.
/// @param x         whom the work calls
/// @param collapse  takes the place of work with the same key that still waits.  Thread: any.
void Enqueue(const WorkKey& key,
             const void* x,
             QueueEnd end,
             std::function<void()> work,
             bool collapse = false);

/// Whether this thread is inside a message, and not in work that the queue runs.
bool InMessage();

/// A message is delivered while this lives.
class MessageScope {
public:
    MessageScope();
    ~MessageScope();
    MessageScope(const MessageScope&) = delete;
    MessageScope& operator=(const MessageScope&) = delete;
};

}  // namespace HostApi
