// SPDX-License-Identifier: Apache-2.0
// Tests of the reasons that a run's last lines give.

#include <gtest/gtest.h>

#include "program/phone/run_end.h"

namespace headsetmgmt::program {
namespace {

using UnderWay = RunProgress::UnderWay;

TEST(NoDocument, ReportsTheAttemptsAndTheLastFailure) {
    EXPECT_EQ("no document after 1 attempt: status 404", no_document(1, "status 404"));
    EXPECT_EQ("no document after 3 attempts; the last: status 404", no_document(3, "status 404"));
}

TEST(Interruption, OfTheFirstFetch) {
    EXPECT_EQ("interrupted during attempt 1", interruption({UnderWay::fetch, 1, false, true, ""}));
}

TEST(Interruption, OfALaterFetchReportsTheLastFailure) {
    EXPECT_EQ("interrupted during attempt 3; the last: status 503",
              interruption({UnderWay::fetch, 3, false, true, "status 503"}));
}

TEST(Interruption, OfAWaitReportsTheAttemptThatIsWaitedFor) {
    EXPECT_EQ("interrupted while waiting for attempt 5; the last: status 404",
              interruption({UnderWay::nothing, 4, true, true, "status 404"}));
}

TEST(Interruption, OfAReportDuringAWaitIsOneOfTheWait) {
    EXPECT_EQ("interrupted while waiting for attempt 2; the last: status 404",
              interruption({UnderWay::report, 1, true, true, "status 404"}));
}

TEST(Interruption, OfADocumentThatIsHandedOver) {
    EXPECT_EQ("interrupted while a document was handed over",
              interruption({UnderWay::document, 1, false, true, ""}));
}

TEST(Interruption, OfAReport) {
    EXPECT_EQ("interrupted while a report was on its way",
              interruption({UnderWay::report, 0, false, false, ""}));
}

TEST(Interruption, BeforeTheNextAttemptIsAskedFor) {
    EXPECT_EQ("interrupted before attempt 3; the last: status 404",
              interruption({UnderWay::nothing, 2, false, true, "status 404"}));
}

TEST(Interruption, BeforeTheFirstFetchIsAskedFor) {
    EXPECT_EQ("interrupted before the library asked for a document",
              interruption({UnderWay::nothing, 0, false, true, ""}));
}

TEST(Interruption, WithReportsAloneLeft) {
    EXPECT_EQ("interrupted before every report was sent",
              interruption({UnderWay::nothing, 2, false, false, "status 404"}));
}

}  // namespace
}  // namespace headsetmgmt::program
