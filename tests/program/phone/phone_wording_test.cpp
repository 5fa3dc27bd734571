// SPDX-License-Identifier: Apache-2.0
// Tests of the sentences for the events of a phone.

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

#include "program/phone/phone_wording.h"

namespace headsetmgmt::program {
namespace {

TEST(PhoneWording, AttachedHeadsetWithADongle) {
    EXPECT_EQ("attached wireless-headset: Varos K30, firmware 2-1-0, dongle Varos Link, firmware "
              "1-3-0",
              phone_event_in_words({{"event", "attached"},
                                    {"id", "wireless-headset"},
                                    {"model", "Varos K30"},
                                    {"softwareVersion", "2-1-0"},
                                    {"dongleModel", "Varos Link"},
                                    {"dongleVersion", "1-3-0"}}));
}

TEST(PhoneWording, AttachedAccessoryWithoutADongle) {
    EXPECT_EQ("attached room-camera: Varos Eye 2, firmware 3-0-1",
              phone_event_in_words({{"event", "attached"},
                                    {"id", "room-camera"},
                                    {"model", "Varos Eye 2"},
                                    {"softwareVersion", "3-0-1"},
                                    {"dongleModel", ""},
                                    {"dongleVersion", ""}}));
}

TEST(PhoneWording, AttachedAccessoryOfWhichNothingIsReported) {
    EXPECT_EQ("attached desk: model unknown, firmware unknown",
              phone_event_in_words({{"event", "attached"},
                                    {"id", "desk"},
                                    {"model", ""},
                                    {"softwareVersion", ""},
                                    {"dongleModel", ""},
                                    {"dongleVersion", ""}}));
    EXPECT_EQ("attached desk: Varos K30, firmware 2-1-0, dongle Varos Link, firmware unknown",
              phone_event_in_words({{"event", "attached"},
                                    {"id", "desk"},
                                    {"model", "Varos K30"},
                                    {"softwareVersion", "2-1-0"},
                                    {"dongleModel", "Varos Link"},
                                    {"dongleVersion", ""}}));
}

TEST(PhoneWording, FetchThatWasAnswered) {
    EXPECT_EQ(
        "fetch, attempt 1: http://127.0.0.1:8080/c.json: status 404 (Not Found), 9 bytes, 12 ms",
        phone_event_in_words({{"event", "fetch"},
                              {"attempt", 1},
                              {"url", "http://127.0.0.1:8080/c.json"},
                              {"milliseconds", 12},
                              {"status", 404},
                              {"bytes", 9}}));
}

TEST(PhoneWording, FetchThatWasSentElsewhereReportsWhere) {
    EXPECT_EQ("fetch, attempt 1: http://127.0.0.1:8080/c.json redirected to "
              "http://127.0.0.1:8080/d\\x07.json: status 200, 9 bytes, 12 ms",
              phone_event_in_words({{"event", "fetch"},
                                    {"attempt", 1},
                                    {"url", "http://127.0.0.1:8080/c.json"},
                                    {"milliseconds", 12},
                                    {"finalUrl", "http://127.0.0.1:8080/d\a.json"},
                                    {"status", 200},
                                    {"bytes", 9}}));
}

TEST(PhoneWording, FetchWithAnAnswerThatLacksSomethingReportsWhat) {
    EXPECT_EQ("fetch, attempt 1: http://127.0.0.1:8080/c.json: status 204, 0 bytes, 12 ms: "
              "no document in the answer",
              phone_event_in_words({{"event", "fetch"},
                                    {"attempt", 1},
                                    {"url", "http://127.0.0.1:8080/c.json"},
                                    {"milliseconds", 12},
                                    {"status", 204},
                                    {"message", "no document in the answer"},
                                    {"bytes", 0}}));
}

TEST(PhoneWording, FetchWithoutAnAnswer) {
    EXPECT_EQ("fetch, attempt 3: tftp://10.0.0.1/c.json: not complete after 30 s (--timeout)",
              phone_event_in_words({{"event", "fetch"},
                                    {"attempt", 3},
                                    {"url", "tftp://10.0.0.1/c.json"},
                                    {"milliseconds", 30000},
                                    {"error", "not complete after 30 s (--timeout)"}}));
}

TEST(PhoneWording, WaitIsInTenthsOfASecond) {
    EXPECT_EQ("next attempt (2) in 0.9 s",
              phone_event_in_words({{"event", "wait"}, {"attempt", 2}, {"milliseconds", 987}}));
    EXPECT_EQ("next attempt (8) in 60.0 s",
              phone_event_in_words({{"event", "wait"}, {"attempt", 8}, {"milliseconds", 60000}}));
}

TEST(PhoneWording, Setting) {
    EXPECT_EQ("set desk-headset: bass (usage id 32) = 7",
              phone_event_in_words({{"event", "setting"},
                                    {"id", "desk-headset"},
                                    {"name", "bass"},
                                    {"usageId", 32},
                                    {"value", "7"}}));
}

TEST(PhoneWording, FirmwareDecisionOfAnAccessory) {
    EXPECT_EQ(
        "firmware of desk-headset (Varos K20): no upgrade requested: the document says LATEST",
        phone_event_in_words({{"event", "firmware"},
                              {"model", "Varos K20"},
                              {"id", "desk-headset"},
                              {"decision", "no upgrade requested: the document says LATEST"}}));
}

TEST(PhoneWording, RequestedFirmwareIsReportedWithBothVersions) {
    EXPECT_EQ("firmware of desk's dongle Varos Link: change from 2-0-4 to 1-0-0 requested",
              phone_event_in_words({{"event", "firmware"},
                                    {"model", "Varos K30"},
                                    {"id", "desk"},
                                    {"dongleModel", "Varos Link"},
                                    {"decision", "a sentence"},
                                    {"reported", "2-0-4"},
                                    {"wanted", "1-0-0"},
                                    {"requested", true}}));
}

TEST(PhoneWording, AccessoryWithoutAModelIsNamedByItsId) {
    EXPECT_EQ("firmware of desk's dongle Varos Link: no upgrade required",
              phone_event_in_words({{"event", "firmware"},
                                    {"model", ""},
                                    {"id", "desk"},
                                    {"dongleModel", "Varos Link"},
                                    {"decision", "no upgrade required"}}));
    EXPECT_EQ(
        "document taken by 1, failed for 0\n"
        "  kept but not sent: 1 setting of desk (model unknown): a reason",
        phone_event_in_words(
            {{"event", "document"},
             {"taken", 1},
             {"failed", 0},
             {"keptUnsent", 1},
             {"notSent",
              Event::array(
                  {{{"model", ""}, {"id", "desk"}, {"settings", 1}, {"reason", "a reason"}}})}}));
}

TEST(PhoneWording, FirmwareThatIsNotRequestedIsReportedByItsDecision) {
    EXPECT_EQ("firmware of desk (Varos K20): no upgrade required",
              phone_event_in_words({{"event", "firmware"},
                                    {"model", "Varos K20"},
                                    {"id", "desk"},
                                    {"decision", "no upgrade required"},
                                    {"reported", "2-0-4"},
                                    {"wanted", "2-0-4"}}));
}

TEST(PhoneWording, Upgrade) {
    EXPECT_EQ("upgrade desk-headset to 2-1-0 with k30.bin",
              phone_event_in_words({{"event", "upgrade"},
                                    {"id", "desk-headset"},
                                    {"version", "2-1-0"},
                                    {"firmwareName", "k30.bin"}}));
}

TEST(PhoneWording, DocumentThatAllTook) {
    EXPECT_EQ("document taken by 2, failed for 0",
              phone_event_in_words({{"event", "document"}, {"taken", 2}, {"failed", 0}}));
}

TEST(PhoneWording, DocumentThatFailedHasAReasonALine) {
    EXPECT_EQ("document taken by 1, failed for 2\n"
              "  Nothing to parse\n"
              "  <html>\\n\\x1b[31m",
              phone_event_in_words({{"event", "document"},
                                    {"taken", 1},
                                    {"failed", 2},
                                    {"reasons", {"Nothing to parse", "<html>\n\x1b[31m"}}}));
}

TEST(PhoneWording, DocumentWithSettingsThatReachedNoDevice) {
    EXPECT_EQ("document taken by 1, failed for 0\n"
              "  kept but not sent: 1 setting of desk (Varos K20): its modelFirmware has no "
              "firmwareParams\n"
              "  passed over: T\\x07: its value is missing or null (commonSettings, line 3, "
              "column 5)\n"
              "  passed over: a setting: its name is missing, empty or no text (firmwareParams of "
              "Varos K20, line 8, column 9)",
              phone_event_in_words(
                  {{"event", "document"},
                   {"taken", 1},
                   {"failed", 0},
                   {"keptUnsent", 1},
                   {"notSent", Event::array({{{"model", "Varos K20"},
                                              {"id", "desk"},
                                              {"settings", 1},
                                              {"reason", "its modelFirmware has no "
                                                         "firmwareParams"}}})},
                   {"passedOver",
                    Event::array({{{"list", "commonSettings"},
                                   {"name", "T\x07"},
                                   {"reason", "its value is missing or null"},
                                   {"line", 3},
                                   {"column", 5},
                                   {"accessories", Event::array({{{"model", "Varos K20"}}})}},
                                  {{"list", "firmwareParams"},
                                   {"reason", "its name is missing, empty or no text"},
                                   {"line", 8},
                                   {"column", 9},
                                   {"accessories", Event::array({{{"model", "Varos K20"}}})}}})}}));
}

TEST(PhoneWording, DocumentWithTheEntriesThatServe) {
    EXPECT_EQ("document taken by 1, failed for 0\n"
              "  desk (Varos K20) is served by entry 2 of modelSpecificSettings: \"K20\" (line 9, "
              "column 5)\n"
              "  desk's dongle Varos Link is served by entry 0 of modelSpecificSettings: \"Link\" "
              "(line 3, column 5)",
              phone_event_in_words({{"event", "document"},
                                    {"taken", 1},
                                    {"failed", 0},
                                    {"served", 2},
                                    {"entries", Event::array({{{"model", "Varos K20"},
                                                               {"id", "desk"},
                                                               {"entry", 2},
                                                               {"name", "K20"},
                                                               {"line", 9},
                                                               {"column", 5}},
                                                              {{"model", "Varos K20"},
                                                               {"id", "desk"},
                                                               {"dongleModel", "Varos Link"},
                                                               {"entry", 0},
                                                               {"name", "Link"},
                                                               {"line", 3},
                                                               {"column", 5}}})}}));
}

TEST(PhoneWording, DocumentWithASettingThatIsNeverSent) {
    EXPECT_EQ(
        "document taken by 1, failed for 0\n"
        "  kept, sent at a factory reset only: V: its access is \"Administrator\", not \"Admin\" "
        "(firmwareParams of Varos K20, line 3, column 5)",
        phone_event_in_words(
            {{"event", "document"},
             {"taken", 1},
             {"failed", 0},
             {"settingsKeptBack", 1},
             {"keptBack",
              Event::array({{{"list", "firmwareParams"},
                             {"name", "V"},
                             {"access", "Administrator"},
                             {"line", 3},
                             {"column", 5},
                             {"accessories", Event::array({{{"model", "Varos K20"}}})}}})}}));
}

/// A document of which settings named T1, T2 and so on were passed over.
Event document_with_passed_over(int count) {
    Event document = {
        {"event", "document"}, {"taken", 1}, {"failed", 0}, {"settingsPassedOver", count}};
    for (int i = 1; i <= std::min(count, 100); ++i) {
        document["passedOver"].push_back({{"list", "commonSettings"},
                                          {"name", "T" + std::to_string(i)},
                                          {"reason", "no reason"},
                                          {"line", i},
                                          {"column", 5}});
    }
    return document;
}

constexpr char twenty_passed_over[] =
    "document taken by 1, failed for 0\n"
    "  passed over: T1: no reason (commonSettings, line 1, column 5)\n"
    "  passed over: T2: no reason (commonSettings, line 2, column 5)\n"
    "  passed over: T3: no reason (commonSettings, line 3, column 5)\n"
    "  passed over: T4: no reason (commonSettings, line 4, column 5)\n"
    "  passed over: T5: no reason (commonSettings, line 5, column 5)\n"
    "  passed over: T6: no reason (commonSettings, line 6, column 5)\n"
    "  passed over: T7: no reason (commonSettings, line 7, column 5)\n"
    "  passed over: T8: no reason (commonSettings, line 8, column 5)\n"
    "  passed over: T9: no reason (commonSettings, line 9, column 5)\n"
    "  passed over: T10: no reason (commonSettings, line 10, column 5)\n"
    "  passed over: T11: no reason (commonSettings, line 11, column 5)\n"
    "  passed over: T12: no reason (commonSettings, line 12, column 5)\n"
    "  passed over: T13: no reason (commonSettings, line 13, column 5)\n"
    "  passed over: T14: no reason (commonSettings, line 14, column 5)\n"
    "  passed over: T15: no reason (commonSettings, line 15, column 5)\n"
    "  passed over: T16: no reason (commonSettings, line 16, column 5)\n"
    "  passed over: T17: no reason (commonSettings, line 17, column 5)\n"
    "  passed over: T18: no reason (commonSettings, line 18, column 5)\n"
    "  passed over: T19: no reason (commonSettings, line 19, column 5)\n"
    "  passed over: T20: no reason (commonSettings, line 20, column 5)";

TEST(PhoneWording, TwentySettingsThatWerePassedOverAreAllReported) {
    EXPECT_EQ(twenty_passed_over, phone_event_in_words(document_with_passed_over(20)));
}

TEST(PhoneWording, SettingsPassedOverBeyondTwentyAreCounted) {
    EXPECT_EQ(std::string(twenty_passed_over) + "\n  and 3 more passed over",
              phone_event_in_words(document_with_passed_over(23)));
    EXPECT_EQ(std::string(twenty_passed_over) + "\n  and 2096980 more passed over",
              phone_event_in_words(document_with_passed_over(2097000)));
}

TEST(PhoneWording, FailuresAndUnsentSettingsBeyondTwentyAreCounted) {
    Event document = {{"event", "document"}, {"taken", 0}, {"failed", 150}, {"keptUnsent", 140}};
    for (int i = 0; i < 100; ++i) {
        document["reasons"].push_back("a reason");
        document["notSent"].push_back(
            {{"id", "a"}, {"model", "M"}, {"settings", 2}, {"reason", "another"}});
    }
    std::string expected = "document taken by 0, failed for 150";
    for (int i = 0; i < 20; ++i) {
        expected += "\n  a reason";
    }
    expected += "\n  and 130 more failed";
    for (int i = 0; i < 20; ++i) {
        expected += "\n  kept but not sent: 2 settings of a (M): another";
    }
    expected += "\n  and 120 more kept but not sent";

    EXPECT_EQ(expected, phone_event_in_words(document));
}

TEST(PhoneWording, DocumentThatWasDropped) {
    EXPECT_EQ("document dropped: nobody was waiting for it",
              phone_event_in_words(
                  {{"event", "document"}, {"taken", 0}, {"failed", 0}, {"dropped", true}}));
}

TEST(PhoneWording, ReportThatWasAccepted) {
    EXPECT_EQ(
        "report to http://127.0.0.1:8080/inventory: accepted: status 202, 714 bytes sent, 3 ms",
        phone_event_in_words({{"event", "report"},
                              {"url", "http://127.0.0.1:8080/inventory"},
                              {"bytes", 714},
                              {"accepted", true},
                              {"milliseconds", 3},
                              {"status", 202}}));
}

TEST(PhoneWording, ReportThatWasAcceptedWithAnAnswerThatBrokeOff) {
    EXPECT_EQ("report to http://h/inventory: accepted: status 200, 714 bytes sent, 3 ms; then: "
              "transfer closed",
              phone_event_in_words({{"event", "report"},
                                    {"url", "http://h/inventory"},
                                    {"bytes", 714},
                                    {"accepted", true},
                                    {"milliseconds", 3},
                                    {"error", "transfer closed"},
                                    {"status", 200}}));
}

TEST(PhoneWording, ReportThatWasNotAccepted) {
    EXPECT_EQ("report to http://127.0.0.1:8080/inventory: not accepted: status 503 (Service "
              "Unavailable), 714 bytes sent, 3 ms",
              phone_event_in_words({{"event", "report"},
                                    {"url", "http://127.0.0.1:8080/inventory"},
                                    {"bytes", 714},
                                    {"accepted", false},
                                    {"milliseconds", 3},
                                    {"status", 503}}));
}

TEST(PhoneWording, ReportWithoutAnAnswer) {
    EXPECT_EQ("report to http://127.0.0.1:8080/inventory: not accepted: not complete after 30 s "
              "(--timeout)",
              phone_event_in_words({{"event", "report"},
                                    {"url", "http://127.0.0.1:8080/inventory"},
                                    {"bytes", 714},
                                    {"accepted", false},
                                    {"milliseconds", 30000},
                                    {"error", "not complete after 30 s (--timeout)"}}));
}

TEST(PhoneWording, ResultSaysHowManySettingsWerePassedOver) {
    EXPECT_EQ("done: 1 of 2 configured (5 settings passed over), 1 without a document; no reports "
              "wanted",
              phone_event_in_words({{"event", "result"},
                                    {"ok", true},
                                    {"attached", 2},
                                    {"configured", 1},
                                    {"notConfigured", 0},
                                    {"reportsWanted", 0},
                                    {"reportsAccepted", 0},
                                    {"reportsFailed", 0},
                                    {"settingsPassedOver", 5}}));
}

TEST(PhoneWording, DeviceReportsASettingALine) {
    EXPECT_EQ("device desk-headset has\n"
              "  7 sidetone = on\n"
              "  32 bass = 7",
              phone_event_in_words({{"event", "device"},
                                    {"id", "desk-headset"},
                                    {"settings",
                                     {{{"usageId", 7}, {"name", "sidetone"}, {"value", "on"}},
                                      {{"usageId", 32}, {"name", "bass"}, {"value", "7"}}}}}));
}

TEST(PhoneWording, GoodResult) {
    EXPECT_EQ("done: 2 of 2 configured; 2 of 2 reports accepted",
              phone_event_in_words({{"event", "result"},
                                    {"ok", true},
                                    {"attached", 2},
                                    {"configured", 2},
                                    {"notConfigured", 0},
                                    {"reportsWanted", 2},
                                    {"reportsAccepted", 2},
                                    {"reportsFailed", 0}}));
}

TEST(PhoneWording, FailedResultCountsWhatFailedAndWhatWasNeverReached) {
    EXPECT_EQ("1 of 4 configured, 1 failed, 2 without a document; "
              "1 of 6 reports accepted, 2 failed, 3 without an answer\n"
              "failed: interrupted",
              phone_event_in_words({{"event", "result"},
                                    {"ok", false},
                                    {"attached", 4},
                                    {"configured", 1},
                                    {"notConfigured", 1},
                                    {"reportsWanted", 6},
                                    {"reportsAccepted", 1},
                                    {"reportsFailed", 2},
                                    {"reason", "interrupted"},
                                    {"reasons", {"interrupted"}}}));
}

TEST(PhoneWording, FailedResultHasALineForEachReason) {
    EXPECT_EQ("0 of 0 configured; no reports wanted\n"
              "failed: first\n"
              "failed: second\\x07",
              phone_event_in_words({{"event", "result"},
                                    {"ok", false},
                                    {"reason", "first"},
                                    {"reasons", {"first", "second\a"}}}));
}

TEST(PhoneWording, LogLineIsEscapedWithoutTheLineFeedAtItsEnd) {
    EXPECT_EQ("HeadsetConfigImpl: update_from_server:\\n<html>",
              phone_event_in_words({{"event", "log"},
                                    {"text", "HeadsetConfigImpl: update_from_server:\n<html>\n"}}));
    EXPECT_EQ("Accessory Info:\\n",
              phone_event_in_words({{"event", "log"}, {"text", "Accessory Info:\n\n"}}));
    EXPECT_EQ("plain", phone_event_in_words({{"event", "log"}, {"text", "plain"}}));
}

TEST(PhoneWording, Note) {
    EXPECT_EQ("no inventory URL: no reports are sent",
              phone_event_in_words(
                  {{"event", "note"}, {"text", "no inventory URL: no reports are sent"}}));
}

TEST(PhoneWording, ErrorIsItsMessage) {
    EXPECT_EQ("bench.json:3: member /phone: expected an object, found 1",
              phone_event_in_words(
                  {{"event", "error"},
                   {"message", "bench.json:3: member /phone: expected an object, found 1"}}));
}

TEST(PhoneWording, TextsOfAServerCannotWriteToTheTerminal) {
    EXPECT_EQ("set a\\x1b[2J: b\\x07 (usage id 32) = c\\x0d",
              phone_event_in_words({{"event", "setting"},
                                    {"id", "a\x1b[2J"},
                                    {"name", "b\a"},
                                    {"usageId", 32},
                                    {"value", "c\r"}}));
}

}  // namespace
}  // namespace headsetmgmt::program
