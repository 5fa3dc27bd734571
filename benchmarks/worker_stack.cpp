// SPDX-License-Identifier: Apache-2.0
// Prints how much stack the worker needs, for each kind of work that it does.

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

/// Prints how much of its stack the worker uses for what `queue_work` queues.
void print_stack_for(const char* work, const std::function<void()>& queue_work) {
    std::unique_ptr<PaintedStack> stack;
    run_on_worker([&stack] { stack = std::make_unique<PaintedStack>(); });
    queue_work();
    run_worker();
    std::printf("| %-58s | %10.1f |\n", work, static_cast<double>(stack->used()) / 1024);
}

void print_all() {
    Phone phone;
    const auto accessory = headset("1");
    const auto attach = [&] { configure_headset(accessory); };
    const auto answer_with = [](const std::string& document) {
        on_fetch = [document] { httpResponse(document.c_str(), 200); };
    };
    std::printf("| %-58s | %10s |\n|-%s-|------------|\n", "the worker's stack while it does",
                "KiB", "----------------------------------------------------------");
    print_stack_for("nothing", [] {});
    print_stack_for("a fetch", attach);
    remove_peripheral("1");
    print_stack_for("an inventory report", [&] { send_inventory(accessory); });
    answer_with(document_of_settings(100));
    print_stack_for("a fetch that the host answers inside httpRequest", attach);
    remove_peripheral("1");
    answer_with(deepest_document());
    print_stack_for("the same with the deepest document", attach);
    remove_peripheral("1");
}

}  // namespace
}  // namespace headsetmgmt::benchmarks

int main() {
    headsetmgmt::benchmarks::print_all();
}
