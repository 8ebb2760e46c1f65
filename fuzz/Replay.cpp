// Replaces the fuzzer: gives a target the inputs in a folder, one after the other.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s FOLDER_OR_FILE\n", argv[0]);
        return 2;
    }
    std::vector<std::string> paths;
    std::error_code failure;
    if (std::filesystem::is_regular_file(argv[1], failure)) {
        paths.emplace_back(argv[1]);
    } else {
        for (const auto& entry : std::filesystem::directory_iterator(argv[1], failure)) {
            paths.push_back(entry.path().string());
        }
        std::sort(paths.begin(), paths.end());
    }
    if (paths.empty()) {
        std::fprintf(stderr, "no inputs in %s\n", argv[1]);
        return 1;
    }
    for (const std::string& path : paths) {
        std::ifstream file(path, std::ios::binary);
        if (!file) {
            std::fprintf(stderr, "cannot read %s\n", path.c_str());
            return 1;
        }
        const std::string input{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        // Printed first, so that the last line names the input that failed.
        std::printf("%s\n", path.c_str());
        std::fflush(stdout);
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
    }
    std::printf("%zu inputs\n", paths.size());
    return 0;
}
