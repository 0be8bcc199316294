#include "pictures/engine_colours.h"

#include <opencv2/imgproc.hpp>

#include "pictures/files/library.h"
#include "pictures/read_picture.h"

namespace {

constexpr double kSixteenToEight = 1.0 / 257.0;

// The upper byte alone.
cv::Mat upperBytes(const cv::Mat& pixels) {
    cv::Mat result(pixels.size(), CV_8UC(pixels.channels()));
    for (int y = 0; y < pixels.rows; ++y) {
        const auto* const from = pixels.ptr<std::uint16_t>(y);
        std::uint8_t* const to = result.ptr(y);
        for (int x = 0; x < pixels.cols * pixels.channels(); ++x) {
            to[x] = static_cast<std::uint8_t>(from[x] >> 8U);
        }
    }
    return result;
}

cv::Mat inEightBits(const cv::Mat& pixels) {
    cv::Mat result = pixels;
    if (pixels.depth() == CV_16U) {
        pixels.convertTo(result, CV_8U, kSixteenToEight);
    }
    return result;
}

cv::Mat inColour(const cv::Mat& pixels) {
    cv::Mat result = pixels;
    if (pixels.channels() == 1) {
        cv::cvtColor(pixels, result, cv::COLOR_GRAY2BGR);
    }
    return result;
}

// The JPEG reader that the first sessions were made with multiplied otherwise than the TIFF reader.
cv::Mat coloursOfInks(const cv::Mat& inks, PictureFormat format) {
    cv::Mat colours(inks.size(), CV_8UC3);
    colours.forEach<cv::Vec3b>([&](cv::Vec3b& colour, const int* at) {
        const auto& ink = inks.at<cv::Vec4b>(at);
        const int light = 255 - ink[3];
        for (int c = 0; c < 3; ++c) {
            const int amount = ink[2 - c];
            colour[c] = static_cast<std::uint8_t>(format == PictureFormat::kTiff
                                                      ? (255 - amount) * light / 255
                                                      : light - (amount * light >> 8));
        }
    });
    return colours;
}

cv::Mat multiplied(const cv::Mat& colours, const cv::Mat& alpha) {
    cv::Mat result = colours.clone();
    result.forEach<cv::Vec3b>([&](cv::Vec3b& colour, const int* at) {
        for (int c = 0; c < 3; ++c) {
            colour[c] =
                static_cast<std::uint8_t>((colour[c] * alpha.at<std::uint8_t>(at) + 127) / 255);
        }
    });
    return result;
}

cv::Mat coloursAsStored(const Picture& picture) {
    const StoredForm& stored = picture.stored;
    if (!stored.inks.empty()) {
        return coloursOfInks(stored.inks, stored.format);
    }
    if (picture.pixels.depth() == CV_16U) {
        const bool isRounded =
            stored.format == PictureFormat::kTiff && picture.pixels.channels() == 3;
        return inColour(isRounded ? inEightBits(picture.pixels) : upperBytes(picture.pixels));
    }
    const cv::Mat colours = inColour(picture.pixels);
    return stored.timesAlpha ? multiplied(colours, picture.alpha) : colours;
}

}  // namespace

cv::Mat engineColours(const Picture& picture, Colours colours) {
    if (colours == Colours::kAsStored) {
        return coloursAsStored(picture);
    }
    cv::Mat converted = picture.notes.profile.empty()
                            ? cv::Mat()
                            : pictureLibrary().inSrgb(picture.pixels, picture.notes.profile);
    return converted.empty() ? inColour(inEightBits(picture.pixels)) : converted;
}

cv::Mat storedPixels(const Picture& picture) {
    const cv::Mat pixels =
        picture.pixels.depth() == CV_16U ? upperBytes(picture.pixels) : picture.pixels;
    if (picture.alpha.empty()) {
        return pixels;
    }
    const cv::Mat alpha =
        picture.alpha.depth() == CV_16U ? upperBytes(picture.alpha) : picture.alpha;
    cv::Mat both;
    cv::merge(std::vector<cv::Mat>{inColour(pixels), alpha}, both);
    return both;
}

cv::Mat greyPixels(const Picture& picture) {
    Picture opaque = picture;
    opaque.alpha.release();
    cv::Mat grey = storedPixels(opaque);
    if (grey.channels() == 3) {
        cv::cvtColor(grey, grey, cv::COLOR_BGR2GRAY);
    }
    return grey;
}
