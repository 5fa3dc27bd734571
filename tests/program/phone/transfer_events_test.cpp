// SPDX-License-Identifier: Apache-2.0
// Tests of the events about the end of a request.

#include <chrono>
#include <string>

#include <gtest/gtest.h>

#include "program/phone/transfer_events.h"

namespace headsetmgmt::program {
namespace {

const TransferRequest fetch = {"http://h/a.json", false, ""};
const TransferRequest post = {"http://h/inventory", true, "{}"};

TransferResult answered(int status, const std::string& body = "") {
    TransferResult result;
    result.status = status;
    result.body = body;
    result.duration = std::chrono::milliseconds(12);
    return result;
}

TransferResult failed(const std::string& error) {
    TransferResult result;
    result.error = error;
    result.duration = std::chrono::milliseconds(12);
    return result;
}

TEST(FetchEvent, ReportsStatusAndSize) {
    EXPECT_EQ(fetch_event(2, fetch, answered(200, "12345")).dump(),
              R"({"event":"fetch","attempt":2,"url":"http://h/a.json","milliseconds":12,)"
              R"("status":200,"bytes":5})");
}

TEST(FetchEvent, OfAnAnswerWithoutADocumentSaysSo) {
    EXPECT_EQ(fetch_event(1, fetch, answered(204)).dump(),
              R"({"event":"fetch","attempt":1,"url":"http://h/a.json","milliseconds":12,)"
              R"("status":204,"message":"no document in the answer","bytes":0})");
}

TEST(FetchEvent, OfAFailureHasTheErrorInPlaceOfStatusAndSize) {
    EXPECT_EQ(fetch_event(1, fetch, failed("nobody there")).dump(),
              R"({"event":"fetch","attempt":1,"url":"http://h/a.json","milliseconds":12,)"
              R"("error":"nobody there"})");
}

TEST(FetchEvent, ReportsWhereRedirectsLed) {
    TransferResult result = answered(200);
    result.final_url = "http://other/a.json";
    EXPECT_EQ(fetch_event(1, fetch, result)["finalUrl"], "http://other/a.json");
}

TEST(FetchEvent, ReportsNoPassword) {
    const TransferRequest with_password = {"http://me:word@h/a.json", false, ""};
    EXPECT_EQ(fetch_event(1, with_password, answered(200))["url"], "http://me:***@h/a.json");
}

TEST(ReportEvent, ReportsNoPassword) {
    const TransferRequest with_password = {"http://me:word@h/inventory", true, "{}"};
    EXPECT_EQ(report_event(with_password, answered(200))["url"], "http://me:***@h/inventory");
}

TEST(ReportEvent, OfASuccessWithABrokenBodyIsAcceptedAndReportsTheError) {
    TransferResult result = answered(200);
    result.error = "cut";
    EXPECT_EQ(report_event(post, result).dump(),
              R"({"event":"report","url":"http://h/inventory","bytes":2,"accepted":true,)"
              R"("milliseconds":12,"error":"cut","status":200})");
}

TEST(ReportEvent, OfEverySuccessIsAccepted) {
    EXPECT_EQ(report_event(post, answered(204)).dump(),
              R"({"event":"report","url":"http://h/inventory","bytes":2,"accepted":true,)"
              R"("milliseconds":12,"status":204})");
    EXPECT_EQ(report_event(post, answered(299))["accepted"], true);
}

TEST(ReportEvent, OfARedirectWithoutLocationIsNotAccepted) {
    EXPECT_EQ(report_event(post, answered(300)).dump(),
              R"({"event":"report","url":"http://h/inventory","bytes":2,"accepted":false,)"
              R"("milliseconds":12,"status":300,"message":"a redirect without Location"})");
}

TEST(ReportEvent, OfAFailureIsNotAccepted) {
    EXPECT_EQ(report_event(post, failed("nobody there")).dump(),
              R"({"event":"report","url":"http://h/inventory","bytes":2,"accepted":false,)"
              R"("milliseconds":12,"error":"nobody there"})");
}

}  // namespace
}  // namespace headsetmgmt::program
