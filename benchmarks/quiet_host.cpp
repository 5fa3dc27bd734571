// The host functions of programs that measure the library at rest: they do nothing, but that the
// number of settings and requests is kept.

#include "benchmarks/quiet_host.h"

#include "headsetmgmt/phone/host_functions.h"

namespace headsetmgmt::benchmarks {

std::atomic<int> settings_applied{0};
std::atomic<int> documents_requested{0};

}  // namespace headsetmgmt::benchmarks

using headsetmgmt::benchmarks::documents_requested;
using headsetmgmt::benchmarks::settings_applied;

bool httpRequest(HttpRequestType type, const char* /*url*/, const char* /*body*/) {
    documents_requested += type == HTTP_REQUEST_GET ? 1 : 0;
    return true;
}

bool apply_changes(const char* /*device_id*/, const char* /*name*/, int /*usage_id*/,
                   const char* /*value*/) {
    ++settings_applied;
    return true;
}

bool request_firmware_upgrade(const char* /*device_id*/, const char* /*version*/,
                              const char* /*firmware_name*/) {
    return true;
}

bool check_firmware_upgrade(const char* /*device_id*/) {
    return true;
}

const char* get_host_serial_num() {
    return "";
}

const char* get_host_os_ver() {
    return "";
}

const char* get_orvik_ver() {
    return "";
}
