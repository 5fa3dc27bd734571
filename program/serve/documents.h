// The folder of documents that a server gives away.

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
    FileHandle file;
    std::uint64_t size = 0;  ///< when it was opened
    bool is_missing = true;  ///< when not open: there is none for the client, as
                             ///< far as it can know
    std::string reason;      ///< when not open, for people
};

/// Regular files of a folder, and below it. Any thread.
class Documents {
public:
    /// Throws std::system_error when the folder cannot be opened.
    explicit Documents(const std::string& folder);

    /// `target` is a request's: percent escapes are decoded, a query is ignored.
    /// Nothing outside the folder is opened: no "..", and no symbolic link but a
    /// relative one that stays inside.
    OpenedDocument open(const std::string& target) const;

private:
    FileHandle root;
};

}  // namespace headsetmgmt::program
