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

cv::Mat asImage(const std::vector<std::uint32_t>& words, cv::Size size) {
    return {size, CV_8UC4, const_cast<std::uint32_t*>(words.data())};
}

std::string digestOf(const cv::Mat& image) {
    constexpr const char* kHexDigits = "0123456789abcdef";
    XXH3_state_t state;
    XXH3_128bits_reset(&state);
    cv::Mat opaque;  // a photograph is not copied whole
    for (int y = 0; y < image.rows; ++y) {
        cv::Mat row = image.row(y);
        if (image.channels() == 4) {
            cv::cvtColor(row, opaque, cv::COLOR_BGRA2BGR);
            row = opaque;
        }
        XXH3_128bits_update(&state, row.data, row.total() * row.elemSize());
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

std::string digestOf(const Photo& photo) {
    return digestOf(asImage(photo.words, photo.size()));
}
