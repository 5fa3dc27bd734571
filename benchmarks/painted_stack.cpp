// How much stack a piece of work takes.

#include "benchmarks/painted_stack.h"

#include <algorithm>
#include <cstring>
#include <pthread.h>
#include <stdexcept>
#include <sys/mman.h>

namespace headsetmgmt::benchmarks {

namespace {

constexpr std::size_t stack_size = std::size_t{4} << 20U;
constexpr unsigned char paint = 0xA5;

void* run(void* work) {
    (*static_cast<const std::function<void()>*>(work))();
    return nullptr;
}

std::size_t stack_touched_by(const std::function<void()>& work) {
    void* memory =
        mmap(nullptr, stack_size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        throw std::runtime_error("painted stack: no memory");
    }
    std::memset(memory, paint, stack_size);

    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstack(&attributes, memory, stack_size);
    pthread_t thread = 0;
    const int error =
        pthread_create(&thread, &attributes, run, const_cast<std::function<void()>*>(&work));
    pthread_attr_destroy(&attributes);
    if (error != 0) {
        munmap(memory, stack_size);
        throw std::runtime_error("painted stack: no thread");
    }
    pthread_join(thread, nullptr);

    // A stack grows down: what is still painted lies at its low end.
    const auto* low = static_cast<const unsigned char*>(memory);
    const unsigned char* touched =
        std::find_if(low, low + stack_size, [](unsigned char byte) { return byte != paint; });
    const auto used = static_cast<std::size_t>(low + stack_size - touched);
    munmap(memory, stack_size);
    return used;
}

}  // namespace

std::size_t stack_used_by(const std::function<void()>& work) {
    static const std::size_t threads_own = stack_touched_by([] {});
    return stack_touched_by(work) - threads_own;
}

}  // namespace headsetmgmt::benchmarks
