// SPDX-License-Identifier: Apache-2.0
// An accessory whose facts the test sets.

#pragma once

#include <atomic>
#include <memory>
#include <string>

#include "headsetmgmt/accessory_info.h"

#include "support/nth_call.h"

namespace headsetmgmt::test_support {

/// Answers its public members, which begin empty but for the type. A clone has the members that the
/// original has at that time; only what stands in `shared` is one for all clones.
class FakeAccessory : public AccessoryInfoInterface {
public:
    /// What the original and all its clones have in common, so that a test reaches those that the
    /// library keeps. Any thread.
    struct Shared {
        std::atomic<bool> data_ready = true;
        std::atomic<bool> firmware_data_ready = true;
        std::atomic<int> resets = 0;
        std::atomic<int> alive = 1;  ///< the original and its clones
        /// What the last question, to whichever of them, brought along.
        std::atomic<SystemInfoInterface*> last_asked_with = nullptr;
        NthCall clone_fault;
        NthCall vendor_fault;
    };

    explicit FakeAccessory(ACCESSORY_TYPE accessory_type = HEADSET) : type(accessory_type) {}
    ~FakeAccessory() override { --shared->alive; }
    FakeAccessory& operator=(const FakeAccessory&) = delete;

    ACCESSORY_TYPE type;
    std::string vendor;
    std::string model;
    std::string serial_number;
    std::string software_version;
    std::string hardware_version;
    std::string dock_serial_number;
    std::string dock_model;
    std::string dongle_serial_number;
    std::string dongle_model;
    std::string dongle_version;
    std::string connection_type;
    std::string connection_status;
    std::string text;  ///< what `to_string` answers
    bool varos_vid = true;
    SystemInfoInterface* asked_with = nullptr;  ///< what the last question brought along

    const std::shared_ptr<Shared> shared = std::make_shared<Shared>();

    /// Throws `std::runtime_error` "fake accessory" from the `n`th clone from now, 1 being the
    /// next, of this accessory or of any of its clones.
    void throw_at_clone(int n) { shared->clone_fault.choose(n); }

    /// The same from the `n`th question for the vendor.
    void throw_at_vendor(int n) { shared->vendor_fault.choose(n); }

    ACCESSORY_TYPE get_type() const override { return type; }
    AccessoryInfoInterface* clone() const override;

    std::string get_vendor(SystemInfoInterface* system_info) override;
    std::string get_model() override { return model; }
    std::string get_serial_number(SystemInfoInterface* system_info) override;
    std::string get_software_version() override { return software_version; }
    std::string get_hardware_version() override { return hardware_version; }
    std::string get_dock_serial_number() override { return dock_serial_number; }
    std::string get_dock_model() override { return dock_model; }
    std::string get_dongle_serial_number() override { return dongle_serial_number; }
    std::string get_dongle_model() override { return dongle_model; }
    std::string get_dongle_version() override { return dongle_version; }
    std::string get_connection_type() override { return connection_type; }
    std::string get_connection_status() override { return connection_status; }
    std::string to_string() override { return text; }
    bool data_ready() override { return shared->data_ready; }
    bool firmware_data_ready() override { return shared->firmware_data_ready; }
    bool is_varos_vid() override { return varos_vid; }
    void set_connection(const std::string& type_of_link, const std::string& status) override;
    void reset() override { ++shared->resets; }

protected:
    FakeAccessory(const FakeAccessory& other);
};

}  // namespace headsetmgmt::test_support
