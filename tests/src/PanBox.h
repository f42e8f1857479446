// SPDX-License-Identifier: MIT
// An object in this process, with what it says.
#pragma once

#include "HostAudioBridge.h"
#include "HostBridge.h"

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace Tests {

/// An object made from a box text as a patcher makes it. One at a time: the console is global.
class Box {
public:
    /// @param arguments  what follows the class name in the box
    Box(const char* className, const std::string& arguments);
    ~Box();
    Box(const Box&) = delete;
    Box& operator=(const Box&) = delete;

    t_object* Get() const { return object_; }
    /// Frees the object ahead of time.
    void Free();

    /// To the left inlet, as text of a message box.
    void Send(const std::string& message);
    /// An OSC packet in memory, as udpreceive passes it.
    void SendPacket(std::span<const std::byte> packet);
    /// Values of an attribute, as text.
    std::string Ask(const std::string& attribute) const;

    /// "error: text" and so on, since the last call.
    std::vector<std::string> TakeConsole();

private:
    t_object* object_ = nullptr;
    std::vector<std::string> console_;
};

/// A quilo.pan~.
class PanBox : public Box {
public:
    /// While it lives, a call that reaches others from inside its door ends the program.
    explicit PanBox(const std::string& arguments);
    ~PanBox();
    void Free();
};

}  // namespace Tests
