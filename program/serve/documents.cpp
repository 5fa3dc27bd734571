// SPDX-License-Identifier: Apache-2.0
// The folder of documents that a server serves.

#include "program/serve/documents.h"

#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <linux/openat2.h>
#include <optional>
#include <strings.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace headsetmgmt::program {

namespace {

std::optional<int> hex_digit(char character) {
    if (character >= '0' && character <= '9') {
        return character - '0';
    }
    if (character >= 'a' && character <= 'f') {
        return character - 'a' + 10;
    }
    if (character >= 'A' && character <= 'F') {
        return character - 'A' + 10;
    }
    return std::nullopt;
}

/// The text without percent escapes; nothing when an escape is cut off or has
/// other digits.
std::optional<std::string> decoded(const std::string& text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            result += text[i];
            continue;
        }
        if (i + 2 >= text.size()) {
            return std::nullopt;
        }
        const std::optional<int> high = hex_digit(text[i + 1]);
        const std::optional<int> low = hex_digit(text[i + 2]);
        if (!high || !low) {
            return std::nullopt;
        }
        result += static_cast<char>(*high * 16 + *low);
        i += 2;
    }
    return result;
}

bool climbs(const std::string& path) {
    return ("/" + path + "/").find("/../") != std::string::npos;
}

/// The kernel keeps the walk below `root`, whoever moves files and links
/// meanwhile.
int open_beneath(int root, const char* path, int flags) {
    open_how how = {};
    how.flags = static_cast<unsigned int>(flags);
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_MAGICLINKS;
    constexpr int attempts = 8;  // EAGAIN: something was renamed during the walk
    for (int attempt = 1;; ++attempt) {
        const long fd = syscall(SYS_openat2, root, path, &how, sizeof how);
        if (fd >= 0 || attempt == attempts || (errno != EAGAIN && errno != EINTR)) {
            return static_cast<int>(fd);
        }
    }
}

using Fault = OpenedDocument::Fault;

OpenedDocument not_opened(const std::string& reason, Fault fault = Fault::missing) {
    OpenedDocument document;
    document.fault = fault;
    document.reason = reason;
    return document;
}

OpenedDocument not_opened(int error) {
    switch (error) {
    case ENOENT:
    case ENOTDIR:
    case ENAMETOOLONG:
        return not_opened("no such document");
    case EXDEV:
        return not_opened("the path leads out of the documents folder");
    case ELOOP:
        return not_opened("the path has symbolic links that form a loop, or too many");
    case EACCES:
    case ENXIO:  // a socket
        return not_opened("the document cannot be read: " + std::generic_category().message(error));
    default:
        return not_opened("the document could not be opened: " +
                              std::generic_category().message(error),
                          Fault::server);
    }
}

FileHandle open_folder(const std::string& path) {
    return FileHandle(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

/// The part of a request's target that names the document, with its percent escapes.
std::string path_in(const std::string& target) {
    std::string path = target.substr(0, target.find('?'));
    constexpr const char* scheme = "http://";
    constexpr std::size_t scheme_length = 7;
    if (strncasecmp(path.c_str(), scheme, scheme_length) != 0) {
        return path;
    }
    const std::size_t start = path.find('/', scheme_length);
    return start == std::string::npos ? "/" : path.substr(start);
}

}  // namespace

FileHandle::~FileHandle() {
    if (is_open()) {
        close(fd);
    }
}

int FileHandle::release() {
    return std::exchange(fd, -1);
}

Documents::Documents(std::string folder) : folder_path(std::move(folder)) {
    const FileHandle root = open_folder(folder_path);
    if (!root.is_open()) {
        throw std::system_error(errno, std::generic_category());
    }
    // What every later request needs is tried once, so that a kernel that lacks it is reported
    // here.
    const FileHandle probe(open_beneath(root.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!probe.is_open()) {
        throw std::system_error(errno, std::generic_category());
    }
}

OpenedDocument Documents::open(const std::string& target) const {
    const std::optional<std::string> path = decoded(path_in(target));
    if (!path) {
        return not_opened("the path has a percent escape that is none");
    }
    if (path->find('\0') != std::string::npos) {
        return not_opened("the path has a NUL character", Fault::path);
    }
    if (path->empty() || path->front() != '/') {
        return not_opened("the path is none of a document");
    }
    if (*path == "/") {
        return not_opened("no document is named: put its name behind the /");
    }
    if (climbs(*path)) {
        return not_opened("the path leads out of the documents folder");
    }
    const FileHandle root = open_folder(folder_path);
    if (!root.is_open()) {
        return not_opened("the documents folder cannot be opened: " +
                              std::generic_category().message(errno),
                          Fault::server);
    }
    // Opening must not wait for the other end of a pipe.
    FileHandle file(open_beneath(root.get(), path->c_str() + 1, O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file.is_open()) {
        return not_opened(errno);
    }
    struct stat facts = {};
    if (fstat(file.get(), &facts) != 0) {
        return not_opened(errno);
    }
    if (S_ISDIR(facts.st_mode)) {
        return not_opened("it is a folder, not a document");
    }
    if (!S_ISREG(facts.st_mode)) {
        return not_opened("no regular file");
    }
    return {std::move(file), static_cast<std::uint64_t>(facts.st_size), {}, {}};
}

}  // namespace headsetmgmt::program
