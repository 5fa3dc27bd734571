// Prints how much stack the worker needs, for each kind of work that it does.

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <functional>
#include <pthread.h>
#include <string>

#include "headsetmgmt/phone/flat_interface.h"

#include "benchmarks/documents.h"
#include "benchmarks/host.h"
#include "benchmarks/phone.h"
#include "benchmarks/resting_worker.h"

namespace headsetmgmt::benchmarks {
namespace {

constexpr int paint = 0xA5;
constexpr std::size_t painted_size = std::size_t{1} << 20U;
constexpr std::size_t left_out = 4096;  // for the painter's own frames

/// The worker's stack: where it begins, which is its high end, and the part that is painted.
struct Stack {
    unsigned char* begin = nullptr;
    unsigned char* painted_from = nullptr;
    unsigned char* painted_to = nullptr;
};

/// Paints the calling thread's stack below the caller.
Stack paint_stack() {
    pthread_attr_t attributes;
    pthread_getattr_np(pthread_self(), &attributes);
    void* low = nullptr;
    std::size_t size = 0;
    pthread_attr_getstack(&attributes, &low, &size);
    pthread_attr_destroy(&attributes);

    const auto* here = static_cast<unsigned char*>(__builtin_frame_address(0));
    Stack stack;
    stack.begin = static_cast<unsigned char*>(low) + size;
    stack.painted_to = stack.begin - (stack.begin - here) - left_out;
    const auto room = static_cast<std::size_t>(stack.painted_to - static_cast<unsigned char*>(low));
    stack.painted_from = stack.painted_to - std::min(painted_size, room - left_out);
    std::memset(stack.painted_from, paint,
                static_cast<std::size_t>(stack.painted_to - stack.painted_from));
    return stack;
}

/// How much of its stack the worker uses for what `queue_work` queues.
std::size_t stack_for(const std::function<void()>& queue_work) {
    Stack stack;
    run_on_worker([&stack] { stack = paint_stack(); });
    queue_work();
    run_worker();
    const unsigned char* deepest = std::find_if(stack.painted_from, stack.painted_to,
                                                [](unsigned char byte) { return byte != paint; });
    return static_cast<std::size_t>(stack.begin - deepest);
}

void print(const char* work, std::size_t bytes) {
    std::printf("| %-58s | %7.1f |\n", work, static_cast<double>(bytes) / 1024);
}

void print_all() {
    Phone phone;
    const auto accessory = headset("1");
    const auto attach = [&] { configure_headset(accessory); };
    const auto answer_with = [](const std::string& document) {
        on_fetch = [document] { httpResponse(document.c_str(), 200); };
    };
    std::printf("| %-58s | %7s |\n|-%s-|---------|\n", "the worker's stack while it does", "KiB",
                "----------------------------------------------------------");
    print("nothing", stack_for([] {}));
    print("a fetch", stack_for(attach));
    remove_peripheral("1");
    print("an inventory report", stack_for([&] { send_inventory(accessory); }));
    answer_with(document_of_settings(100));
    print("a fetch that the host answers inside httpRequest", stack_for(attach));
    remove_peripheral("1");
    answer_with(deepest_document());
    print("the same with the deepest document", stack_for(attach));
    remove_peripheral("1");
}

}  // namespace
}  // namespace headsetmgmt::benchmarks

int main() {
    headsetmgmt::benchmarks::print_all();
}
