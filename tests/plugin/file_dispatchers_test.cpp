// SPDX-License-Identifier: Apache-2.0
// The stand-alone readers of local files: results, documents and what goes to standard output.

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <sys/file.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "plugin/file_dispatchers.h"

using headsetmgmt::dispatcher::FileDispatcherImpl;
using headsetmgmt::dispatcher::TftpDispatcherImpl;

namespace fs = std::filesystem;

namespace {

void write_file(const fs::path& path, const std::string& content) {
    std::ofstream file(path, std::ios::binary);
    file << content;
    if (!file.flush()) {
        throw std::runtime_error("cannot write " + path.string());
    }
}

/// A temporary folder with sample documents, and a working directory four levels below it.
class SampleTree {
public:
    SampleTree() : before(fs::current_path()) {
        std::string name = (fs::temp_directory_path() / "headsetmgmt-samples-XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("cannot make a temporary folder");
        }
        root = name;
        fs::create_directories(root / "a" / "b" / "c" / "d");
        fs::create_directories(root / "sample-config");
        fs::current_path(root / "a" / "b" / "c" / "d");
    }
    ~SampleTree() {
        fs::current_path(before);
        fs::remove_all(root);
    }

    SampleTree(const SampleTree&) = delete;
    SampleTree& operator=(const SampleTree&) = delete;

    void add(const std::string& name, const std::string& content) const {
        write_file(root / "sample-config" / name, content);
    }

private:
    fs::path before;
    fs::path root;
};

/// The memory file system's folder, for one test at a time on the whole machine: a document that is
/// there is set aside for as long as this lives.
class MemoryFileSystem {
public:
    MemoryFileSystem()
        : lock(::open("/tmp/headsetmgmt-test.lock", O_CREAT | O_RDWR | O_CLOEXEC, 0666)) {
        if (lock == -1 || ::flock(lock, LOCK_EX) != 0) {
            throw std::runtime_error("cannot lock the memory file system");
        }
        folder_was_there = !fs::create_directories(folder);
        if (fs::exists(document)) {
            fs::rename(document, set_aside);
        }
    }
    ~MemoryFileSystem() {
        fs::remove(document);
        if (fs::exists(set_aside)) {
            fs::rename(set_aside, document);
        }
        if (!folder_was_there) {
            fs::remove(folder);
        }
        ::close(lock);
    }

    MemoryFileSystem(const MemoryFileSystem&) = delete;
    MemoryFileSystem& operator=(const MemoryFileSystem&) = delete;

    void put(const std::string& content) const { write_file(document, content); }

    /// An empty folder in the document's place.
    void put_folder() const { fs::create_directory(document); }

private:
    fs::path folder = "/tmp/ram";
    fs::path document = folder / "defaultheadsetconfig.json";
    fs::path set_aside = folder / "defaultheadsetconfig.json.set-aside-by-a-test";
    int lock;
    bool folder_was_there = false;
};

TEST(FileDispatcherImplTest, PushDoesNothingAndIsDone) {
    testing::internal::CaptureStdout();

    const int result = FileDispatcherImpl().push("http://server", "body");

    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(result, 0);
}

TEST(FileDispatcherImplTest, FileIsReadWhole) {
    const SampleTree tree;
    const std::string content = "{\n  \"updatedTime\": 1\n}\n";
    tree.add("sample.json", content);
    std::string document = "what was there before, and longer than the document that replaces it";

    testing::internal::CaptureStdout();
    const int result = FileDispatcherImpl().get("sample.json", document);

    EXPECT_EQ(testing::internal::GetCapturedStdout(), "FileDispatcher : Get from file \n");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(document, "{\n  \"updatedTime\": 1\n}\n");
}

TEST(FileDispatcherImplTest, LongFileWithEveryByteIsReadWhole) {
    const SampleTree tree;
    std::string content;
    for (int place = 0; place < 100001; ++place) {
        content.push_back(static_cast<char>(place % 256));
    }
    tree.add("long.json", content);
    std::string document;

    testing::internal::CaptureStdout();
    const int result = FileDispatcherImpl().get("long.json", document);
    testing::internal::GetCapturedStdout();

    EXPECT_EQ(result, 0);
    EXPECT_EQ(document, content);
}

TEST(FileDispatcherImplTest, FileIsClosedAgain) {
    const SampleTree tree;
    tree.add("sample.json", "{}");
    std::string document;
    const auto open_files = [] {
        return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
    };

    testing::internal::CaptureStdout();
    const auto before = open_files();
    FileDispatcherImpl().get("sample.json", document);
    const auto after = open_files();
    testing::internal::GetCapturedStdout();

    EXPECT_EQ(after, before);
}

TEST(FileDispatcherImplTest, EmptyFileEmptiesTheDocument) {
    const SampleTree tree;
    tree.add("empty.json", "");
    std::string document = "before";

    testing::internal::CaptureStdout();
    const int result = FileDispatcherImpl().get("empty.json", document);

    EXPECT_EQ(testing::internal::GetCapturedStdout(), "FileDispatcher : Get from file \n");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(document, "");
}

TEST(FileDispatcherImplTest, MissingFileIsReportedOnStandardOutputAndDone) {
    const SampleTree tree;
    std::string document = "kept";

    testing::internal::CaptureStdout();
    const int result = FileDispatcherImpl().get("missing.json", document);

    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "FileDispatcher : Get from file \nfile open error\n");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(document, "kept");
}

TEST(FileDispatcherImplTest, FolderInPlaceOfTheFileIsReportedAsMissing) {
    const SampleTree tree;
    std::string document = "kept";

    testing::internal::CaptureStdout();
    const int result = FileDispatcherImpl().get(".", document);

    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "FileDispatcher : Get from file \nfile open error\n");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(document, "kept");
}

TEST(TftpDispatcherImplTest, PushDoesNothingAndIsDone) {
    EXPECT_EQ(TftpDispatcherImpl().push("tftp://server", "body"), 0);
}

TEST(TftpDispatcherImplTest, FileIsReadWholeWhateverTheNameSays) {
    const MemoryFileSystem memory;
    memory.put("{\"updatedTime\": 2}\n");
    std::string document = "before";

    testing::internal::CaptureStdout();
    const int result = TftpDispatcherImpl().get("another-name.json", document);

    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(document, "{\"updatedTime\": 2}\n");
}

TEST(TftpDispatcherImplTest, MissingFileIsRefusedAndKeepsTheDocument) {
    const MemoryFileSystem memory;
    std::string document = "kept";

    testing::internal::CaptureStdout();
    const int result = TftpDispatcherImpl().get("defaultheadsetconfig.json", document);

    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(result, 1);
    EXPECT_EQ(document, "kept");
}

TEST(TftpDispatcherImplTest, FolderInTheFilesPlaceIsRefusedAndKeepsTheDocument) {
    const MemoryFileSystem memory;
    memory.put_folder();
    std::string document = "kept";

    testing::internal::CaptureStdout();
    const int result = TftpDispatcherImpl().get("defaultheadsetconfig.json", document);

    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(result, 1);
    EXPECT_EQ(document, "kept");
}

}  // namespace
