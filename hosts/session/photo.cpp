#include "session/photo.h"

#include <opencv2/imgproc.hpp>

#define XXH_INLINE_ALL
#include <xxhash.h>

#include "interface/segmentation_core.h"
#include "session/errors.h"

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__,
              "the bytes of a pixel word are taken for blue, green, red, alpha");

Photo photoOf(const cv::Mat& image, const std::string& name) {
    if (image.total() > SEGCORE_MAX_PIXELS) {
        throw UserError(name + " has more than " + std::to_string(SEGCORE_MAX_PIXELS) +
                        " pixels; reduce it first");
    }
    Photo photo{image.cols, image.rows, std::vector<std::uint32_t>(image.total())};
    cv::Mat words = asImage(photo.words, photo.size());
    cv::cvtColor(image, words, cv::COLOR_BGR2BGRA);
    return photo;
}

cv::Mat asImage(std::vector<std::uint32_t>& words, cv::Size size) {
    return {size, CV_8UC4, words.data()};
}

std::string digestOf(const Photo& photo) {
    constexpr unsigned kByteBits = 8;
    constexpr const char* kHexDigits = "0123456789abcdef";
    XXH3_state_t state;
    XXH3_128bits_reset(&state);
    const auto width = static_cast<std::size_t>(photo.width);
    std::vector<std::uint8_t> row(3 * width);  // a photograph is not copied whole
    for (std::size_t first = 0; first + width <= photo.words.size() && width > 0; first += width) {
        for (std::size_t x = 0; x < width; ++x) {
            const std::uint32_t word = photo.words[first + x];
            row[3 * x] = static_cast<std::uint8_t>(word);
            row[3 * x + 1] = static_cast<std::uint8_t>(word >> kByteBits);
            row[3 * x + 2] = static_cast<std::uint8_t>(word >> 2 * kByteBits);
        }
        XXH3_128bits_update(&state, row.data(), row.size());
    }
    XXH128_canonical_t canonical;
    XXH128_canonicalFromHash(&canonical, XXH3_128bits_digest(&state));
    std::string text;
    for (const unsigned char byte : canonical.digest) {
        text += kHexDigits[byte >> 4U];
        text += kHexDigits[byte & 0xFU];
    }
    return text;
}
