// SPDX-License-Identifier: MIT
// Writes what Max's console would show, one line for each event, in order.
#pragma once

#include "HostBridge.h"
#include "HostOutputFile.h"

#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

namespace Quilo::Host {

/// While it exists, it receives all that objects post and send from their dump outlets.
class Console {
public:
    /// While one exists, events that its thread causes are not written.
    class Pause {
    public:
        Pause();
        ~Pause();
        Pause(const Pause&) = delete;
        Pause& operator=(const Pause&) = delete;
    };

    /// @param file  "" for standard output    @param live  flush each line; slower
    /// Throws: Fault (WrongInput).
    Console(const std::string& file, bool live);
    ~Console();
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    /// Writes "HEAD: TEXT"; line ends within the text become blanks.
    void Write(std::string_view head, std::string_view text);
    /// Whether an error or a bug was posted.
    bool HasComplaints() const { return hasComplaints_; }
    /// @param sink  called with the name of each dictionary that leaves a dump outlet, before its
    /// line is written
    void SetDictionarySink(std::function<void(t_symbol*)> sink) { onDictionary_ = std::move(sink); }
    /// @param sink  called after the line of each warning, error and bug was written; in any thread
    void SetComplaintSink(std::function<void()> sink) { onComplaint_ = std::move(sink); }
    /// Completes the file. Throws: Fault (WrongInput).
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
