// SPDX-License-Identifier: Apache-2.0
// The facts of one attached accessory.

#pragma once

#include <string>

#include "headsetmgmt/types.h"

namespace headsetmgmt {

class SystemInfoInterface;

/// Describes one accessory: a headset with its dock or dongle, or a camera.
///
/// Implemented by the plug-in. The core stores a `clone` of each record that it receives, and
/// uses a clone on one thread at a time. Getters return an empty text for an unknown fact.
class AccessoryInfoInterface {
public:
    virtual ACCESSORY_TYPE get_type() const = 0;

    /// A new, independent copy, owned by the caller.
    virtual AccessoryInfoInterface* clone() const = 0;

    /// `system_info` is for records that take a missing fact from the phone. Borrowed; may be null.
    virtual std::string get_vendor(SystemInfoInterface* system_info) = 0;
    virtual std::string get_model() = 0;
    /// `system_info` as for `get_vendor`.
    virtual std::string get_serial_number(SystemInfoInterface* system_info) = 0;
    virtual std::string get_software_version() = 0;
    virtual std::string get_hardware_version() = 0;
    virtual std::string get_dock_serial_number() = 0;
    virtual std::string get_dock_model() = 0;
    virtual std::string get_dongle_serial_number() = 0;
    virtual std::string get_dongle_model() = 0;
    virtual std::string get_dongle_version() = 0;
    virtual std::string get_connection_type() = 0;
    virtual std::string get_connection_status() = 0;

    /// All facts, one per line, for the log.
    virtual std::string to_string() { return {}; }

    /// Whether everything that an inventory report needs is known.
    virtual bool data_ready() = 0;

    /// Whether everything that a configuration run needs is known.
    virtual bool firmware_data_ready() = 0;

    /// Whether the USB vendor id is the maker's own.
    virtual bool is_varos_vid() = 0;

    virtual void set_connection(const std::string& type, const std::string& status) = 0;

    /// Drops facts that were added after construction, if the record has any.
    virtual void reset() = 0;

    // Last among the virtual operations, where the binary interface has it.
    virtual ~AccessoryInfoInterface() = default;
};

}  // namespace headsetmgmt
