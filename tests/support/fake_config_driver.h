// SPDX-License-Identifier: Apache-2.0
// A configuration driver that records its calls.

#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "headsetmgmt/host_config_driver.h"

#include "support/nth_call.h"

namespace headsetmgmt::test_support {

/// Records each call as a readable text, arguments in their order, texts in quotes:
///
///     apply_config_to_device("7", "Sidetone", 34, "2")
///     check_legacy_upgrade("7")
///     request_upgrade("7", "2-1-0", "k30.bin")
///     on_failure("7", REQUEST_REFUSED)
///     on_pending("", REQUEST_PENDING)
///
/// Any thread; the public members are set while nobody calls.
class FakeConfigDriver : public config::HostConfigDriverInterface {
public:
    /// What every operation with a result answers.
    bool result = true;

    /// Called inside each call with its text, after it was recorded and without any lock.
    using Hook = std::function<void(const std::string& call)>;
    Hook hook;

    /// Answers false to the `n`th call with a result from now, 1 being the next.
    void fail_at(int n) { failure.choose(n); }

    /// Throws `std::runtime_error` "fake config driver" from the `n`th call from now.
    void throw_at(int n) { fault.choose(n); }

    /// All calls so far.
    std::vector<std::string> calls() const;

    /// All calls so far, and forgets them.
    std::vector<std::string> take_calls();

    bool apply_config_to_device(const std::string& accessory_id, const std::string& name,
                                int usage_id, const std::string& value) const override;
    bool check_legacy_upgrade(const std::string& accessory_id) const override;
    bool request_upgrade(const std::string& accessory_id, const std::string& version,
                         const std::string& firmware_name) const override;
    void on_failure(const std::string& accessory_id,
                    config::ConfigureResponse response) const override;
    void on_pending(const std::string& accessory_id,
                    config::ConfigureResponse response) const override;

private:
    void record(const std::string& call) const;
    bool answer() const;

    mutable std::mutex mutex;  // guards the calls
    mutable std::vector<std::string> recorded;
    mutable NthCall failure;
    mutable NthCall fault;
};

}  // namespace headsetmgmt::test_support
