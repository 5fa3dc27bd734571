// SPDX-License-Identifier: Apache-2.0
// A phone whose facts the test sets.

#include "support/fake_system_info.h"

#include <stdexcept>

namespace headsetmgmt::test_support {

std::string FakeSystemInfo::get_korm_server(unsigned int index) {
    return answer(index < korm_servers.size() ? korm_servers[index] : std::string());
}

std::string FakeSystemInfo::get_tftp_server(unsigned int index) {
    return answer(index < tftp_servers.size() ? tftp_servers[index] : std::string());
}

void FakeSystemInfo::fail_if_chosen() {
    if (fault.is_now()) {
        throw std::runtime_error("fake system info");
    }
}

}  // namespace headsetmgmt::test_support
