// SPDX-License-Identifier: Apache-2.0
// The gate through which host calls enter the library. A stop closes it.

#include "plugin/call_gate.h"

#include <mutex>
#include <type_traits>

namespace headsetmgmt::plugin {

static_assert(std::is_trivially_destructible_v<CallGate>, "used while the process exits");

namespace {

thread_local int depth = 0;  // calls of this thread, one inside the other

}  // namespace

bool CallGate::is_inside() {
    return depth != 0;
}

CallGate::Passage::Passage(CallGate& gate) : passed(gate) {
    if (passed.turns_away()) {
        return;
    }
    if (depth == 0) {
        while (!passed.inside.try_lock_shared()) {
            if (passed.turns_away()) {
                return;
            }
        }
        // It may have closed, and even found nobody inside, since the first look.
        if (passed.turns_away()) {
            passed.inside.unlock_shared();
            return;
        }
    }
    ++depth;
    let_in = true;
}

CallGate::Passage::~Passage() {
    if (let_in && --depth == 0) {
        passed.inside.unlock_shared();
    }
}

void CallGate::close_and_wait() {
    state = State::closed;
    const std::lock_guard<std::shared_mutex> nobody_inside(inside);
}

void CallGate::reopen(bool started) {
    state = started ? State::open_and_started : State::open;
}

}  // namespace headsetmgmt::plugin
