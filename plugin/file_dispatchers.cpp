// SPDX-License-Identifier: Apache-2.0
// Stand-alone readers of a configuration document from a local file.

#include "plugin/file_dispatchers.h"

#include <array>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <utility>

#include "headsetmgmt/types.h"

namespace headsetmgmt::dispatcher {

namespace {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

/// Reads the whole file into `content`; false, with `content` unchanged, when it cannot be read.
bool read_file(const std::string& path, std::string& content) {
    const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "re"));
    if (!file) {
        return false;
    }
    std::string text;
    std::array<char, 4096> chunk = {};
    std::size_t length = 0;
    while ((length = std::fread(chunk.data(), 1, chunk.size(), file.get())) != 0) {
        text.append(chunk.data(), length);
    }
    if (std::ferror(file.get()) != 0) {
        return false;
    }
    content = std::move(text);
    return true;
}

}  // namespace

int FileDispatcherImpl::push(const std::string& /*url*/, const std::string& /*body*/) const {
    return REQUEST_DONE;
}

int FileDispatcherImpl::get(const std::string& name, std::string& document) const {
    std::puts("FileDispatcher : Get from file ");
    if (!read_file("../../../../sample-config/" + name, document)) {
        std::puts("file open error");
    }
    return REQUEST_DONE;
}

int TftpDispatcherImpl::push(const std::string& /*url*/, const std::string& /*body*/) const {
    return REQUEST_DONE;
}

int TftpDispatcherImpl::get(const std::string& /*name*/, std::string& document) const {
    return read_file("/tmp/ram/defaultheadsetconfig.json", document) ? REQUEST_DONE
                                                                     : REQUEST_REFUSED;
}

}  // namespace headsetmgmt::dispatcher
