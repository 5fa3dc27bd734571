// SPDX-License-Identifier: Apache-2.0
// Which accessories may get an older firmware. The only function of its file, so that a test
// program can replace it.

#include "headsetmgmt/utilities.h"

bool headset_support_downgrade(headsetmgmt::AccessoryInfoInterface* /*accessory*/) {
    return true;
}
