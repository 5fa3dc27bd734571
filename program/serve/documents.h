// SPDX-License-Identifier: Apache-2.0
// The folder of documents that a server serves.

#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace headsetmgmt::program {

/// Owner of a file descriptor.
class FileHandle {
public:
    explicit FileHandle(int descriptor = -1) : fd(descriptor) {}
    FileHandle(FileHandle&& other) noexcept : fd(other.release()) {}
    ~FileHandle();

    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;
    FileHandle& operator=(FileHandle&&) = delete;

    int get() const { return fd; }
    bool is_open() const { return fd >= 0; }
    /// Hands the descriptor over to the caller.
    int release();

private:
    int fd;
};

/// A document that is open for reading, or why it is not.
struct OpenedDocument {
    enum class Fault {
        missing,  ///< there is none for the client, as far as it can know
        path,     ///< the path is malformed
        server,   ///< the folder or the system
    };

    FileHandle file;
    std::uint64_t size = 0;        ///< when it was opened
    Fault fault = Fault::missing;  ///< when not open
    std::string reason;            ///< when not open, for people
};

/// Regular files of a folder, and below it. Any thread.
class Documents {
public:
    /// Throws std::system_error when the folder cannot be opened. It is opened again for each
    /// document: `folder` may be a symbolic link that is switched to another release meanwhile.
    explicit Documents(std::string folder);

    /// `target` is a request's, "/a.json" or "http://host/a.json": percent escapes are decoded, a
    /// query is ignored. Nothing outside the folder is opened: no "..", and no symbolic link but a
    /// relative one that stays inside.
    OpenedDocument open(const std::string& target) const;

private:
    std::string folder_path;
};

}  // namespace headsetmgmt::program
