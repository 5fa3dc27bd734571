// SPDX-License-Identifier: Apache-2.0
// A client for tests of the server, the documents that it serves, and its events.

#pragma once

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <mutex>
#include <netinet/in.h>
#include <optional>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

#include <curl/curl.h>
#include <gtest/gtest.h>

#include "program/output.h"

namespace headsetmgmt::program {

namespace fs = std::filesystem;

struct TemporaryFolder {
    fs::path path;

    TemporaryFolder() {
        std::string pattern = (fs::temp_directory_path() / "serve_test_XXXXXX").string();
        path = mkdtemp(pattern.data());
    }
    ~TemporaryFolder() { fs::remove_all(path); }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    void write(const std::string& name, const std::string& text) const {
        fs::create_directories((path / name).parent_path());
        std::ofstream(path / name) << text;
    }
};

/// What a server seen. Any thread.
class SeenEvents {
public:
    void add(const Event& event) {
        const std::lock_guard<std::mutex> lock(events_mutex);
        events.push_back(event);
        more.notify_all();
    }

    /// Waits for the event of this kind; an empty object when it does not come.
    Event wait_for(const std::string& kind) {
        std::unique_lock<std::mutex> lock(events_mutex);
        Event found = Event::object();
        more.wait_for(lock, std::chrono::seconds(60), [&] {
            for (const Event& event : events) {
                if (event["event"] == kind) {
                    found = event;
                    return true;
                }
            }
            return false;
        });
        return found;
    }

    std::vector<Event> all() {
        const std::lock_guard<std::mutex> lock(events_mutex);
        return events;
    }

    std::vector<std::string> kinds() {
        std::vector<std::string> result;
        for (const Event& event : all()) {
            result.push_back(event["event"]);
        }
        return result;
    }

private:
    std::mutex events_mutex;
    std::condition_variable more;
    std::vector<Event> events;
};

struct Answer {
    CURLcode how = CURLE_OK;
    long status = 0;
    std::string head;
    std::string body;
};

inline std::size_t append(char* bytes, std::size_t size, std::size_t count, void* text) {
    static_cast<std::string*>(text)->append(bytes, size * count);
    return size * count;
}

/// Asks for `url`, with the method and the body, which is JSON unless `header` names another type.
inline Answer ask(const std::string& url, const std::string& method = "GET",
                  const std::optional<std::string>& body = std::nullopt,
                  const char* header = nullptr) {
    const std::unique_ptr<CURL, void (*)(CURL*)> curl(curl_easy_init(), curl_easy_cleanup);
    Answer answer;
    curl_easy_setopt(curl.get(), CURLOPT_URL, url.c_str());
    curl_easy_setopt(curl.get(), CURLOPT_PATH_AS_IS, 1L);
    curl_easy_setopt(curl.get(), CURLOPT_TIMEOUT, 60L);
    curl_easy_setopt(curl.get(), CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl.get(), CURLOPT_PROXY, "");
    if (body) {
        curl_easy_setopt(curl.get(), CURLOPT_POSTFIELDSIZE_LARGE,
                         static_cast<curl_off_t>(body->size()));
        curl_easy_setopt(curl.get(), CURLOPT_POSTFIELDS, body->data());
    }
    if (method == "HEAD") {
        curl_easy_setopt(curl.get(), CURLOPT_NOBODY, 1L);
    } else {
        curl_easy_setopt(curl.get(), CURLOPT_CUSTOMREQUEST, method.c_str());
    }
    curl_slist* fields = nullptr;
    if (header == nullptr || std::string(header).rfind("Content-Type", 0) != 0) {
        fields = curl_slist_append(fields, "Content-Type: application/json");
    }
    if (header != nullptr) {
        fields = curl_slist_append(fields, header);
    }
    const std::unique_ptr<curl_slist, void (*)(curl_slist*)> headers(fields, curl_slist_free_all);
    curl_easy_setopt(curl.get(), CURLOPT_HTTPHEADER, headers.get());
    curl_easy_setopt(curl.get(), CURLOPT_WRITEFUNCTION, append);
    curl_easy_setopt(curl.get(), CURLOPT_WRITEDATA, &answer.body);
    curl_easy_setopt(curl.get(), CURLOPT_HEADERFUNCTION, append);
    curl_easy_setopt(curl.get(), CURLOPT_HEADERDATA, &answer.head);
    answer.how = curl_easy_perform(curl.get());
    curl_easy_getinfo(curl.get(), CURLINFO_RESPONSE_CODE, &answer.status);
    return answer;
}

/// A connection to the server on 127.0.0.1 on which `text` was sent; closed at its end.
class RawClient {
public:
    /// `buffer` bytes wait at most to be read; 0: as many as the system likes.
    RawClient(std::uint16_t port, const std::string& text, int buffer = 0)
        : fd(socket(AF_INET, SOCK_STREAM, 0)) {
        if (buffer != 0) {
            EXPECT_EQ(setsockopt(fd, SOL_SOCKET, SO_RCVBUF, &buffer, sizeof buffer), 0);
        }
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(send(fd, text.data(), text.size(), MSG_NOSIGNAL),
                  static_cast<ssize_t>(text.size()));
    }
    ~RawClient() { close(fd); }
    RawClient(const RawClient&) = delete;
    RawClient& operator=(const RawClient&) = delete;

    /// The answer, to the end of the connection.
    std::string read_all() const {
        std::string text;
        for (std::string more = read_some(); !more.empty(); more = read_some()) {
            text += more;
        }
        return text;
    }

    /// Nothing is said about whether the server has closed meanwhile.
    void send_more(const std::string& text) const {
        static_cast<void>(send(fd, text.data(), text.size(), MSG_NOSIGNAL));
    }

    /// Waits for the server to close or to answer, for so long.
    bool is_closed_within(std::chrono::milliseconds time) const {
        pollfd end = {fd, POLLIN | POLLRDHUP, 0};
        return poll(&end, 1, static_cast<int>(time.count())) == 1;
    }

    /// At least one byte of the answer; empty when the server closes.
    std::string read_some() const {
        std::array<char, 4096> bytes = {};
        const ssize_t count = recv(fd, bytes.data(), bytes.size(), 0);
        return {bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
    }

private:
    int fd;
};

}  // namespace headsetmgmt::program
