// SPDX-License-Identifier: MIT
// The log of the libraries, and its listeners.
//
// A library does not know where its host shows text; code that has a console adds a listener.
#pragma once

#include <mutex>
#include <string_view>
#include <vector>

namespace tav {

/// Writes `message` and a line end to standard error, "velkdsp >> " and the same to the debugger's
/// channel where the platform has one, then passes the message to every listener.
/// Thread: any but audio.  Throws: what a listener throws.
void Log(std::string_view message);

/// Passes every log message to its listeners, in the order in which they were added.
class MaxConsoleNotifier {
public:
    class Listener {
    public:
        virtual ~Listener() = default;
        virtual void LogMessage(std::string_view message) = 0;
    };

    /// The notifier that `Log` feeds.
    static MaxConsoleNotifier& Instance();

    /// The caller keeps the listener alive until it is removed. Adding twice adds once.
    void AddListener(Listener& listener);
    /// On return no other thread is inside the listener any more.
    void RemoveListener(const Listener& listener);

    /// A listener may itself log, add or remove listeners.  Thread: any but audio.
    void Notify(std::string_view message);

private:
    std::recursive_mutex lock_;
    std::vector<Listener*> listeners_;
};

}  // namespace tav
