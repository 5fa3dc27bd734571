// SPDX-License-Identifier: Apache-2.0
// Links the static core and uses what the shared library keeps to itself.

#include <cstdio>

#include "headsetmgmt/executor.h"
#include "headsetmgmt/plugins.h"
#include "headsetmgmt/utilities.h"

int main() {
    headsetmgmt::task_forwarder(nullptr, nullptr);
    std::printf("%s\n", get_headset_model("Varos K30", "ABCDEFG4").c_str());
    std::printf("%d\n", headsetmgmt::globals::plugins.is_valid() ? 1 : 0);
    return 0;
}
