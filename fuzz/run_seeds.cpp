// Runs a fuzz target once for every file of a folder, without a fuzzer and with any compiler:
//     segcore-seeds-TARGET FOLDER
// A folder without files is a failure.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz_target.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    std::vector<std::filesystem::path> seeds;
    for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
        seeds.push_back(entry.path());
    }
    std::sort(seeds.begin(), seeds.end());
    for (const std::filesystem::path& seed : seeds) {
        std::fprintf(stderr, "%s\n", seed.filename().c_str());  // the last line names a failing one
        std::ifstream file(seed, std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
        // A block of its own size, for the address sanitizer.
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    return seeds.empty() ? 1 : 0;
}
