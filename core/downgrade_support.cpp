// Which accessories may be moved to an older firmware. Alone in its file, so that a test program
// can answer in its place.

#include "headsetmgmt/utilities.h"

bool headset_support_downgrade(headsetmgmt::AccessoryInfoInterface* /*accessory*/) {
    return true;
}
