// SPDX-License-Identifier: Apache-2.0
// Host functions that fail, throw, stall, or answer late or twice, at every one of their calls.

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "faults/host_run.h"
#include "support/event.h"
#include "support/nth_call.h"

namespace headsetmgmt::test_support {
namespace {

enum class HostFunction { http_request, apply_changes, firmware_upgrade, fact };

/// One call of a run.
struct CallOfARun {
    HostFunction function;
    int nth;  // of the calls of this function; 1 is the first
};

/// All of them.
const CallOfARun calls_of_a_run[] = {
    {HostFunction::http_request, 1},
    {HostFunction::http_request, 2},
    {HostFunction::http_request, 3},
    {HostFunction::apply_changes, 1},
    {HostFunction::apply_changes, 2},
    {HostFunction::apply_changes, 3},
    {HostFunction::apply_changes, 4},
    {HostFunction::apply_changes, 5},
    {HostFunction::apply_changes, 6},
    {HostFunction::firmware_upgrade, 1},
    {HostFunction::firmware_upgrade, 2},
    {HostFunction::fact, 1},
    {HostFunction::fact, 2},
    {HostFunction::fact, 3},
};

std::string name_of(HostFunction function) {
    switch (function) {
    case HostFunction::http_request:
        return "HttpRequest";
    case HostFunction::apply_changes:
        return "ApplyChanges";
    case HostFunction::firmware_upgrade:
        return "FirmwareUpgrade";
    case HostFunction::fact:
        break;
    }
    return "Fact";
}

std::string name_of(const CallOfARun& call) {
    return name_of(call.function) + std::to_string(call.nth);
}

void PrintTo(const CallOfARun& call, std::ostream* stream) {
    *stream << name_of(call);
}

std::string name_of_call(const ::testing::TestParamInfo<CallOfARun>& test) {
    return name_of(test.param);
}

/// The usual host, in which `happening` happens inside the call.
HostBehaviour usual_but_at(const CallOfARun& call, const std::function<void()>& happening) {
    const auto chosen = std::make_shared<NthCall>();
    chosen->choose(call.nth);
    const auto hook = [chosen, happening] {
        if (chosen->is_now()) {
            happening();
        }
    };
    HostBehaviour behaviour = usual_behaviour();
    switch (call.function) {
    case HostFunction::http_request:
        behaviour.on_http_request = [hook](const HttpRequestCall&) { hook(); };
        break;
    case HostFunction::apply_changes:
        behaviour.on_apply_changes = [hook](const ApplyChangesCall&) { hook(); };
        break;
    case HostFunction::firmware_upgrade:
        behaviour.on_firmware_upgrade = [hook](const FirmwareUpgradeCall&) { hook(); };
        break;
    case HostFunction::fact:
        behaviour.on_fact = hook;
        break;
    }
    return behaviour;
}

bool is_running(const std::future<void>& work) {
    return work.wait_for(std::chrono::seconds(0)) == std::future_status::timeout;
}

TEST(HostFaults, RunCallsEachHostFunctionAsOftenAsItIsTriedHere) {
    PhoneHost host;
    host.start_up();
    const CallsSince since;

    EXPECT_TRUE(attach_configure_report_reset(host));

    EXPECT_EQ(since.now(), usual_calls);
    expect_usual_runs(host);
}

// Failing.

/// A host whose function fails from one call on.
class FailingHostFunction : public ::testing::TestWithParam<CallOfARun> {
protected:
    static HostBehaviour failing() {
        HostBehaviour behaviour = usual_behaviour();
        switch (GetParam().function) {
        case HostFunction::http_request:
            behaviour.http_request_answer = false;
            break;
        case HostFunction::apply_changes:
            behaviour.apply_changes_answer = false;
            break;
        case HostFunction::firmware_upgrade:
            behaviour.firmware_upgrade_answer = false;
            break;
        case HostFunction::fact:
            behaviour.serial_number.reset();
            behaviour.orvik_version.reset();
            behaviour.os_version.reset();
            break;
        }
        return behaviour;
    }

    /// The call before the failing one makes the host fail.
    static void fail_from_call_on() {
        const CallOfARun before = {GetParam().function, GetParam().nth - 1};
        fake_host().behave(before.nth == 0 ? failing() : usual_but_at(before, [] {
            fake_host().behave(failing());
        }));
    }
};

TEST_P(FailingHostFunction, ChangesNothingElse) {
    PhoneHost host;
    host.start_up();
    fail_from_call_on();
    const CallsSince since;

    EXPECT_TRUE(attach_configure_report_reset(host));

    EXPECT_EQ(since.now(), usual_calls);
    expect_usual_runs(host);
}

INSTANTIATE_TEST_SUITE_P(Calls, FailingHostFunction, ::testing::ValuesIn(calls_of_a_run),
                         name_of_call);

class FactThatIsNull : public FailingHostFunction {};

TEST_P(FactThatIsNull, IsEmptyInTheReport) {
    PhoneHost host;
    host.start_up();
    fail_from_call_on();

    attach_configure_report_reset(host);

    // In the order in which the host is asked.
    const std::string facts[] = {
        GetParam().nth > 1 ? "\"serialNumber\":\t\"PHONE0001\"" : "\"serialNumber\":\t\"\"",
        GetParam().nth > 2 ? "\"firmwareVersion\":\t\"12.5\"" : "\"firmwareVersion\":\t\"\"",
        "\"hostOSVersion\":\t\"\"",
    };
    const std::string body = fake_host().http_requests().back().body.value_or("none");
    for (const std::string& fact : facts) {
        EXPECT_NE(body.find(fact), std::string::npos) << fact << " in " << body;
    }
}

INSTANTIATE_TEST_SUITE_P(Calls, FactThatIsNull,
                         ::testing::Values(CallOfARun{HostFunction::fact, 1},
                                           CallOfARun{HostFunction::fact, 2},
                                           CallOfARun{HostFunction::fact, 3}),
                         name_of_call);

// Throwing.

/// What is left of a run when one call of a host function throws.
struct Throw {
    CallOfARun call;
    CallCounts left;  // the throwing call counts
    bool reset;       // what the reset answers
};

void PrintTo(const Throw& thrown, std::ostream* stream) {
    PrintTo(thrown.call, stream);
}

std::string name_of_throw(const ::testing::TestParamInfo<Throw>& test) {
    return name_of(test.param.call);
}

const Throw throws[] = {
    // A fetch: the run is over.
    {{HostFunction::http_request, 1}, {1, 1, 0, 0, 3, 0}, true},
    {{HostFunction::http_request, 2}, {2, 1, 0, 0, 3, 0}, true},
    // The post.
    {{HostFunction::http_request, 3}, {2, 1, 6, 2, 3, 0}, true},
    // A setting: the accessory's later ones and its firmware are not asked for, the other's are.
    {{HostFunction::apply_changes, 1}, {2, 1, 5, 1, 3, 0}, true},
    {{HostFunction::apply_changes, 2}, {2, 1, 6, 1, 3, 0}, true},
    {{HostFunction::apply_changes, 3}, {2, 1, 5, 1, 3, 0}, true},
    {{HostFunction::apply_changes, 4}, {2, 1, 6, 1, 3, 0}, true},
    // A setting of the reset.
    {{HostFunction::apply_changes, 5}, {2, 1, 5, 2, 3, 0}, false},
    {{HostFunction::apply_changes, 6}, {2, 1, 6, 2, 3, 0}, false},
    // The firmware, which comes last.
    {{HostFunction::firmware_upgrade, 1}, {2, 1, 6, 2, 3, 0}, true},
    {{HostFunction::firmware_upgrade, 2}, {2, 1, 6, 2, 3, 0}, true},
    // A fact: the report is not posted, and the later facts are not asked.
    {{HostFunction::fact, 1}, {2, 0, 6, 2, 1, 0}, true},
    {{HostFunction::fact, 2}, {2, 0, 6, 2, 2, 0}, true},
    {{HostFunction::fact, 3}, {2, 0, 6, 2, 3, 0}, true},
};

class ThrowingHostFunction : public ::testing::TestWithParam<Throw> {
protected:
    static void expect_the_rest(const std::function<void()>& thrower) {
        PhoneHost host;
        host.start_up();
        fake_host().behave(usual_but_at(GetParam().call, thrower));
        const CallsSince since;

        EXPECT_EQ(attach_configure_report_reset(host), GetParam().reset);

        EXPECT_EQ(since.now(), GetParam().left);
        expect_usual_runs(host);
    }
};

TEST_P(ThrowingHostFunction, LosesItsOwnWorkAlone) {
    expect_the_rest([] { throw std::runtime_error("the host's own trouble"); });
}

TEST_P(ThrowingHostFunction, MayThrowAnything) {
    expect_the_rest([] { throw 17; });
}

INSTANTIATE_TEST_SUITE_P(Calls, ThrowingHostFunction, ::testing::ValuesIn(throws), name_of_throw);

// Stalling.

class StallingHostFunction : public ::testing::TestWithParam<CallOfARun> {};

TEST_P(StallingHostFunction, HoldsUpAStopAndNoOtherCall) {
    Event stalled;
    Event may_return;
    std::atomic<bool> stopping{false};
    PhoneHost host;
    host.start_up();
    fake_host().behave(usual_but_at(GetParam(), [&] {
        stalled.happen();
        EXPECT_TRUE(may_return.wait());
    }));
    host.release_worker();
    std::future<void> run = std::async(std::launch::async, [&] {
        attach_configure_report_reset([&](std::size_t requests) {
            fake_host().wait_until(
                [&] { return stopping || fake_host().http_requests().size() >= requests; });
        });
    });
    EXPECT_TRUE(stalled.wait());

    // Calls of another thread, which need nothing that the stalled one uses.
    EXPECT_TRUE(set_urls());
    EXPECT_TRUE(create_headset_mgmt(record_host_log_line));
    EXPECT_FALSE(update_config("headset-1", USAGE_SIDETONE, 1));

    stopping = true;
    std::future<void> stopped = std::async(std::launch::async, [] { stop_headset_mgmt(); });
    while (set_urls()) {
        std::this_thread::yield();
    }
    EXPECT_FALSE(configure_headset(shared(headset_1())));
    EXPECT_TRUE(is_running(stopped));
    may_return.happen();
    stopped.get();
    run.get();

    EXPECT_FALSE(factory_reset("headset-1"));
    host.stop();  // for the clock
    host.start_up();
    expect_usual_runs(host);
}

INSTANTIATE_TEST_SUITE_P(Calls, StallingHostFunction, ::testing::ValuesIn(calls_of_a_run),
                         name_of_call);

// Answering late.

/// The answer to one of the two fetches of a run comes late; the parameter says which.
class LateAnswer : public ::testing::TestWithParam<int> {
protected:
    LateAnswer() {
        host.start_up();
        EXPECT_TRUE(attach_both());
        host.run_worker();
        for (int answered = 1; answered < GetParam(); ++answered) {
            httpResponse("", 404);
            host.run_worker();
        }
        EXPECT_EQ(since.now().fetches, static_cast<std::size_t>(GetParam()));
    }

    /// The answer, and what the library says to it.
    Lines answer() {
        host.take();
        httpResponse(document_with_firmware, 200);
        return host.take();
    }

    const Lines dropped = {"log 5 Lib::ConfigManagerImpl: on_fetch_config_success: no "
                           "configuration in progress, dropping data"};
    PhoneHost host;
    CallsSince since;
};

TEST_P(LateAnswer, IsDroppedWhenItsAccessoriesHaveLeft) {
    remove_both();

    EXPECT_EQ(answer(), dropped);

    expect_usual_runs(host);
}

TEST_P(LateAnswer, IsDroppedAfterAStopAndAStart) {
    host.stop();
    ASSERT_TRUE(host.start());

    EXPECT_EQ(answer(), dropped);

    EXPECT_TRUE(set_urls());
    expect_usual_runs(host);
}

TEST_P(LateAnswer, IsOfNoUseToAStoppedLibrary) {
    host.stop();

    EXPECT_EQ(answer(), Lines{});

    host.start_up();
    expect_usual_runs(host);
}

TEST_P(LateAnswer, ServesTheRunThatHasBegunSince) {
    remove_both();
    EXPECT_TRUE(attach_both());

    answer();
    const CallCounts served = since.now();
    host.run_worker();

    // The run's own fetch was queued, and is of no use any more.
    EXPECT_EQ(served.changes, 4U);
    EXPECT_EQ(served.upgrades, 2U);
    EXPECT_EQ(since.now().fetches, served.fetches + 1);
    EXPECT_EQ(answer(), dropped);
    expect_usual_runs(host);
}

INSTANTIATE_TEST_SUITE_P(Fetches, LateAnswer, ::testing::Values(1, 2));

// Answering twice.

/// Two answers to one request.
struct TwoAnswers {
    const char* name;
    int fetch;  // which one of the run
    int first_status;
    int second_status;
    bool inside;          // the answers come from inside `httpRequest`
    std::size_t fetches;  // that the run makes in all
};

void PrintTo(const TwoAnswers& answers, std::ostream* stream) {
    *stream << answers.name;
}

std::string name_of_answers(const ::testing::TestParamInfo<TwoAnswers>& test) {
    return test.param.name;
}

const TwoAnswers two_answers[] = {
    {"DocumentTwiceAtTheFirst", 1, 200, 200, false, 1},
    {"DocumentTwiceAtTheSecond", 2, 200, 200, false, 2},
    {"DocumentTwiceInsideTheFirst", 1, 200, 200, true, 1},
    {"DocumentTwiceInsideTheSecond", 2, 200, 200, true, 2},
    {"DocumentAndFailureAtTheFirst", 1, 200, 404, false, 1},
    {"DocumentAndFailureAtTheSecond", 2, 200, 404, false, 2},
    {"DocumentAndFailureInsideTheFirst", 1, 200, 404, true, 1},
    {"DocumentAndFailureInsideTheSecond", 2, 200, 404, true, 2},
    // One fetch more for each failure.
    {"FailureTwiceAtTheFirst", 1, 404, 404, false, 3},
    {"FailureTwiceAtTheSecond", 2, 404, 404, false, 4},
    {"FailureTwiceInsideTheFirst", 1, 404, 404, true, 3},
    {"FailureTwiceInsideTheSecond", 2, 404, 404, true, 4},
    // That fetch is queued when the document comes after all.
    {"FailureAndDocumentAtTheFirst", 1, 404, 200, false, 2},
    {"FailureAndDocumentAtTheSecond", 2, 404, 200, false, 3},
    {"FailureAndDocumentInsideTheFirst", 1, 404, 200, true, 2},
    {"FailureAndDocumentInsideTheSecond", 2, 404, 200, true, 3},
};

class AnswerGivenTwice : public ::testing::TestWithParam<TwoAnswers> {
protected:
    static void answer_twice() {
        httpResponse(document_with_firmware, GetParam().first_status);
        httpResponse(document_with_firmware, GetParam().second_status);
    }
};

TEST_P(AnswerGivenTwice, ConfiguresEachAccessoryOnce) {
    PhoneHost host;
    host.start_up();
    if (GetParam().inside) {
        fake_host().behave(
            usual_but_at({HostFunction::http_request, GetParam().fetch}, answer_twice));
    }
    const CallsSince since;
    EXPECT_TRUE(attach_both());
    for (int fetch = 1; fetch < GetParam().fetch; ++fetch) {
        host.run_worker();
        httpResponse("", 404);
    }
    host.run_worker();
    if (!GetParam().inside) {
        answer_twice();
    }

    // What is still fetched is answered once.
    auto answered = static_cast<std::size_t>(GetParam().fetch);
    for (int pass = 0; pass < 5; ++pass) {
        host.run_worker();
        for (; answered < since.now().fetches; ++answered) {
            httpResponse(document_with_firmware, 200);
        }
    }

    EXPECT_EQ(since.now(), (CallCounts{GetParam().fetches, 0, 4, 2, 0, 0}));
    expect_usual_runs(host);
}

INSTANTIATE_TEST_SUITE_P(Fetches, AnswerGivenTwice, ::testing::ValuesIn(two_answers),
                         name_of_answers);

}  // namespace
}  // namespace headsetmgmt::test_support
