// Digests of results, the same on every machine: XXH3 of 128 bits, which takes a mask of twelve
// megapixels in a millisecond.
#pragma once

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <cstdio>
#include <string>
#include <vector>

// Values that results are fed into in a fixed order.
class Digest {
  public:
    Digest() { XXH3_128bits_reset(&m_state); }

    template <typename T>
    Digest& add(const std::vector<T>& values) {
        // The length keeps two vectors apart from one of both.
        const auto count = static_cast<std::uint64_t>(values.size());
        XXH3_128bits_update(&m_state, &count, sizeof count);
        XXH3_128bits_update(&m_state, values.data(), values.size() * sizeof(T));
        return *this;
    }

    std::string text() const {
        const XXH128_hash_t hash = XXH3_128bits_digest(&m_state);
        char text[33];
        std::snprintf(text, sizeof text, "%016llx%016llx",
                      static_cast<unsigned long long>(hash.high64),
                      static_cast<unsigned long long>(hash.low64));
        return text;
    }

  private:
    XXH3_state_t m_state;
};
