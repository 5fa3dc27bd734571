// SPDX-License-Identifier: Apache-2.0
// How much of its stack a thread uses.

#include "benchmarks/painted_stack.h"

#include <algorithm>
#include <cstring>
#include <pthread.h>
#include <thread>

namespace headsetmgmt::benchmarks {

namespace {

constexpr unsigned char paint = 0xA5;
constexpr std::size_t painted_size = std::size_t{1} << 20U;
constexpr std::size_t left_out = 1024;  // for the painter's own frames
constexpr std::size_t end_left_out = 4096;

}  // namespace

[[gnu::noinline]] PaintedStack::PaintedStack() {
    pthread_attr_t attributes;
    pthread_getattr_np(pthread_self(), &attributes);
    void* low = nullptr;
    std::size_t stack_size = 0;
    pthread_attr_getstack(&attributes, &low, &stack_size);
    pthread_attr_destroy(&attributes);

    auto* const lowest = static_cast<unsigned char*>(low);
    auto* const here = static_cast<unsigned char*>(__builtin_frame_address(0));
    begin = lowest + stack_size;
    maker = here;
    painted_to = here - left_out;
    const auto room = static_cast<std::size_t>(painted_to - lowest);
    painted_from = painted_to - std::min(painted_size, room - end_left_out);
    std::memset(painted_from, paint, static_cast<std::size_t>(painted_to - painted_from));
}

const unsigned char* PaintedStack::deepest() const {
    return std::find_if(painted_from, painted_to, [](unsigned char byte) { return byte != paint; });
}

std::size_t PaintedStack::used() const {
    return static_cast<std::size_t>(begin - deepest());
}

std::size_t PaintedStack::used_below_maker() const {
    return static_cast<std::size_t>(maker - deepest());
}

std::size_t stack_used_by(const std::function<void()>& work) {
    std::size_t used = 0;
    std::thread thread([&] {
        const PaintedStack stack;
        work();
        used = stack.used_below_maker();
    });
    thread.join();
    return used;
}

}  // namespace headsetmgmt::benchmarks
