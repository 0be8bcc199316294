#include <png.h>
#include <zlib.h>

#include <algorithm>

#include "damage.h"
#include "png_rows.h"

namespace {

constexpr std::size_t kSignatureBytes = 8;
constexpr std::size_t kNameBytes = 4;
constexpr std::size_t kNumberBytes = 4;
constexpr const char* kEndsEarly = "the file ends early";

std::uint8_t* roomFor(void* data, std::uint32_t width, std::uint32_t height, int channels) {
    constexpr std::uint64_t kMostPixels = std::uint64_t{1} << 30U;  // as the imaging library's own
    if (std::uint64_t{width} * height > kMostPixels) {
        return nullptr;
    }
    auto& image = *static_cast<cv::Mat*>(data);
    try {
        image = cv::Mat::zeros(static_cast<int>(height), static_cast<int>(width), CV_8UC(channels));
    } catch (const std::exception&) {
        return nullptr;  // it may not travel through the format's library
    }
    return image.ptr();
}

}  // namespace

std::optional<std::string> pngDamage(const std::vector<std::uint8_t>& bytes) {
    for (std::size_t at = kSignatureBytes;;) {
        if (bytes.size() - at < kNumberBytes + kNameBytes) {
            return kEndsEarly;
        }
        const std::size_t length = png_get_uint_32(&bytes[at]);
        const std::uint8_t* const named = &bytes[at + kNumberBytes];
        const std::string name(named, named + kNameBytes);
        at += kNumberBytes + kNameBytes;
        if (bytes.size() - at < length || bytes.size() - at - length < kNumberBytes) {
            return kEndsEarly;
        }
        at += length;
        if (crc32_z(0, named, kNameBytes + length) != png_get_uint_32(&bytes[at])) {
            return "wrong check sum of its part " + name;
        }
        at += kNumberBytes;
        if (name == "IEND") {
            return std::nullopt;
        }
    }
}

cv::Mat readDamagedPng(const std::vector<std::uint8_t>& bytes, bool asColour) {
    cv::Mat image;
    const bool any =
        segcore_png_rows(bytes.data(), bytes.size(), asColour ? 1 : 0, roomFor, &image) != 0;
    return any ? image : cv::Mat();
}
