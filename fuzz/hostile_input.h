// SPDX-License-Identifier: Apache-2.0
// The arguments of flat calls, read from the bytes of a fuzz input: usual ones, null and hostile
// ones.

#pragma once

#include <memory>
#include <optional>
#include <string>

#include "headsetmgmt/phone/host_types.h"

#include "fuzz/input.h"

namespace headsetmgmt::fuzz {

/// A text for a parameter that may be null.
struct Text {
    std::optional<std::string> bytes;

    const char* get() const { return bytes ? bytes->c_str() : nullptr; }

    /// As the library takes it: up to its first NUL, empty for null.
    std::string value() const { return bytes ? std::string(bytes->c_str()) : std::string(); }
};

/// An input that chooses arguments.
class HostileInput : public Input {
public:
    using Input::Input;

    Text some_text();
    Text some_id();
    Text some_url();
    Text some_document();
    int some_status();
    CONFIG_SETTING_USAGE_ID some_usage_id();

    /// May be null.
    std::shared_ptr<AccessoryCache> some_accessory();

private:
    void change_at_will(AccessoryCache& accessory);
};

}  // namespace headsetmgmt::fuzz
