// Fuzzes the exported calls: any of them in any order with any arguments.
#include "fuzz_target.h"
#include "fuzzed_host.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedHost(data, size).run();
    return 0;
}
