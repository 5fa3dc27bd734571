// SPDX-License-Identifier: Apache-2.0
// Tests of when a run is complete, and of the event that ends it.

#include <gtest/gtest.h>

#include "program/phone/run_tally.h"

namespace headsetmgmt::program {
namespace {

RunTally tally_of(int attached, int reports_wanted) {
    RunTally tally;
    tally.attached = attached;
    tally.reports_wanted = reports_wanted;
    return tally;
}

TEST(RunTally, IsCompleteWhenEveryAccessoryAndEveryReportHasItsEnd) {
    RunTally tally = tally_of(2, 2);
    tally.configured = 1;
    tally.not_configured = 1;
    tally.reports_accepted = 1;
    EXPECT_FALSE(tally.is_complete());
    tally.reports_failed = 1;
    EXPECT_TRUE(tally.is_complete());
}

TEST(RunTally, IsNotCompleteWhileADocumentMayStillCome) {
    RunTally tally = tally_of(2, 0);
    tally.configured = 1;
    EXPECT_TRUE(tally.wants_document());
    EXPECT_FALSE(tally.is_complete());
}

TEST(RunTally, WaitsForReportsAloneOnceFetchesAreGivenUp) {
    RunTally tally = tally_of(1, 1);
    tally.gave_up = true;
    EXPECT_FALSE(tally.wants_document());
    EXPECT_FALSE(tally.is_complete());
    tally.reports_accepted = 1;
    EXPECT_TRUE(tally.is_complete());
}

TEST(RunTally, ResultOfAGoodRunHasNoReasons) {
    RunTally tally = tally_of(1, 1);
    tally.configured = 1;
    tally.reports_accepted = 1;
    EXPECT_EQ(tally.result("").dump(),
              R"({"event":"result","ok":true,"attached":1,"configured":1,"notConfigured":0,)"
              R"("reportsWanted":1,"reportsAccepted":1,"reportsFailed":0})");
}

TEST(RunTally, ResultReportsEachReasonOnceAndTheInterruptionFirst) {
    RunTally tally = tally_of(2, 0);
    tally.note_reason("status 404");
    tally.note_reason("a report was not accepted");
    tally.note_reason("status 404");
    const Event event = tally.result("interrupted during attempt 1");
    EXPECT_EQ(event["ok"], false);
    EXPECT_EQ(event["reason"], "interrupted during attempt 1");
    EXPECT_EQ(event["reasons"].dump(),
              R"(["interrupted during attempt 1","status 404","a report was not accepted"])");
}

TEST(RunTally, ResultCountsSettingsThatWerePassedOver) {
    RunTally tally = tally_of(1, 0);
    tally.passed_over = 2;
    EXPECT_EQ(tally.result("")["settingsPassedOver"], 2);
}

}  // namespace
}  // namespace headsetmgmt::program
