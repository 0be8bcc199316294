// Fuzzes the exported calls: any of them in any order with any arguments.
#include "fuzzed_host.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedHost(data, size).run();
    return 0;
}
