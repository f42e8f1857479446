// SPDX-License-Identifier: MIT
// Packets from other programs on this machine.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace Quilo::Host {

/// A UDP port of the loopback interface, which no other machine reaches.
class UdpPort {
public:
    /// Throws: Fault (HostFailed), when somebody else has the port.
    explicit UdpPort(unsigned port);
    ~UdpPort();
    UdpPort(const UdpPort&) = delete;
    UdpPort& operator=(const UdpPort&) = delete;

    /// Passes on all packets that have arrived, without waiting for any.
    void Receive(const std::function<void(std::span<const std::byte>)>& use);

private:
    std::intptr_t socket_;
    std::vector<std::byte> packet_;
};

}  // namespace Quilo::Host
