// SPDX-License-Identifier: Apache-2.0
// A configuration driver that records its calls.

#include "support/fake_config_driver.h"

#include <stdexcept>

namespace headsetmgmt::test_support {

namespace {

using Lock = std::lock_guard<std::mutex>;

std::string quoted(const std::string& text) {
    return '"' + text + '"';
}

std::string name_of(RequestStatus status) {
    switch (status) {
    case REQUEST_DONE:
        return "REQUEST_DONE";
    case REQUEST_REFUSED:
        return "REQUEST_REFUSED";
    case REQUEST_PENDING:
        return "REQUEST_PENDING";
    }
    return std::to_string(static_cast<int>(status));
}

}  // namespace

std::vector<std::string> FakeConfigDriver::calls() const {
    const Lock lock(mutex);
    return recorded;
}

std::vector<std::string> FakeConfigDriver::take_calls() {
    std::vector<std::string> taken;
    const Lock lock(mutex);
    taken.swap(recorded);
    return taken;
}

bool FakeConfigDriver::apply_config_to_device(const std::string& accessory_id,
                                              const std::string& name, int usage_id,
                                              const std::string& value) const {
    record("apply_config_to_device(" + quoted(accessory_id) + ", " + quoted(name) + ", " +
           std::to_string(usage_id) + ", " + quoted(value) + ")");
    return answer();
}

bool FakeConfigDriver::check_legacy_upgrade(const std::string& accessory_id) const {
    record("check_legacy_upgrade(" + quoted(accessory_id) + ")");
    return answer();
}

bool FakeConfigDriver::request_upgrade(const std::string& accessory_id, const std::string& version,
                                       const std::string& firmware_name) const {
    record("request_upgrade(" + quoted(accessory_id) + ", " + quoted(version) + ", " +
           quoted(firmware_name) + ")");
    return answer();
}

void FakeConfigDriver::on_failure(const std::string& accessory_id,
                                  config::ConfigureResponse response) const {
    record("on_failure(" + quoted(accessory_id) + ", " + name_of(response.status) + ")");
}

void FakeConfigDriver::on_pending(const std::string& accessory_id,
                                  config::ConfigureResponse response) const {
    record("on_pending(" + quoted(accessory_id) + ", " + name_of(response.status) + ")");
}

void FakeConfigDriver::record(const std::string& call) const {
    {
        const Lock lock(mutex);
        recorded.push_back(call);
    }
    if (hook) {
        hook(call);
    }
    if (fault.is_now()) {
        throw std::runtime_error("fake config driver");
    }
}

bool FakeConfigDriver::answer() const {
    return failure.is_now() ? false : result;
}

}  // namespace headsetmgmt::test_support
