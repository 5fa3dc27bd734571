// Prints how much stack the worker needs, for each kind of work that it does. Fails when a host
// would not have what host_functions.h promises its functions.

#include <cstddef>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>

#include "headsetmgmt/phone/flat_interface.h"

#include "benchmarks/documents.h"
#include "benchmarks/host.h"
#include "benchmarks/painted_stack.h"
#include "benchmarks/phone.h"
#include "benchmarks/resting_worker.h"

namespace headsetmgmt::benchmarks {
namespace {

// What a host function may take of the worker's stack: all the time, and when it hands over a
// document.
constexpr std::size_t promised = std::size_t{240} * 1024;
constexpr std::size_t promised_with_document = promised / 2;

bool promises_kept = true;

/// Prints how much of its stack the worker uses for what `queue_work` queues.
void print_stack_for(const char* work, std::size_t promise,
                     const std::function<void()>& queue_work) {
    std::unique_ptr<PaintedStack> stack;
    run_on_worker([&stack] { stack = std::make_unique<PaintedStack>(); });
    queue_work();
    run_worker();
    const std::size_t used = stack->used();
    const bool kept = used + promise <= stack->size();
    promises_kept = promises_kept && kept;
    const auto kibibytes = [](std::size_t bytes) { return static_cast<double>(bytes) / 1024; };
    std::printf("| %-58s | %7.1f | %8.1f | %8.1f | %-6s |\n", work, kibibytes(used),
                kibibytes(stack->size() - used), kibibytes(promise), kept ? "" : "MISSED");
}

void print_all() {
    Phone phone;
    const auto accessory = headset("1");
    const auto attach = [&] { configure_headset(accessory); };
    const auto answer_with = [](const std::string& document) {
        on_fetch = [document] { httpResponse(document.c_str(), 200); };
    };
    std::printf(
        "| %-58s | %7s | %8s | %8s | %6s |\n|-%s-|---------|----------|----------|--------|\n",
        "the worker's stack while it does", "KiB", "left", "promised", "",
        "----------------------------------------------------------");
    print_stack_for("nothing", promised, [] {});
    print_stack_for("a fetch", promised, attach);
    remove_peripheral("1");
    print_stack_for("an inventory report", promised, [&] { send_inventory(accessory); });
    answer_with(document_of_settings(100));
    print_stack_for("a fetch that the host answers inside httpRequest", promised_with_document,
                    attach);
    remove_peripheral("1");
    answer_with(deepest_document());
    print_stack_for("the same with the deepest document", promised_with_document, attach);
    remove_peripheral("1");
}

}  // namespace
}  // namespace headsetmgmt::benchmarks

int main() {
    headsetmgmt::benchmarks::print_all();
    if (!headsetmgmt::benchmarks::promises_kept) {
        std::fputs("worker_stack: less is left to the host than host_functions.h promises\n",
                   stderr);
        return 1;
    }
    return 0;
}
