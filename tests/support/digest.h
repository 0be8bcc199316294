// FNV-1a over the bytes of a vector of integers: fixes a result of many bytes in one number.
#pragma once

#include <cstdint>
#include <vector>

constexpr std::uint64_t kDigestStart = 14695981039346656037ULL;

template <typename T>
std::uint64_t digest(const std::vector<T>& values, std::uint64_t state = kDigestStart) {
    for (const T value : values) {
        auto bits = static_cast<std::uint64_t>(value);
        for (std::size_t byte = 0; byte < sizeof(T); ++byte, bits >>= 8) {
            state = (state ^ (bits & 0xFFU)) * 1099511628211ULL;
        }
    }
    return state;
}
