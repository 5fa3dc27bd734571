// SPDX-License-Identifier: Apache-2.0
// A dispatcher that records requests and answers what the test chose.

#pragma once

#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "headsetmgmt/dispatcher.h"
#include "headsetmgmt/types.h"

#include "support/nth_call.h"

namespace headsetmgmt::test_support {

/// One request as it came in.
struct DispatchedRequest {
    std::string operation;  ///< "push" or "get"
    dispatcher::RequestContext context;
};

/// Records each request before it answers. Any thread; the public members are set while nobody
/// asks.
class FakeDispatcher : public dispatcher::DispatcherInterface {
public:
    /// What a `get` is answered with.
    struct Answer {
        int status = REQUEST_PENDING;
        std::string document;  ///< handed over when the status is `REQUEST_DONE`
    };

    /// What every `get` is answered with that has no answer of its own.
    Answer answer;

    /// What every `push` is answered with.
    int push_status = REQUEST_DONE;

    /// Called inside each request, after it was recorded and without any lock.
    using Hook = std::function<void(const DispatchedRequest& request)>;
    Hook hook;

    /// Answers the next `get` that has no answer of its own yet.
    void answer_next_get(Answer next);

    /// Refuses the `n`th request from now, 1 being the next.
    void refuse_at(int n) { refusal.choose(n); }

    /// Throws `std::runtime_error` "fake dispatcher" from the `n`th request from now.
    void throw_at(int n) { fault.choose(n); }

    /// All requests so far, the refused and the throwing included.
    std::vector<DispatchedRequest> requests() const;

    int push(dispatcher::RequestContext* context) const override;

    /// Marks the context as outstanding, with response code -1, when the answer is
    /// `REQUEST_PENDING`.
    int get(dispatcher::RequestContext* context, std::string& document) const override;

private:
    bool record(const char* operation, const dispatcher::RequestContext& context) const;
    Answer next_answer() const;

    mutable std::mutex mutex;  // guards the requests and the answers
    mutable std::vector<DispatchedRequest> recorded;
    mutable std::deque<Answer> answers;
    mutable NthCall refusal;
    mutable NthCall fault;
};

}  // namespace headsetmgmt::test_support
