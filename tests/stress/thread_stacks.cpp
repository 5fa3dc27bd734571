// SPDX-License-Identifier: Apache-2.0
// The stacks of all threads of the process.
//
// Each thread is sent a signal, in whose handler it notes its own return addresses; they are turned
// into names by the thread that asked. The handler is installed below ThreadSanitizer, which would
// hold the signal back from a thread that waits for a mutex: the very one that is of interest.
//
// With a sanitizer, a frame is a function and its place in the sources. Else it is a file and an
// offset in it, which `addr2line -Cfie FILE OFFSET` turns into the same.

#include "stress/thread_stacks.h"

#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <execinfo.h>
#include <string>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>
#include <unwind.h>

#include "stress/sanitizers.h"

// The C library's own name of sigaction.
extern "C" int __sigaction(int signal_number, const struct sigaction* action,
                           struct sigaction* former) noexcept;

namespace headsetmgmt::stress {

namespace {

/// The return addresses of the thread that is asked just now.
struct Stack {
    std::array<void*, 200> addresses;
    std::atomic<std::size_t> depth{0};
    std::atomic<bool> complete{false};
};

Stack stack;

__attribute__((no_sanitize("thread", "address"))) _Unwind_Reason_Code
note_address(_Unwind_Context* frame, void* /*argument*/) {
    const std::size_t depth = stack.depth.load(std::memory_order_relaxed);
    if (depth == stack.addresses.size()) {
        return _URC_END_OF_STACK;
    }
    stack.addresses[depth] = reinterpret_cast<void*>(_Unwind_GetIP(frame));
    stack.depth.store(depth + 1, std::memory_order_relaxed);
    return _URC_NO_REASON;
}

__attribute__((no_sanitize("thread", "address"))) void note_own_stack(int /*signal_number*/) {
    _Unwind_Backtrace(note_address, nullptr);
    stack.complete.store(true, std::memory_order_release);
    // The thread stays here: nothing may change while the others are asked.
    for (;;) {
        syscall(SYS_ppoll, nullptr, 0, nullptr, nullptr);
    }
}

void print_address(void* address) {
    std::fputs("    ", stderr);
    std::array<char, 1000> text{};
    if (symbolize(address, text.data(), text.size())) {
        std::fprintf(stderr, "%s\n", text.data());
    } else {
        std::fflush(stderr);
        backtrace_symbols_fd(&address, 1, STDERR_FILENO);
    }
}

std::string name_of(pid_t thread) {
    const std::string path = "/proc/self/task/" + std::to_string(thread) + "/comm";
    std::array<char, 32> name{};
    if (std::FILE* const file = std::fopen(path.c_str(), "r")) {
        if (std::fscanf(file, "%31[^\n]", name.data()) != 1) {
            name[0] = '\0';
        }
        std::fclose(file);
    }
    return name.data();
}

void print_stack_of(pid_t thread, int signal_number) {
    std::fprintf(stderr, "thread %d (%s)\n", static_cast<int>(thread), name_of(thread).c_str());
    stack.depth.store(0, std::memory_order_relaxed);
    stack.complete.store(false, std::memory_order_relaxed);
    if (syscall(SYS_tgkill, getpid(), thread, signal_number) != 0) {
        std::fputs("    has ended\n", stderr);
        return;
    }
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    while (!stack.complete.load(std::memory_order_acquire)) {
        if (std::chrono::steady_clock::now() > limit) {
            std::fputs("    takes no signal\n", stderr);
            return;
        }
        std::this_thread::yield();
    }
    // The two innermost are the handler's.
    for (std::size_t i = 2; i < stack.depth.load(std::memory_order_relaxed); ++i) {
        if (stack.addresses[i] != nullptr) {
            print_address(stack.addresses[i]);
        }
    }
}

}  // namespace

void print_all_stacks() {
    const int signal_number = SIGRTMIN + 5;
    struct sigaction action = {};
    action.sa_handler = note_own_stack;
    __sigaction(signal_number, &action, nullptr);

    const auto self = static_cast<pid_t>(syscall(SYS_gettid));
    DIR* const threads = opendir("/proc/self/task");
    while (const dirent* entry = threads != nullptr ? readdir(threads) : nullptr) {
        const auto thread = static_cast<pid_t>(std::strtol(entry->d_name, nullptr, 10));
        if (thread != 0 && thread != self) {
            print_stack_of(thread, signal_number);
        }
    }
    if (threads != nullptr) {
        closedir(threads);
    }
}

}  // namespace headsetmgmt::stress
