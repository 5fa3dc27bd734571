// SPDX-License-Identifier: Apache-2.0
// Requests through the host: which are handed over, which refused, and what happens to the record.

#include <optional>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "plugin/http_dispatcher_impl.h"
#include "support/fake_host.h"

using headsetmgmt::dispatcher::HttpDispatcherImpl;
using headsetmgmt::dispatcher::RequestContext;
using headsetmgmt::test_support::FakeHost;
using headsetmgmt::test_support::fresh_fake_host;
using headsetmgmt::test_support::HostBehaviour;
using headsetmgmt::test_support::HttpRequestCall;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

RequestContext post_request() {
    RequestContext context;
    context.url = "http://inventory/post";
    context.method = "POST";
    context.requester = "INVENTORY";
    context.body = "{\"headsetInventory\":{}}";
    return context;
}

TEST(RequestContextTest, FieldsAreEmptyAtFirst) {
    const RequestContext context;

    EXPECT_EQ(context.url, "");
    EXPECT_EQ(context.method, "");
    EXPECT_EQ(context.requester, "");
    EXPECT_EQ(context.body, "");
    EXPECT_EQ(context.response_code, 0);
    EXPECT_EQ(context.extra, "");
}

TEST(HttpDispatcherImplTest, PostIsHandedToTheHostAndDone) {
    const FakeHost& host = fresh_fake_host();
    const HttpDispatcherImpl dispatcher;
    RequestContext context = post_request();

    EXPECT_EQ(dispatcher.push(&context), 0);

    EXPECT_THAT(host.http_requests(),
                ElementsAre(HttpRequestCall{HTTP_REQUEST_POST, "http://inventory/post",
                                            "{\"headsetInventory\":{}}"}));
}

TEST(HttpDispatcherImplTest, PostLeavesItsRecordAsItWas) {
    fresh_fake_host();
    const HttpDispatcherImpl dispatcher;
    RequestContext context = post_request();

    dispatcher.push(&context);

    EXPECT_EQ(context.url, "http://inventory/post");
    EXPECT_EQ(context.method, "POST");
    EXPECT_EQ(context.requester, "INVENTORY");
    EXPECT_EQ(context.body, "{\"headsetInventory\":{}}");
    EXPECT_EQ(context.response_code, 0);
    EXPECT_EQ(context.extra, "");
}

TEST(HttpDispatcherImplTest, PostIsDoneAlsoWhenTheHostRejectsIt) {
    FakeHost& host = fresh_fake_host();
    HostBehaviour behaviour;
    behaviour.http_request_answer = false;
    host.behave(behaviour);
    const HttpDispatcherImpl dispatcher;
    RequestContext context = post_request();

    EXPECT_EQ(dispatcher.push(&context), 0);
}

TEST(HttpDispatcherImplTest, PostWithMethodInLowerCaseIsRefused) {
    const FakeHost& host = fresh_fake_host();
    const HttpDispatcherImpl dispatcher;
    RequestContext context = post_request();
    context.method = "post";

    EXPECT_EQ(dispatcher.push(&context), 1);

    EXPECT_THAT(host.http_requests(), IsEmpty());
}

TEST(HttpDispatcherImplTest, PostWithMethodGetIsRefused) {
    const FakeHost& host = fresh_fake_host();
    const HttpDispatcherImpl dispatcher;
    RequestContext context = post_request();
    context.method = "GET";

    EXPECT_EQ(dispatcher.push(&context), 1);

    EXPECT_THAT(host.http_requests(), IsEmpty());
}

TEST(HttpDispatcherImplTest, PostWithoutMethodIsRefused) {
    const FakeHost& host = fresh_fake_host();
    const HttpDispatcherImpl dispatcher;
    RequestContext context = post_request();
    context.method.clear();

    EXPECT_EQ(dispatcher.push(&context), 1);

    EXPECT_THAT(host.http_requests(), IsEmpty());
}

TEST(HttpDispatcherImplTest, PostWithoutUrlIsRefused) {
    const FakeHost& host = fresh_fake_host();
    const HttpDispatcherImpl dispatcher;
    RequestContext context = post_request();
    context.url.clear();

    EXPECT_EQ(dispatcher.push(&context), 1);

    EXPECT_THAT(host.http_requests(), IsEmpty());
}

TEST(HttpDispatcherImplTest, PostWithoutBodyIsRefused) {
    const FakeHost& host = fresh_fake_host();
    const HttpDispatcherImpl dispatcher;
    RequestContext context = post_request();
    context.body.clear();

    EXPECT_EQ(dispatcher.push(&context), 1);

    EXPECT_THAT(host.http_requests(), IsEmpty());
}

TEST(HttpDispatcherImplTest, FetchIsHandedToTheHostAndPending) {
    const FakeHost& host = fresh_fake_host();
    const HttpDispatcherImpl dispatcher;
    RequestContext context;
    context.url = "http://server/defaultheadsetconfig.json";
    context.requester = "CONFIGMGR";
    std::string document;

    EXPECT_EQ(dispatcher.get(&context, document), 2);

    EXPECT_THAT(host.http_requests(),
                ElementsAre(HttpRequestCall{
                    HTTP_REQUEST_GET, "http://server/defaultheadsetconfig.json", std::nullopt}));
    EXPECT_EQ(context.method, "GET");
    EXPECT_EQ(context.response_code, -1);
    EXPECT_EQ(context.requester, "CONFIGMGR");
    EXPECT_EQ(document, "");
}

TEST(HttpDispatcherImplTest, FetchCarriesNoBodyEvenIfTheRecordHasOne) {
    const FakeHost& host = fresh_fake_host();
    const HttpDispatcherImpl dispatcher;
    RequestContext context = post_request();
    std::string document;

    EXPECT_EQ(dispatcher.get(&context, document), 2);

    EXPECT_THAT(
        host.http_requests(),
        ElementsAre(HttpRequestCall{HTTP_REQUEST_GET, "http://inventory/post", std::nullopt}));
    EXPECT_EQ(context.method, "GET");
}

TEST(HttpDispatcherImplTest, FetchNeverTouchesTheDocument) {
    fresh_fake_host();
    const HttpDispatcherImpl dispatcher;
    RequestContext context;
    context.url = "http://server/x";
    std::string document = "kept";

    dispatcher.get(&context, document);

    EXPECT_EQ(document, "kept");
}

TEST(HttpDispatcherImplTest, FetchIsPendingAlsoWhenTheHostRejectsIt) {
    FakeHost& host = fresh_fake_host();
    HostBehaviour behaviour;
    behaviour.http_request_answer = false;
    host.behave(behaviour);
    const HttpDispatcherImpl dispatcher;
    RequestContext context;
    context.url = "http://server/x";
    std::string document;

    EXPECT_EQ(dispatcher.get(&context, document), 2);
}

TEST(HttpDispatcherImplTest, FetchMarksItsRecordBeforeTheHostIsAsked) {
    FakeHost& host = fresh_fake_host();
    const HttpDispatcherImpl dispatcher;
    RequestContext context;
    context.url = "http://server/x";
    std::string seen;
    HostBehaviour behaviour;
    behaviour.on_http_request = [&](const HttpRequestCall&) {
        seen = context.method + " " + std::to_string(context.response_code);
    };
    host.behave(behaviour);
    std::string document;

    dispatcher.get(&context, document);

    EXPECT_EQ(seen, "GET -1");
}

TEST(HttpDispatcherImplTest, FetchWithoutUrlIsRefusedAndChangesNothing) {
    const FakeHost& host = fresh_fake_host();
    const HttpDispatcherImpl dispatcher;
    RequestContext context;
    context.method = "POST";
    std::string document = "kept";

    EXPECT_EQ(dispatcher.get(&context, document), 1);

    EXPECT_THAT(host.http_requests(), IsEmpty());
    EXPECT_EQ(context.method, "POST");
    EXPECT_EQ(context.response_code, 0);
    EXPECT_EQ(document, "kept");
}

}  // namespace
