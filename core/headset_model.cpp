// SPDX-License-Identifier: Apache-2.0
// The marketed model of a headset, and whether the headset is the maker's.

#include <cstddef>
#include <string>

#include "headsetmgmt/constants.h"
#include "headsetmgmt/plugins.h"
#include "headsetmgmt/utilities.h"

using headsetmgmt::AccessoryInfoInterface;
namespace constants = headsetmgmt::constants;

std::string get_headset_model(const std::string& model, const std::string& serial) {
    constexpr std::size_t deciding_place = 7;
    if (model != constants::varos_k30 || serial.size() <= deciding_place) {
        return model;
    }
    return serial[deciding_place] == '4' ? constants::varos_k20 : constants::varos_k30;
}

std::string get_headset_model(AccessoryInfoInterface* accessory) {
    if (accessory == nullptr) {
        return {};
    }
    std::string model = accessory->get_model();
    if (model != constants::varos_k30) {
        return model;
    }
    return get_headset_model(
        model, accessory->get_serial_number(headsetmgmt::globals::plugins.system_info));
}

bool isVarosHeadset(AccessoryInfoInterface* accessory) {
    return accessory->is_varos_vid();
}
