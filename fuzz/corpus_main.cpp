// Runs a fuzz target over the inputs in files: each argument is a file, or a folder of files.
// Replaces the fuzzer's own main where the compiler has no fuzzer.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> files_at(const fs::path& place) {
    std::vector<fs::path> files;
    if (fs::is_directory(place)) {
        for (const fs::directory_entry& entry : fs::directory_iterator(place)) {
            files.push_back(entry.path());
        }
        std::sort(files.begin(), files.end());
    } else {
        files.push_back(place);
    }
    return files;
}

std::vector<std::uint8_t> bytes_of(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error("cannot read " + path.string());
    }
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace

int main(int argc, char** argv) {
    std::size_t inputs = 0;
    try {
        for (int i = 1; i < argc; ++i) {
            for (const fs::path& path : files_at(argv[i])) {
                const std::vector<std::uint8_t> bytes = bytes_of(path);
                // The last name on the output is the input that ended the process.
                std::printf("%s\n", path.filename().c_str());
                std::fflush(stdout);
                LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
                ++inputs;
            }
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    std::printf("%zu inputs\n", inputs);
    return inputs == 0 ? 1 : 0;
}
