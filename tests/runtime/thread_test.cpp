// SPDX-License-Identifier: Apache-2.0
// A POSIX thread that runs the body of its subclass again and again until it is asked to leave.

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <iterator>
#include <pthread.h>
#include <sched.h>
#include <string>
#include <sys/prctl.h>
#include <thread>
#include <utility>

#include <gtest/gtest.h>

#include "runtime/thread.h"
#include "support/event.h"
#include "support/failing_pthread.h"

namespace vix {
namespace {

using headsetmgmt::test_support::calls_of;
using headsetmgmt::test_support::Event;
using headsetmgmt::test_support::latest_scheduling_request;
using headsetmgmt::test_support::PthreadAnswer;
using headsetmgmt::test_support::PthreadCall;

/// A thread whose body is a function of the test.
class BodyThread : public Thread {
public:
    explicit BodyThread(std::function<bool()> work) : body(std::move(work)) {}

    using Thread::exit_requested;
    using Thread::run_flags;

protected:
    bool threadLoop() override { return body(); }

private:
    std::function<bool()> body;
};

bool once() {
    return false;
}

std::string current_thread_name() {
    std::array<char, 16> name{};
    prctl(PR_GET_NAME, name.data(), 0, 0, 0);
    return name.data();
}

/// The name of a thread that was run with `name`.
std::string name_after_run(const char* name) {
    std::string seen;
    BodyThread thread([&] {
        seen = current_thread_name();
        return false;
    });
    EXPECT_TRUE(thread.run(name, 0, 0));
    EXPECT_TRUE(thread.join());
    return seen;
}

TEST(ThreadTest, ThreadWithoutANameIsCalledWorkerthread) {
    EXPECT_EQ(name_after_run(nullptr), "workerthread");
}

TEST(ThreadTest, ThreadHasTheNameItIsGiven) {
    EXPECT_EQ(name_after_run("accessories"), "accessories");
}

TEST(ThreadTest, LongNameKeepsItsFirstFifteenCharacters) {
    EXPECT_EQ(name_after_run("Headset-mgmt task thread"), "Headset-mgmt ta");
}

TEST(ThreadTest, NewObjectDoesNotRun) {
    BodyThread thread(once);

    EXPECT_FALSE(thread.running());
    EXPECT_FALSE(thread.exit_requested());
    EXPECT_EQ(thread.run_flags(), 0U);
}

TEST(ThreadTest, BodyIsCalledAgainUntilItReturnsFalse) {
    int calls = 0;
    BodyThread thread([&] { return ++calls < 3; });

    EXPECT_TRUE(thread.run(nullptr, 0, 0));

    EXPECT_TRUE(thread.join());
    EXPECT_EQ(calls, 3);
}

TEST(ThreadTest, BodyThatReturnsFalseLeavesBothFlagsClear) {
    BodyThread* itself = nullptr;
    BodyThread thread([&] {
        itself->requestExit();
        return false;
    });
    itself = &thread;

    EXPECT_TRUE(thread.run(nullptr, 0, 0));
    EXPECT_TRUE(thread.join());

    EXPECT_FALSE(thread.running());
    EXPECT_FALSE(thread.exit_requested());
}

TEST(ThreadTest, ObjectRunsFromRunUntilTheBodyEnds) {
    Event leave;
    BodyThread thread([&] {
        EXPECT_TRUE(leave.wait());
        return false;
    });

    EXPECT_TRUE(thread.run(nullptr, 0, 0));

    EXPECT_TRUE(thread.running());
    leave.happen();
    EXPECT_TRUE(thread.join());
    EXPECT_FALSE(thread.running());
}

TEST(ThreadTest, BodySeesItsOwnObjectRunning) {
    bool seen = false;
    BodyThread* itself = nullptr;
    BodyThread thread([&] {
        seen = itself->running();
        return false;
    });
    itself = &thread;

    EXPECT_TRUE(thread.run(nullptr, 0, 0));
    EXPECT_TRUE(thread.join());

    EXPECT_TRUE(seen);
}

TEST(ThreadTest, ExitRequestIsHonouredAfterTheBodyThatIsUnderWay) {
    Event inside;
    Event leave;
    int calls = 0;
    bool finished = false;
    BodyThread thread([&] {
        ++calls;
        inside.happen();
        EXPECT_TRUE(leave.wait());
        finished = true;
        return true;
    });
    EXPECT_TRUE(thread.run(nullptr, 0, 0));
    EXPECT_TRUE(inside.wait());

    EXPECT_TRUE(thread.requestExit());

    EXPECT_TRUE(thread.exit_requested());
    EXPECT_TRUE(thread.running());
    leave.happen();
    EXPECT_TRUE(thread.join());
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(finished);
    EXPECT_FALSE(thread.exit_requested());
}

TEST(ThreadTest, ExitRequestBeforeRunIsLost) {
    int calls = 0;
    BodyThread thread([&] { return ++calls < 2; });

    EXPECT_TRUE(thread.requestExit());

    EXPECT_FALSE(thread.exit_requested());
    EXPECT_FALSE(thread.running());
    EXPECT_TRUE(thread.run(nullptr, 0, 0));
    EXPECT_TRUE(thread.join());
    EXPECT_EQ(calls, 2);
}

TEST(ThreadTest, ObjectRunsAgainAfterAnExit) {
    int calls = 0;
    BodyThread* itself = nullptr;
    BodyThread thread([&] {
        ++calls;
        return itself->requestExit();
    });
    itself = &thread;
    EXPECT_TRUE(thread.run(nullptr, 0, 0));
    EXPECT_TRUE(thread.join());

    EXPECT_TRUE(thread.run(nullptr, 0, 0));

    EXPECT_TRUE(thread.join());
    EXPECT_EQ(calls, 2);
}

TEST(ThreadTest, AutoDeleteRunsTheDestructorOnTheThreadItself) {
    class WatchedThread : public BodyThread {
    public:
        WatchedThread(pthread_t& body_thread, pthread_t& destructor_thread, Event& reported)
            : BodyThread([&] {
                  body_thread = pthread_self();
                  return false;
              }),
              destroyer(destructor_thread), gone(reported) {}
        ~WatchedThread() override {
            destroyer = pthread_self();
            gone.happen();
        }

    private:
        pthread_t& destroyer;
        Event& gone;
    };
    pthread_t body_thread = 0;
    pthread_t destroyer = 0;
    Event gone;
    auto* thread = new WatchedThread(body_thread, destroyer, gone);

    EXPECT_TRUE(thread->run(nullptr, THREAD_FLAG_AUTO_DELETE | THREAD_FLAG_DETACHED, 0));

    ASSERT_TRUE(gone.wait());
    EXPECT_NE(destroyer, static_cast<pthread_t>(0));
    EXPECT_EQ(destroyer, body_thread);
}

TEST(ThreadTest, EntryPointWithoutAThreadDoesNothing) {
    EXPECT_EQ(Thread::staticThreadEntryPoint(nullptr), nullptr);
}

TEST(ThreadTest, EntryPointMakesTheLoopOnTheThreadThatCallsIt) {
    std::thread::id caller;
    int calls = 0;
    BodyThread thread([&] {
        caller = std::this_thread::get_id();
        return ++calls < 3;
    });

    thread.threadEntryPoint();

    EXPECT_EQ(calls, 3);
    EXPECT_EQ(caller, std::this_thread::get_id());
    EXPECT_FALSE(thread.running());
}

TEST(ThreadTest, NeverStartedObjectHasNothingToJoinOrDetach) {
    BodyThread thread(once);

    EXPECT_FALSE(thread.join());
    EXPECT_FALSE(thread.detach());
}

TEST(ThreadTest, ThreadIsJoinedOnce) {
    BodyThread thread(once);
    EXPECT_TRUE(thread.run(nullptr, 0, 0));

    EXPECT_TRUE(thread.join());

    EXPECT_FALSE(thread.join());
}

TEST(ThreadTest, ThreadThatJoinsItselfIsRefusedAndLeftToItsOwner) {
    bool joined_itself = true;
    BodyThread* itself = nullptr;
    BodyThread thread([&] {
        joined_itself = itself->join();
        return false;
    });
    itself = &thread;
    EXPECT_TRUE(thread.run(nullptr, 0, 0));
    while (thread.running()) {
        sched_yield();
    }

    EXPECT_TRUE(thread.join());

    EXPECT_FALSE(joined_itself);
}

/// A thread that lies where the test can see what is written there once it is gone.
class BuriedThread : public BodyThread {
public:
    using BodyThread::BodyThread;

    static void* operator new(std::size_t /*size*/) { return place; }
    static void operator delete(void* object) { std::memset(object, earth, sizeof place); }

    static bool lies_untouched() {
        return std::all_of(std::begin(place), std::end(place),
                           [](unsigned char byte) { return byte == earth; });
    }

private:
    static constexpr unsigned char earth = 0xA5;
    alignas(BodyThread) static unsigned char place[sizeof(BodyThread)];
};

alignas(BodyThread) unsigned char BuriedThread::place[sizeof(BodyThread)] = {};

TEST(ThreadTest, JoinTouchesNothingOfAnObjectThatDeletesItself) {
    const int joins_before = calls_of(PthreadCall::join);
    auto* thread = new BuriedThread([=] {
        while (calls_of(PthreadCall::join) == joins_before) {
            sched_yield();
        }
        return false;
    });
    EXPECT_TRUE(thread->run(nullptr, THREAD_FLAG_AUTO_DELETE, 0));

    EXPECT_TRUE(thread->join());

    EXPECT_TRUE(BuriedThread::lies_untouched());
}

TEST(ThreadTest, ThreadThatWasDetachedCannotBeJoined) {
    Event leave;
    Event left;
    {
        // Neither event nor object may go before the thread has ended, which nobody can join.
        auto* thread = new BodyThread([&] {
            EXPECT_TRUE(leave.wait());
            left.happen();
            return false;
        });
        EXPECT_TRUE(thread->run(nullptr, THREAD_FLAG_AUTO_DELETE, 0));

        EXPECT_TRUE(thread->detach());

        EXPECT_FALSE(thread->join());
        EXPECT_FALSE(thread->detach());
    }
    leave.happen();
    EXPECT_TRUE(left.wait());
}

TEST(ThreadTest, ThreadThatTheSystemDoesNotDetachCanStillBeJoined) {
    BodyThread thread(once);
    ASSERT_TRUE(thread.run(nullptr, 0, 0));
    {
        const PthreadAnswer refusal(PthreadCall::detach, EINVAL);
        EXPECT_FALSE(thread.detach());
        EXPECT_TRUE(refusal.given());
    }

    EXPECT_TRUE(thread.join());
}

/// Gives later threads of the program another default stack size for its own life.
class DefaultStackSize {
public:
    explicit DefaultStackSize(std::size_t size) {
        EXPECT_EQ(pthread_getattr_default_np(&earlier), 0);
        pthread_attr_t wanted;
        EXPECT_EQ(pthread_attr_init(&wanted), 0);
        EXPECT_EQ(pthread_attr_setstacksize(&wanted, size), 0);
        EXPECT_EQ(pthread_setattr_default_np(&wanted), 0);
        EXPECT_EQ(pthread_attr_destroy(&wanted), 0);
    }
    ~DefaultStackSize() {
        EXPECT_EQ(pthread_setattr_default_np(&earlier), 0);
        EXPECT_EQ(pthread_attr_destroy(&earlier), 0);
    }

    DefaultStackSize(const DefaultStackSize&) = delete;
    DefaultStackSize& operator=(const DefaultStackSize&) = delete;

private:
    pthread_attr_t earlier;
};

TEST(ThreadTest, ThreadHasAStackOfTheSystemsDefaultSize) {
    // Larger than any before: a smaller one might get the stack of a thread that has ended.
    const DefaultStackSize default_size(33554432);
    std::size_t size = 0;
    BodyThread thread([&] {
        pthread_attr_t attributes;
        EXPECT_EQ(pthread_getattr_np(pthread_self(), &attributes), 0);
        EXPECT_EQ(pthread_attr_getstacksize(&attributes, &size), 0);
        EXPECT_EQ(pthread_attr_destroy(&attributes), 0);
        return false;
    });

    EXPECT_TRUE(thread.run(nullptr, 0, 0));

    EXPECT_TRUE(thread.join());
    EXPECT_EQ(size, 33554432U);
}

/// The detach state of a thread that was run with `flags`.
int detach_state_after_run(std::uint32_t flags) {
    int state = -1;
    Event reported;
    auto* thread = new BodyThread([&] {
        pthread_attr_t attributes;
        EXPECT_EQ(pthread_getattr_np(pthread_self(), &attributes), 0);
        EXPECT_EQ(pthread_attr_getdetachstate(&attributes, &state), 0);
        EXPECT_EQ(pthread_attr_destroy(&attributes), 0);
        reported.happen();
        return false;
    });
    EXPECT_TRUE(thread->run(nullptr, flags, 0));
    EXPECT_TRUE(reported.wait());
    if ((flags & THREAD_FLAG_AUTO_DELETE) == 0) {
        EXPECT_TRUE(thread->join());
        delete thread;
    }
    return state;
}

TEST(ThreadTest, ThreadIsJoinableUnlessRequestedOtherwise) {
    EXPECT_EQ(detach_state_after_run(0), PTHREAD_CREATE_JOINABLE);
}

TEST(ThreadTest, DetachedFlagMakesADetachedThread) {
    EXPECT_EQ(detach_state_after_run(THREAD_FLAG_DETACHED | THREAD_FLAG_AUTO_DELETE),
              PTHREAD_CREATE_DETACHED);
}

TEST(ThreadTest, UnknownFlagsAreKeptAndIgnored) {
    BodyThread thread(once);

    EXPECT_TRUE(thread.run(nullptr, 0x100, 0));

    EXPECT_TRUE(thread.join());
    EXPECT_EQ(thread.run_flags(), 0x100U);
}

/// Expects that the object is idle after a failed run, and that the next run works.
void expect_fresh_start(BodyThread& thread) {
    EXPECT_FALSE(thread.running());
    EXPECT_FALSE(thread.join());
    EXPECT_TRUE(thread.requestExit());
    EXPECT_FALSE(thread.exit_requested());
    EXPECT_TRUE(thread.run(nullptr, 0, 0));
    EXPECT_TRUE(thread.join());
}

TEST(ThreadTest, ThreadThatCannotBeCreatedDoesNotRun) {
    int calls = 0;
    BodyThread thread([&] { return ++calls < 1; });
    {
        const PthreadAnswer no_thread(PthreadCall::create, EAGAIN);
        EXPECT_FALSE(thread.run(nullptr, 0, 0));
        EXPECT_TRUE(no_thread.given());
    }
    EXPECT_EQ(calls, 0);
    expect_fresh_start(thread);
    EXPECT_EQ(calls, 1);
}

TEST(ThreadTest, FailedRunForgetsTheThreadBefore) {
    pthread_t earlier = 0;
    BodyThread thread([&] {
        earlier = pthread_self();
        return false;
    });
    EXPECT_TRUE(thread.run(nullptr, 0, 0));
    while (thread.running()) {
        sched_yield();
    }
    const PthreadAnswer no_thread(PthreadCall::create, EAGAIN);

    EXPECT_FALSE(thread.run(nullptr, 0, 0));

    EXPECT_FALSE(thread.join());
    EXPECT_EQ(pthread_join(earlier, nullptr), 0);
}

TEST(ThreadTest, RunWithoutAttributesFails) {
    BodyThread thread(once);
    {
        const PthreadAnswer out_of_memory(PthreadCall::attr_init, ENOMEM);
        EXPECT_FALSE(thread.run(nullptr, 0, 0));
        EXPECT_TRUE(out_of_memory.given());
    }
    expect_fresh_start(thread);
}

TEST(ThreadTest, RunThatCannotDetachFails) {
    BodyThread thread(once);
    {
        const PthreadAnswer refusal(PthreadCall::attr_setdetachstate, EINVAL);
        EXPECT_FALSE(thread.run(nullptr, THREAD_FLAG_DETACHED, 0));
        EXPECT_TRUE(refusal.given());
    }
    expect_fresh_start(thread);
}

TEST(ThreadTest, DetachedThreadCanNeitherBeJoinedNorDetachedAgain) {
    Event leave;
    BodyThread thread([&] {
        EXPECT_TRUE(leave.wait());
        return false;
    });
    EXPECT_TRUE(thread.run(nullptr, THREAD_FLAG_DETACHED, 0));

    EXPECT_FALSE(thread.join());
    EXPECT_FALSE(thread.detach());

    leave.happen();
    while (thread.running()) {
        sched_yield();
    }
}

TEST(ThreadTest, DetachStateIsNotTouchedWithoutTheFlag) {
    BodyThread thread(once);
    const PthreadAnswer refusal(PthreadCall::attr_setdetachstate, EINVAL);

    EXPECT_TRUE(thread.run(nullptr, 0, 0));

    EXPECT_TRUE(thread.join());
    EXPECT_FALSE(refusal.given());
}

TEST(ThreadTest, RealtimeIsAskedForWithItsPriority) {
    BodyThread thread(once);
    const PthreadAnswer grant(PthreadCall::setschedparam, 0);

    EXPECT_TRUE(thread.run(nullptr, THREAD_FLAG_REALTIME, 7));

    EXPECT_TRUE(thread.join());
    EXPECT_TRUE(grant.given());
    EXPECT_EQ(latest_scheduling_request().policy, SCHED_RR);
    EXPECT_EQ(latest_scheduling_request().priority, 7);
    EXPECT_EQ(thread.run_flags(), static_cast<std::uint32_t>(THREAD_FLAG_REALTIME));
}

TEST(ThreadTest, ThreadWithoutTheRightToRealtimeRunsAndLosesTheFlag) {
    int calls = 0;
    BodyThread thread([&] { return ++calls < 1; });
    const PthreadAnswer refusal(PthreadCall::setschedparam, EPERM);

    EXPECT_TRUE(thread.run(nullptr, THREAD_FLAG_REALTIME | 0x100, 7));

    EXPECT_TRUE(thread.join());
    EXPECT_TRUE(refusal.given());
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(thread.run_flags(), 0x100U);
}

TEST(ThreadTest, ThreadWhoseSchedulingIsUnknownRunsAndLosesTheRealtimeFlag) {
    int calls = 0;
    BodyThread thread([&] { return ++calls < 1; });
    const PthreadAnswer no_such_thread(PthreadCall::getschedparam, ESRCH);
    const PthreadAnswer grant(PthreadCall::setschedparam, 0);

    EXPECT_TRUE(thread.run(nullptr, THREAD_FLAG_REALTIME, 7));

    EXPECT_TRUE(thread.join());
    EXPECT_TRUE(no_such_thread.given());
    EXPECT_FALSE(grant.given());
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(thread.run_flags(), 0U);
}

TEST(ThreadTest, SchedulingIsLeftAloneWithoutTheRealtimeFlag) {
    BodyThread thread(once);
    const PthreadAnswer grant(PthreadCall::setschedparam, 0);

    EXPECT_TRUE(thread.run(nullptr, 0, 7));

    EXPECT_TRUE(thread.join());
    EXPECT_FALSE(grant.given());
}

}  // namespace
}  // namespace vix
