// SPDX-License-Identifier: Apache-2.0
// A phone host in one file: it loads the library, attaches two headsets, does the library's HTTP
// with libcurl, plays the devices, and reports what happens.
//
// Usage: minimal-host CONFIG-URL INVENTORY-URL
// Standard output has the story, standard error carries the library's log.

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include <curl/curl.h>

#include "headsetmgmt/phone/flat_interface.h"
#include "headsetmgmt/phone/host_functions.h"

namespace {

// --- What the phone knows. The library calls from several threads, so all of it has one lock. ---

struct Request {
    HttpRequestType type;
    std::string url;
    std::string body;
};

std::mutex phone_mutex;
std::condition_variable phone_changed;
std::deque<Request> requests;  // the oldest is at the front
bool hanging_up = false;
bool configured = false, reported = false;  // the accessory that was attached last

// --- The network: a thread that carries out one request after the other. ---

std::size_t keep_answer(char* bytes, std::size_t size, std::size_t count, void* answer) {
    static_cast<std::string*>(answer)->append(bytes, size * count);
    return size * count;
}

/// The status of the answer; 0 when there is none: nobody there, a time-out, too large.
long perform(const Request& request, std::string& answer) {
    const std::unique_ptr<CURL, void (*)(CURL*)> curl(curl_easy_init(), curl_easy_cleanup);
    const std::unique_ptr<curl_slist, void (*)(curl_slist*)> json(
        curl_slist_append(nullptr, "Content-Type: application/json"), curl_slist_free_all);
    curl_easy_setopt(curl.get(), CURLOPT_URL, request.url.c_str());
    curl_easy_setopt(curl.get(), CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(curl.get(), CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl.get(), CURLOPT_TIMEOUT, 10L);
    curl_easy_setopt(curl.get(), CURLOPT_MAXFILESIZE, 4L * 1024 * 1024);
    curl_easy_setopt(curl.get(), CURLOPT_WRITEFUNCTION, keep_answer);
    curl_easy_setopt(curl.get(), CURLOPT_WRITEDATA, &answer);
    if (request.type == HTTP_REQUEST_POST) {
        curl_easy_setopt(curl.get(), CURLOPT_POSTFIELDS, request.body.c_str());
        curl_easy_setopt(curl.get(), CURLOPT_HTTPHEADER, json.get());
    }
    long status = 0;
    if (curl_easy_perform(curl.get()) == CURLE_OK) {
        curl_easy_getinfo(curl.get(), CURLINFO_RESPONSE_CODE, &status);
    }
    return status;
}

/// The answer to a fetch goes to the library, whatever it is; the answer to a report stays here.
void carry_out_requests() {
    std::unique_lock lock(phone_mutex);
    while (true) {
        phone_changed.wait(lock, [] { return hanging_up || !requests.empty(); });
        if (hanging_up) {
            return;
        }
        const Request request = requests.front();
        requests.pop_front();
        lock.unlock();  // the library calls apply_changes and the like from inside httpResponse

        std::string answer;
        const long status = perform(request, answer);
        const bool fetch = request.type == HTTP_REQUEST_GET;
        std::printf("  %s %s: status %ld\n", fetch ? "GET" : "POST", request.url.c_str(), status);
        if (fetch && status != 200) {
            // The library asks again at once when this is reported: a pause, or the server is
            // flooded.
            lock.lock();
            phone_changed.wait_for(lock, std::chrono::seconds(1), [] { return hanging_up; });
            lock.unlock();
        }
        if (fetch) {
            // Requests of one URL would be joined here if accessories were removed and came back.
            httpResponse(answer.c_str(), static_cast<int>(status));
        }

        lock.lock();
        (fetch ? configured : reported) |= fetch ? status == 200 : status / 100 == 2;
        phone_changed.notify_all();
    }
}

// --- The user: plugs an accessory in. ---

bool wait_until(const bool& happened) {
    std::unique_lock lock(phone_mutex);
    return phone_changed.wait_for(lock, std::chrono::seconds(15), [&] { return happened; });
}

/// Has an accessory configured, then reported; whether both happened.
bool attach(const AccessoryCache& facts) {
    std::printf("attach %s\n", facts.device_id.c_str());
    {
        const std::unique_lock lock(phone_mutex);  // never held while the library is called
        configured = reported = false;
    }
    const auto accessory = std::make_shared<AccessoryCache>(facts);
    if (!configure_headset(accessory) || !wait_until(configured)) {
        return false;
    }
    send_inventory(accessory);
    return wait_until(reported);
}

void on_log_line(int /*level*/, const char* text) {
    std::fprintf(stderr, "log: %s\n", text);
}

}  // namespace

// --- What the library asks of its host: requests, the devices, facts. ---

bool httpRequest(HttpRequestType type, const char* url, const char* body) {
    const std::unique_lock lock(phone_mutex);
    requests.push_back({type, url, body != nullptr ? body : ""});
    phone_changed.notify_all();
    return true;
}

bool apply_changes(const char* device_id, const char* name, int usage_id, const char* value) {
    std::printf("  set %s: %s (%d) = %s\n", device_id, name, usage_id, value);
    return true;
}

bool request_firmware_upgrade(const char* device_id, const char* version,
                              const char* firmware_name) {
    std::printf("  upgrade %s to %s with %s\n", device_id, version, firmware_name);
    return true;
}

bool check_firmware_upgrade(const char* /*device_id*/) {
    return true;
}
const char* get_host_serial_num() {
    return "PH0012345";
}
const char* get_host_os_ver() {
    return "5.10.4";
}
const char* get_orvik_ver() {
    return "14-2-1";
}

int main(int argc, char* argv[]) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: minimal-host CONFIG-URL INVENTORY-URL\n");
        return 2;
    }
    curl_global_init(CURL_GLOBAL_DEFAULT);
    std::thread network(carry_out_requests);

    AccessoryCache headset;
    headset.accessory_type = headsetmgmt::HEADSET;
    headset.vendor_id = 0xF055;
    headset.vendor = "Varos";
    headset.model = "Varos K30";
    headset.connection_type = "USB";
    headset.connection_status = "connected";

    AccessoryCache docked = headset;
    docked.device_id = "desk-headset";
    docked.serial_number = "ABCDEFG4123";  // the 4 makes it a K20
    docked.software_version = "2-0-4";
    docked.dock_serial_number = "DK7781";
    docked.dock_model = "Varos Dock 3";

    AccessoryCache wireless = headset;
    wireless.device_id = "wireless-headset";
    wireless.serial_number = "HIJKLMN7456";
    wireless.software_version = "2-1-0";
    wireless.dongle_model = "Varos Link";
    wireless.dongle_version = "1-3-0";

    const char* no_servers[] = {"", "", ""};
    const bool good =
        create_headset_mgmt(on_log_line) && start_headset_mgmt("TRM", "14-2-1", "./") &&
        setHeadsetConfigUrl(argv[1], argv[2], "", no_servers, no_servers, "user-17") &&
        attach(docked) && attach(wireless) && remove_peripheral("desk-headset") &&
        remove_peripheral("wireless-headset");
    stop_headset_mgmt();
    std::unique_lock lock(phone_mutex);
    hanging_up = true;
    phone_changed.notify_all();
    lock.unlock();
    network.join();
    curl_global_cleanup();
    std::printf(good ? "both headsets are configured and reported\n" : "something is missing\n");
    return good ? 0 : 1;
}
