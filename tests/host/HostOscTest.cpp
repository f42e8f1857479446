// SPDX-License-Identifier: MIT
// OSC through the program: a real sender at its port.
#include "support/HostProgram.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <thread>
#include <unistd.h>

namespace Tests {
namespace {

TEST(HostOsc, TakesPacketsFromARealSender) {
    const TemporaryFolder folder;
    WriteText(folder / "live.txt", "object quilo.pan~ 2 4\nat 0.9 getsourcespositions\n");
    // A port of this process, so that several may be tested at once.
    const std::string port = std::to_string(20000 + getpid() % 20000);
    std::atomic<bool> isOver = false;
    HostRun run;
    std::thread host([&] {
        run = RunHost(folder, {"--osc", port, "--duration", "1", "--out", "o.wav", "live.txt"});
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
    EXPECT_EQ(std::filesystem::file_size(folder / "o.wav") / 1000, 768u);  // whole: 1 s, 4 floats
}

TEST(HostOsc, SaysThatAPortIsTaken) {
    const TemporaryFolder folder;
    WriteText(folder / "s.txt", "object quilo.pan~ 2 4\n");
    const std::string port = std::to_string(40000 + getpid() % 20000);
    HostRun second;
    std::atomic<bool> isOver = false;
    std::thread first([&] {
        RunHost(folder, {"--osc", port, "--duration", "0.5", "s.txt"});
        isOver = true;
    });
    bool wasRefused = false;
    while (!isOver && !wasRefused) {
        second = RunHost(folder, {"--osc", port, "--duration", "0", "s.txt"});
        wasRefused =
            second.status == 1 && second.errors.back().ends_with(port + " cannot be opened");
    }
    first.join();
    EXPECT_TRUE(wasRefused);
}

}  // namespace
}  // namespace Tests
