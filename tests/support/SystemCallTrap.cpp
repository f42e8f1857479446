// SPDX-License-Identifier: MIT
#include "support/SystemCallTrap.h"

#if defined(TRAP_CATCHES_SYSTEM_CALLS)

#include <array>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/ucontext.h>
#include <thread>
#include <unistd.h>

extern "C" {
/// Makes the system call; its result, or a negative error number.
long quilo_tests_pass_on(long number, const long* sixArguments);
/// Where the thread is as that call is made, as the kernel sees it.
extern const char quilo_tests_passed_on;
}

asm(R"(
    .pushsection .text
quilo_tests_pass_on:
    mov %rdi, %rax
    mov %rsi, %r11
    mov (%r11), %rdi
    mov 8(%r11), %rsi
    mov 16(%r11), %rdx
    mov 24(%r11), %r10
    mov 32(%r11), %r8
    mov 40(%r11), %r9
    syscall
quilo_tests_passed_on:
    ret
    .popsection
)");

namespace Tests {

namespace {

struct Record {
    std::array<int, 64> numbers{};
    std::size_t count = 0;

    void Note(int number) noexcept {
        if (count < numbers.size()) numbers[count++] = number;
    }
};

// Of the trapped thread, while its action runs. A plain pointer: the signal handler may read it.
constinit thread_local Record* record = nullptr;

/// The kernel calls this instead of doing what the thread asked for, which is then done after all:
/// the C library gives up, or believes in memory that it has not got, where some calls fail.
void OnSystemCall(int, siginfo_t* info, void* context) {
    greg_t* const registers = static_cast<ucontext_t*>(context)->uc_mcontext.gregs;
    if (record != nullptr) record->Note(info->si_syscall);
    const long arguments[] = {registers[REG_RDI], registers[REG_RSI], registers[REG_RDX],
                              registers[REG_R10], registers[REG_R8],  registers[REG_R9]};
    registers[REG_RAX] = quilo_tests_pass_on(info->si_syscall, arguments);
}

bool InstallHandler() {
    struct sigaction action {};
    action.sa_sigaction = OnSystemCall;
    action.sa_flags = SA_SIGINFO | SA_NODEFER;
    return sigaction(SIGSYS, &action, nullptr) == 0;
}

/// From here to its end every system call of this thread goes to the handler, but for the one that
/// the handler makes itself, the way back from it and the thread's end.
bool WatchSystemCalls() {
    constexpr auto kNumber = static_cast<std::uint32_t>(offsetof(seccomp_data, nr));
    constexpr auto kCaller =
        static_cast<std::uint32_t>(offsetof(seccomp_data, instruction_pointer));
    const auto passedOn = reinterpret_cast<std::uintptr_t>(&quilo_tests_passed_on);
    sock_filter program[] = {
        {BPF_LD | BPF_W | BPF_ABS, 0, 0, kNumber},
        {BPF_JMP | BPF_JEQ | BPF_K, 6, 0, SYS_rt_sigreturn},
        {BPF_JMP | BPF_JEQ | BPF_K, 5, 0, SYS_exit},
        {BPF_LD | BPF_W | BPF_ABS, 0, 0, kCaller},
        {BPF_JMP | BPF_JEQ | BPF_K, 0, 2, static_cast<std::uint32_t>(passedOn)},
        {BPF_LD | BPF_W | BPF_ABS, 0, 0, kCaller + 4},
        {BPF_JMP | BPF_JEQ | BPF_K, 1, 0, static_cast<std::uint32_t>(passedOn >> 32)},
        {BPF_RET | BPF_K, 0, 0, SECCOMP_RET_TRAP},
        {BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ALLOW},
    };
    const sock_fprog filter{static_cast<unsigned short>(std::size(program)), program};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, 0, &filter) == 0;
}

}  // namespace

std::vector<int> SystemCallsOf(const std::function<void()>& action) {
    static const bool handlerStands = InstallHandler();
    Record calls;
    bool trapped = false;
    std::thread([&]() noexcept {
        trapped = handlerStands && WatchSystemCalls();
        if (!trapped) return;
        record = &calls;
        action();
        record = nullptr;
    }).join();
    if (!trapped) throw std::runtime_error("the kernel refuses to filter system calls");
    return {calls.numbers.begin(),
            calls.numbers.begin() + static_cast<std::ptrdiff_t>(calls.count)};
}

}  // namespace Tests

#endif
