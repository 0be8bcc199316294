#include "pictures/compose.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "pictures/files/library.h"

namespace {

template <class Change>
Picture withParts(const Picture& picture, const Change& change) {
    Picture result = picture;
    for (cv::Mat* const part : {&result.pixels, &result.alpha, &result.stored.inks}) {
        if (!part->empty()) {
            *part = change(*part);
        }
    }
    return result;
}

bool isGrey(const Picture& picture) {
    return picture.pixels.channels() == 1;
}

std::uint64_t levels(const cv::Mat& image) {
    return image.depth() == CV_16U ? 65535 : 255;
}

cv::Mat alphaOf(const Picture& picture, int depth) {
    const double most = depth == CV_16U ? 65535.0 : 255.0;
    cv::Mat alpha(picture.pixels.size(), CV_MAKETYPE(depth, 1), cv::Scalar(most));
    if (!picture.alpha.empty()) {
        picture.alpha.convertTo(alpha, depth, most / static_cast<double>(levels(picture.alpha)));
    }
    return alpha;
}

// Of one row. By Porter and Duff (1984), rounded once: with a and b the shares of top and ground that
// are seen, the colour is (a top + b ground) / (a + b).
template <class Sample>
void mixRow(Sample* top, Sample* alpha, const Sample* ground, const Sample* groundAlpha, int width,
            int channels) {
    constexpr std::uint64_t kMost = static_cast<Sample>(-1);
    for (int x = 0; x < width; ++x, top += channels, ground += channels) {
        const std::uint64_t a = alpha[x] * kMost;
        const std::uint64_t b = (kMost - alpha[x]) * groundAlpha[x];
        alpha[x] = static_cast<Sample>((a + b + kMost / 2) / kMost);
        for (int c = 0; a + b > 0 && c < channels; ++c) {
            top[c] = static_cast<Sample>((a * top[c] + b * ground[c] + (a + b) / 2) / (a + b));
        }
    }
}

template <class Sample>
void mix(Picture& top, const cv::Mat& ground, const cv::Mat& groundAlpha) {
    for (int y = 0; y < ground.rows; ++y) {
        mixRow(top.pixels.ptr<Sample>(y), top.alpha.ptr<Sample>(y), ground.ptr<Sample>(y),
               groundAlpha.ptr<Sample>(y), ground.cols, ground.channels());
    }
}

// The pixels in the colours, depth and channels of another picture.
cv::Mat pixelsLike(const Picture& picture, const Picture& other) {
    return pictureLibrary().converted(picture.pixels, picture.notes.profile, other.notes.profile,
                                      other.pixels.type());
}

Picture inColour(const Picture& picture) {
    Picture result = picture;
    result.notes.profile.clear();
    result.pixels = pictureLibrary().converted(picture.pixels, picture.notes.profile, {},
                                               CV_MAKETYPE(picture.pixels.depth(), 3));
    return result;
}

}  // namespace

Picture plainPicture(cv::Size size, const cv::Vec3b& colour) {
    Picture picture;
    picture.pixels = cv::Mat(size, CV_8UC3, cv::Scalar(colour));
    return picture;
}

Picture covering(const Picture& picture, cv::Size size) {
    const cv::Size from = picture.pixels.size();
    const double scale = std::max(static_cast<double>(size.width) / from.width,
                                  static_cast<double>(size.height) / from.height);
    const cv::Size scaled(
        std::max(size.width, static_cast<int>(std::lround(from.width * scale))),
        std::max(size.height, static_cast<int>(std::lround(from.height * scale))));
    const int way = scale < 1.0 ? cv::INTER_AREA : cv::INTER_CUBIC;
    const cv::Rect middle((scaled - size) / 2, size);
    return withParts(picture, [&](const cv::Mat& part) {
        cv::Mat result;
        cv::resize(part, result, scaled, 0.0, 0.0, way);
        return cv::Mat(result(middle));
    });
}

Picture cropped(const Picture& picture, const cv::Rect& part) {
    return withParts(picture, [&](const cv::Mat& whole) { return cv::Mat(whole(part)); });
}

Picture over(const Picture& top, const Picture& ground) {
    const bool staysGrey =
        isGrey(top) && isGrey(ground) && top.notes.profile == ground.notes.profile;
    Picture result = isGrey(top) && !staysGrey ? inColour(top) : top;
    result.stored = {};
    result.pixels = result.pixels.clone();
    const int depth = result.pixels.depth();
    result.alpha = alphaOf(top, depth);
    const cv::Mat under = pixelsLike(ground, result);
    const cv::Mat underAlpha = alphaOf(ground, depth);
    if (depth == CV_16U) {
        mix<std::uint16_t>(result, under, underAlpha);
    } else {
        mix<std::uint8_t>(result, under, underAlpha);
    }
    if (ground.alpha.empty()) {
        result.alpha.release();
    }
    return result;
}
