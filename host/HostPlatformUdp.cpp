// SPDX-License-Identifier: MIT
#include "HostPlatformUdp.h"

#include "HostFault.h"

#include <string>

#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#if !defined(NOMINMAX)  // MinGW's headers define it
#define NOMINMAX
#endif
#include <winsock2.h>
// ws2tcpip.h must follow winsock2.h
#include <ws2tcpip.h>
#else
#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#endif

namespace Quilo::Host {

namespace {

constexpr std::size_t kLargestPacket = 65535;

#if defined(_WIN32)

using Socket = SOCKET;
using Size = int;

void Start() {
    WSADATA data{};
    WSAStartup(MAKEWORD(2, 2), &data);
}
bool IsValid(Socket socket) { return socket != INVALID_SOCKET; }
void NeverWait(Socket socket) {
    u_long on = 1;
    ioctlsocket(socket, static_cast<long>(FIONBIO), &on);
}
void Close(Socket socket) { closesocket(socket); }

#else

using Socket = int;
using Size = std::size_t;

void Start() {}
bool IsValid(Socket socket) { return socket >= 0; }
void NeverWait(Socket socket) { fcntl(socket, F_SETFL, O_NONBLOCK); }
void Close(Socket socket) { close(socket); }

#endif

}  // namespace

UdpPort::UdpPort(unsigned port) : packet_(kLargestPacket) {
    Start();
    const Socket socket = ::socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const auto* const where = reinterpret_cast<const sockaddr*>(&address);
    if (!IsValid(socket) || bind(socket, where, sizeof address) != 0) {
        if (IsValid(socket)) Close(socket);
        throw Fault(ExitStatus::HostFailed,
                    "--osc: the UDP port " + std::to_string(port) + " cannot be opened");
    }
    NeverWait(socket);
    socket_ = static_cast<std::intptr_t>(socket);
}

UdpPort::~UdpPort() { Close(static_cast<Socket>(socket_)); }

void UdpPort::Receive(const std::function<void(std::span<const std::byte>)>& use) {
    // A sender without pause does not hold up the vector.
    for (int packets = 0; packets < 4096; ++packets) {
        const auto size =
            recv(static_cast<Socket>(socket_), reinterpret_cast<char*>(packet_.data()),
                 static_cast<Size>(packet_.size()), 0);
        if (size < 0) return;
        use(std::span<const std::byte>(packet_).first(static_cast<std::size_t>(size)));
    }
}

}  // namespace Quilo::Host
