// SPDX-License-Identifier: MIT
// The queue of the main thread; inside the library only.
#pragma once

#include "ApiThreadState.h"

#include <functional>

namespace HostApi {

enum class QueueEnd : std::uint8_t { Front, Back };

/// Identifies queued work: an object, and the name of the message if there is one.
struct WorkKey {
    const void* object;
    const t_symbol* selector;
    bool operator==(const WorkKey&) const = default;
};

/// Queues work for the main thread. As in Max it stays queued when its object is freed; the call is
/// then reported and not made.
/// @param x         the object that the work calls
/// @param collapse  replaces queued work with the same key.  Thread: any.
void Enqueue(const WorkKey& key,
             const void* x,
             QueueEnd end,
             std::function<void()> work,
             bool collapse = false);

/// Whether this thread is delivering a message, other than from queued work.
bool InMessage();

/// Marks that the calling thread delivers a message.
class MessageScope {
public:
    MessageScope();
    ~MessageScope();
    MessageScope(const MessageScope&) = delete;
    MessageScope& operator=(const MessageScope&) = delete;
};

}  // namespace HostApi
