// SPDX-License-Identifier: Apache-2.0
// The gate: which calls it lets in, which it turns away, and which closing waits for.

#include <future>
#include <memory>
#include <thread>

#include <gtest/gtest.h>

#include "plugin/call_gate.h"
#include "support/lock_attempt.h"

namespace headsetmgmt::plugin {
namespace {

using test_support::LockAttempt;
using test_support::TriedLock;

/// Whether another thread is let in.
bool lets_another_thread_in(CallGate& gate) {
    return std::async(std::launch::async,
                      [&] {
                          const CallGate::Passage passage(gate);
                          return static_cast<bool>(passage);
                      })
        .get();
}

/// Closes the gate on a thread of its own and returns once callers are turned away.
std::future<void> begin_to_close(CallGate& gate) {
    auto closed = std::async(std::launch::async, [&] { gate.close_and_wait(); });
    while (lets_another_thread_in(gate)) {
        std::this_thread::yield();
    }
    return closed;
}

TEST(CallGateTest, NewGateLetsCallsIn) {
    CallGate gate;

    const CallGate::Passage passage(gate);

    EXPECT_TRUE(passage);
    EXPECT_FALSE(gate.is_started());
}

TEST(CallGateTest, SeveralThreadsAreInsideAtOnce) {
    CallGate gate;
    const CallGate::Passage passage(gate);

    EXPECT_TRUE(lets_another_thread_in(gate));
}

TEST(CallGateTest, ClosedGateTurnsCallsAway) {
    CallGate gate;
    gate.close_and_wait();

    const CallGate::Passage passage(gate);

    EXPECT_FALSE(passage);
    EXPECT_FALSE(CallGate::is_inside());
}

TEST(CallGateTest, ReopenedGateReportsWhetherTheLibraryIsStarted) {
    CallGate gate;
    gate.close_and_wait();
    EXPECT_FALSE(gate.is_started());

    gate.reopen(true);
    EXPECT_TRUE(gate.is_started());
    EXPECT_TRUE(CallGate::Passage(gate));

    gate.close_and_wait();
    gate.reopen(false);
    EXPECT_FALSE(gate.is_started());
    EXPECT_TRUE(CallGate::Passage(gate));
}

TEST(CallGateTest, ThreadIsInsideUntilItsOutermostCallLeaves) {
    CallGate gate;
    EXPECT_FALSE(CallGate::is_inside());
    {
        const CallGate::Passage outer(gate);
        {
            const CallGate::Passage inner(gate);
            EXPECT_TRUE(inner);
        }
        EXPECT_TRUE(CallGate::is_inside());
        EXPECT_FALSE(std::async(std::launch::async, [] { return CallGate::is_inside(); }).get());
    }
    EXPECT_FALSE(CallGate::is_inside());
}

TEST(CallGateTest, ClosingWaitsForThoseInside) {
    CallGate gate;
    auto passage = std::make_unique<CallGate::Passage>(gate);

    std::future<void> closed = begin_to_close(gate);
    EXPECT_EQ(closed.wait_for(std::chrono::seconds(0)), std::future_status::timeout);

    passage.reset();
    closed.get();
    EXPECT_FALSE(CallGate::Passage(gate));
}

TEST(CallGateTest, CallFromInsideIsTurnedAwayWhileTheGateCloses) {
    CallGate gate;
    auto outer = std::make_unique<CallGate::Passage>(gate);
    std::future<void> closed = begin_to_close(gate);

    {
        const CallGate::Passage inner(gate);
        EXPECT_FALSE(inner);
    }
    EXPECT_TRUE(CallGate::is_inside());

    outer.reset();
    closed.get();
}

TEST(CallGateTest, CallComesInOnceAGateThatClosedIsOpenAgain) {
    CallGate gate;
    const LockAttempt attempt(
        TriedLock::shared,
        [&] {
            gate.close_and_wait();
            gate.reopen(false);
        },
        true);

    EXPECT_TRUE(CallGate::Passage(gate));
}

TEST(CallGateTest, CallThatComesAsTheGateIsBeingClosedIsTurnedAway) {
    CallGate gate;
    const LockAttempt attempt(
        TriedLock::shared, [&] { gate.close_for_good(); }, true);

    EXPECT_FALSE(CallGate::Passage(gate));
    EXPECT_FALSE(CallGate::is_inside());
}

TEST(CallGateTest, CallThatComesJustAfterTheGateFoundNobodyInsideIsTurnedAway) {
    CallGate gate;
    const LockAttempt attempt(TriedLock::shared, [&] { gate.close_and_wait(); });

    EXPECT_FALSE(CallGate::Passage(gate));
    EXPECT_FALSE(CallGate::is_inside());
    gate.close_and_wait();  // for nobody
}

TEST(CallGateTest, ClosedForGoodStaysClosed) {
    CallGate gate;
    gate.close_for_good();
    gate.reopen(true);

    EXPECT_TRUE(gate.is_closed_for_good());
    EXPECT_FALSE(CallGate::Passage(gate));
}

TEST(CallGateTest, ClosingForGoodLeavesThoseInside) {
    CallGate gate;
    const CallGate::Passage passage(gate);

    gate.close_for_good();

    EXPECT_TRUE(passage);
    EXPECT_TRUE(CallGate::is_inside());
    EXPECT_FALSE(lets_another_thread_in(gate));
}

}  // namespace
}  // namespace headsetmgmt::plugin
