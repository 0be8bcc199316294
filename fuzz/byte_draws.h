// Values drawn from a fuzzer's bytes: numbers from the end, so that the calls made early in a run
// depend on bytes that stand together. Drawn the way of clang's header FuzzedDataProvider.h, which
// other compilers lack; the seeds of fuzz/corpus/ mean the same with both.
//
// Without bytes left every value is the lowest.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

class ByteDraws {
  public:
    ByteDraws(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}

    std::size_t remaining_bytes() const { return m_size; }

    template <typename T>
    T ConsumeIntegralInRange(T lowest, T highest) {
        const std::uint64_t range =
            static_cast<std::uint64_t>(highest) - static_cast<std::uint64_t>(lowest);
        std::uint64_t drawn = 0;
        for (unsigned bits = 0; bits < kByteBits * sizeof(T) && range >> bits > 0 && m_size > 0;
             bits += kByteBits) {
            drawn = drawn << kByteBits | m_data[--m_size];
        }
        if (range != std::numeric_limits<std::uint64_t>::max()) {
            drawn %= range + 1;
        }
        return static_cast<T>(static_cast<std::uint64_t>(lowest) + drawn);
    }

    template <typename T>
    T ConsumeIntegral() {
        return ConsumeIntegralInRange(std::numeric_limits<T>::min(), std::numeric_limits<T>::max());
    }

    bool ConsumeBool() { return ConsumeIntegralInRange<unsigned char>(0, 1) != 0; }

    // An enumeration from 0 to its kMaxValue.
    template <typename E>
    E ConsumeEnum() {
        return static_cast<E>(
            ConsumeIntegralInRange<std::uint32_t>(0, static_cast<std::uint32_t>(E::kMaxValue)));
    }

  private:
    static constexpr unsigned kByteBits = 8;

    const std::uint8_t* m_data;
    std::size_t m_size;
};
