// SPDX-License-Identifier: MIT
// OSC through the program: a real sender at its port.
#include "support/HostProgram.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <atomic>
#include <cstdlib>
#include <netinet/in.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace Tests {
namespace {

TEST(HostOsc, TakesPacketsFromARealSender) {
    const TemporaryFolder folder;
    WriteText(folder / "live.txt", "object quilo.pan~ 2 4\nat 1.9 getsourcespositions\n");
    // A port of this process, so that several may be tested at once.
    const std::string port = std::to_string(20000 + getpid() % 12000);
    std::atomic<bool> isOver = false;
    HostRun run;
    std::thread host([&] {
        run = RunHost(folder, {"--osc", port, "--duration", "2", "--out", "o.wav", "live.txt"});
        isOver = true;
    });
    // Before the port is open packets get lost, so this goes on until the host has ended.
    const std::string send = "oscsend 127.0.0.1 " + port + " /source/2/aed fid 90 0 2 2>/dev/null";
    while (!isOver) {
        if (std::system(send.c_str()) != 0) std::this_thread::yield();
    }
    host.join();
    EXPECT_EQ(run.status, 0);
    ASSERT_EQ(run.console.size(), 1u);
    EXPECT_TRUE(run.console[0].ends_with(" 2 0 0")) << run.console[0];
    EXPECT_EQ(std::filesystem::file_size(folder / "o.wav") / 1000, 1536u);  // whole: 2 s, 4 floats
}

TEST(HostOsc, SaysThatAPortIsTaken) {
    const TemporaryFolder folder;
    WriteText(folder / "s.txt", "object quilo.pan~ 2 4\n");
    const int taken = socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;  // port 0 stands for any that is free
    ASSERT_EQ(bind(taken, reinterpret_cast<sockaddr*>(&address), size), 0);
    ASSERT_EQ(getsockname(taken, reinterpret_cast<sockaddr*>(&address), &size), 0);
    const std::string port = std::to_string(ntohs(address.sin_port));
    const HostRun run = RunHost(folder, {"--osc", port, "--duration", "0", "s.txt"});
    close(taken);
    EXPECT_EQ(run.status, 1);
    ASSERT_FALSE(run.errors.empty());
    EXPECT_TRUE(run.errors.back().ends_with(port + " cannot be opened")) << run.errors.back();
}

}  // namespace
}  // namespace Tests
