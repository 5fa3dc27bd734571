// SPDX-License-Identifier: Apache-2.0
// The host functions of the programs that measure.

#include "benchmarks/host.h"

#include "headsetmgmt/phone/host_functions.h"

#include "benchmarks/processor_time.h"

namespace headsetmgmt::benchmarks {

namespace {

std::size_t watched_call = 0;  // of `apply_changes`
std::size_t lines_at_watch = 0;
ApplyCall watched;

}  // namespace

Counts host_counts;
std::function<void()> on_fetch;
std::function<void(const char*)> on_post;

void count_line(int /*level*/, const char* /*text*/) {
    ++host_counts.lines;
}

void watch_apply(std::size_t n) {
    watched_call = host_counts.applied + n;
    lines_at_watch = host_counts.lines;
}

ApplyCall watched_apply() {
    return watched;
}

}  // namespace headsetmgmt::benchmarks

namespace host = headsetmgmt::benchmarks;

bool httpRequest(HttpRequestType type, const char* /*url*/, const char* body) {
    if (type == HTTP_REQUEST_POST) {
        ++host::host_counts.posts;
        if (host::on_post) {
            host::on_post(body);
        }
        return true;
    }
    ++host::host_counts.fetches;
    if (host::on_fetch) {
        host::on_fetch();
    }
    return true;
}

bool apply_changes(const char* /*device_id*/, const char* /*name*/, int /*usage_id*/,
                   const char* /*value*/) {
    if (++host::host_counts.applied == host::watched_call) {
        host::watched = {host::processor_seconds(), host::host_counts.lines - host::lines_at_watch};
    }
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
    return "PHONE-SERIAL";
}

const char* get_host_os_ver() {
    return "os-1";
}

const char* get_orvik_ver() {
    return "orvik-1";
}
