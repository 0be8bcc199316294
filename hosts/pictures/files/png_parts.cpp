#include "pictures/files/png_parts.h"

#include <zlib.h>

#include <algorithm>

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kSignatureBytes = 8;
constexpr std::size_t kNameBytes = 4;
constexpr std::size_t kNumberBytes = 4;

std::uint32_t numberAt(const Bytes& bytes, std::size_t at) {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < kNumberBytes; ++i) {
        number = number << 8U | bytes[at + i];
    }
    return number;
}

void putNumber(Bytes& bytes, std::size_t at, std::uint32_t number) {
    for (std::size_t i = kNumberBytes; i-- > 0; number >>= 8U) {
        bytes[at + i] = static_cast<std::uint8_t>(number);
    }
}

// Length, name, content, check sum over name and content.
struct Part {
    std::size_t start = 0;
    std::size_t length = 0;  // of the content

    std::size_t nameAt() const { return start + kNumberBytes; }
    std::size_t sumAt() const { return nameAt() + kNameBytes + length; }
    std::size_t end() const { return sumAt() + kNumberBytes; }
};

// None where the file ends within the part.
std::optional<Part> partAt(const Bytes& bytes, std::size_t start) {
    if (bytes.size() - start < kNumberBytes + kNameBytes) {
        return std::nullopt;
    }
    const Part part{start, numberAt(bytes, start)};
    const std::size_t left = bytes.size() - part.nameAt() - kNameBytes;
    const bool isWhole = left >= part.length && left - part.length >= kNumberBytes;
    return isWhole ? std::optional(part) : std::nullopt;
}

std::string nameOf(const Bytes& bytes, const Part& part) {
    const std::uint8_t* const name = &bytes[part.nameAt()];
    return {name, name + kNameBytes};
}

std::uint32_t sumOf(const Bytes& bytes, const Part& part) {
    return static_cast<std::uint32_t>(crc32_z(0, &bytes[part.nameAt()], kNameBytes + part.length));
}

}  // namespace

std::optional<std::string> pngDamage(const Bytes& bytes) {
    for (std::size_t at = kSignatureBytes;;) {
        const std::optional<Part> part = partAt(bytes, at);
        if (!part) {
            return "the file ends early";
        }
        const std::string name = nameOf(bytes, *part);
        if (sumOf(bytes, *part) != numberAt(bytes, part->sumAt())) {
            return "wrong check sum of its part " + name;
        }
        if (name == "IEND") {
            return std::nullopt;
        }
        at = part->end();
    }
}

Bytes withRightCheckSums(Bytes bytes) {
    std::optional<Part> part = partAt(bytes, kSignatureBytes);
    while (part) {
        putNumber(bytes, part->sumAt(), sumOf(bytes, *part));
        part = partAt(bytes, part->end());
    }
    return bytes;
}

Bytes pngWithPosition(Bytes png, cv::Point position) {
    constexpr std::size_t kContent = 9;  // two numbers and their unit, 0 for pixels
    Bytes added(kNumberBytes + kNameBytes + kContent + kNumberBytes);
    const Part part{0, kContent};
    putNumber(added, 0, kContent);
    const std::string name = "oFFs";
    std::copy(name.begin(), name.end(), added.begin() + kNumberBytes);
    putNumber(added, part.nameAt() + kNameBytes, static_cast<std::uint32_t>(position.x));
    putNumber(added, part.nameAt() + kNameBytes + kNumberBytes,
              static_cast<std::uint32_t>(position.y));
    putNumber(added, part.sumAt(), sumOf(added, part));
    // Anywhere between the first part and the pixels.
    if (const std::optional<Part> header = partAt(png, kSignatureBytes)) {
        png.insert(png.begin() + static_cast<std::ptrdiff_t>(header->end()), added.begin(),
                   added.end());
    }
    return png;
}

Bytes pngWithoutResolution(Bytes png) {
    std::optional<Part> part = partAt(png, kSignatureBytes);
    while (part && nameOf(png, *part) != "pHYs" && nameOf(png, *part) != "IDAT") {
        part = partAt(png, part->end());
    }
    if (part && nameOf(png, *part) == "pHYs") {
        png.erase(png.begin() + static_cast<std::ptrdiff_t>(part->start),
                  png.begin() + static_cast<std::ptrdiff_t>(part->end()));
    }
    return png;
}
