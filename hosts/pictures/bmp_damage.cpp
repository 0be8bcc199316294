#include <algorithm>
#include <cstdlib>

#include "damage.h"

namespace {

constexpr std::size_t kHeaderBytes = 34;  // up to the way of compression
constexpr std::uint32_t kPlain = 0;
constexpr std::uint32_t kBitFields = 3;
// More than the imaging library reads.
constexpr std::uint64_t kMostBytes = std::uint64_t{4} << 30U;

std::uint32_t numberAt(const std::vector<std::uint8_t>& bytes, std::size_t at) {
    std::uint32_t number = 0;
    for (std::size_t i = 4; i-- > 0;) {
        number = number << 8U | bytes[at + i];
    }
    return number;
}

// The length that the header asks for; 0 when it cannot be told.
std::uint64_t wantedBytes(const std::vector<std::uint8_t>& bytes) {
    if (bytes.size() < kHeaderBytes) {
        return 0;
    }
    const std::uint64_t start = numberAt(bytes, 10);
    const auto width = std::abs(std::int64_t{static_cast<std::int32_t>(numberAt(bytes, 18))});
    const auto height = std::abs(std::int64_t{static_cast<std::int32_t>(numberAt(bytes, 22))});
    const std::uint32_t bits = numberAt(bytes, 28) & 0xFFFFU;
    const std::uint32_t compression = numberAt(bytes, 30);
    if (bits > 32 || (compression != kPlain && compression != kBitFields)) {
        return 0;
    }
    // Rows fill whole words of four bytes.
    return start + (static_cast<std::uint64_t>(width) * bits + 31) / 32 * 4 *
                       static_cast<std::uint64_t>(height);
}

}  // namespace

std::optional<std::string> bmpDamage(const std::vector<std::uint8_t>& bytes) {
    const std::uint64_t wanted = wantedBytes(bytes);
    if (bytes.size() >= kHeaderBytes && bytes.size() >= wanted) {
        return std::nullopt;
    }
    return "the file ends early";
}

std::vector<std::uint8_t> filledUpBmp(std::vector<std::uint8_t> bytes) {
    const std::uint64_t wanted = wantedBytes(bytes);
    if (wanted <= kMostBytes) {
        bytes.resize(std::max<std::size_t>(bytes.size(), static_cast<std::size_t>(wanted)));
    }
    return bytes;
}
