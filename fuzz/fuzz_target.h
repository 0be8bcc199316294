// What a fuzzer calls with each of its inputs; libFuzzer wants the name and the linkage.
#pragma once

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
