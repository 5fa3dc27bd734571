// SPDX-License-Identifier: Apache-2.0
// A dispatcher that records requests and answers what the test chose.

#include "support/fake_dispatcher.h"

#include <stdexcept>
#include <utility>

namespace headsetmgmt::test_support {

namespace {

using Lock = std::lock_guard<std::mutex>;

}  // namespace

void FakeDispatcher::answer_next_get(Answer next) {
    const Lock lock(mutex);
    answers.push_back(std::move(next));
}

std::vector<DispatchedRequest> FakeDispatcher::requests() const {
    const Lock lock(mutex);
    return recorded;
}

int FakeDispatcher::push(dispatcher::RequestContext* context) const {
    if (!record("push", *context)) {
        return REQUEST_REFUSED;
    }
    return push_status;
}

int FakeDispatcher::get(dispatcher::RequestContext* context, std::string& document) const {
    if (!record("get", *context)) {
        return REQUEST_REFUSED;
    }
    const Answer given = next_answer();
    if (given.status == REQUEST_DONE) {
        document = given.document;
    } else if (given.status == REQUEST_PENDING) {
        context->response_code = -1;
    }
    return given.status;
}

/// False when this request is the one to refuse.
bool FakeDispatcher::record(const char* operation,
                            const dispatcher::RequestContext& context) const {
    const DispatchedRequest request{operation, context};
    {
        const Lock lock(mutex);
        recorded.push_back(request);
    }
    if (hook) {
        hook(request);
    }
    if (fault.is_now()) {
        throw std::runtime_error("fake dispatcher");
    }
    return !refusal.is_now();
}

FakeDispatcher::Answer FakeDispatcher::next_answer() const {
    const Lock lock(mutex);
    if (answers.empty()) {
        return answer;
    }
    Answer next = answers.front();
    answers.pop_front();
    return next;
}

}  // namespace headsetmgmt::test_support
