// SPDX-License-Identifier: Apache-2.0
// A stack, for people to read.

#include "faults/stack_text.h"

#include <cstdint>
#include <cstdio>
#include <dlfcn.h>
#include <memory>
#include <sstream>

namespace headsetmgmt::test_support {

namespace {

struct PipeCloser {
    void operator()(FILE* pipe) const { pclose(pipe); }
};

/// The first line of what a shell command says; empty when it fails.
std::string first_line_of(const std::string& command) {
    const std::unique_ptr<FILE, PipeCloser> pipe(popen(command.c_str(), "r"));
    char line[1000] = "";
    if (pipe == nullptr || std::fgets(line, sizeof(line), pipe.get()) == nullptr) {
        return {};
    }
    std::string text = line;
    if (!text.empty() && text.back() == '\n') {
        text.pop_back();
    }
    return text;
}

std::string place_text(void* return_address) {
    Dl_info info = {};
    if (dladdr(return_address, &info) == 0 || info.dli_fname == nullptr) {
        return "?";
    }
    const auto address = reinterpret_cast<std::uintptr_t>(return_address);
    const auto base = reinterpret_cast<std::uintptr_t>(info.dli_fbase);
    std::ostringstream place;
    place << info.dli_fname << " 0x" << std::hex << address - base - 1;  // in the call itself
    const std::string file_and_offset = place.str();
    const std::string function = first_line_of("addr2line -Cfpe " + file_and_offset + " 2>&1");
    return function.empty() || function.rfind("??", 0) == 0 ? file_and_offset : function;
}

}  // namespace

std::string stack_text(const std::vector<void*>& return_addresses) {
    std::string text;
    for (void* const return_address : return_addresses) {
        text += "    " + place_text(return_address) + "\n";
    }
    return text;
}

}  // namespace headsetmgmt::test_support
