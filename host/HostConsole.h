// SPDX-License-Identifier: MIT
// What the patcher's console would show, one line an event, in the order in which it happened.
#pragma once

#include "HostBridge.h"
#include "HostOutputFile.h"

#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

namespace Quilo::Host {

/// While it lives it receives all that objects post and all that leaves their dump outlets.
class Console {
public:
    /// While one lives, what the thread that made it causes is not written.
    class Pause {
    public:
        Pause();
        ~Pause();
        Pause(const Pause&) = delete;
        Pause& operator=(const Pause&) = delete;
    };

    /// @param file  "" for standard output    @param live  lines show at once, at some cost
    /// Throws: Fault (WrongInput).
    Console(const std::string& file, bool live);
    ~Console();
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    /// Writes "HEAD: TEXT"; line ends within the text become blanks.
    void Write(std::string_view head, std::string_view text);
    /// Whether an error or a bug was posted.
    bool HasComplaints() const { return hasComplaints_; }
    /// @param sink  hears the names of dictionaries that leave a dump outlet, before their line
    void SetDictionarySink(std::function<void(t_symbol*)> sink) { onDictionary_ = std::move(sink); }
    /// @param sink  hears of each warning, error and bug, behind its line; any thread
    void SetComplaintSink(std::function<void()> sink) { onComplaint_ = std::move(sink); }
    /// Makes the file complete.  Throws: Fault (WrongInput).
    void Close();

private:
    void Receive(HostApi::PostKind kind, std::string_view text);
    void Receive(const HostApi::OutletMessage& message);

    std::optional<OutputFile> file_;
    std::ostream* stream_;
    bool live_;
    bool hasComplaints_ = false;
    std::function<void(t_symbol*)> onDictionary_;
    std::function<void()> onComplaint_;
};

}  // namespace Quilo::Host
