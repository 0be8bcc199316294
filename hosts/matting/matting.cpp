#include "matting/matting.h"

#include <cmath>
#include <stdexcept>

#include "matting/feather.h"
#include "matting/foreground_colours.h"
#include "matting/soft_alpha.h"
#include "matting/unseen_colours.h"

namespace {

void require(bool holds, const char* what) {
    if (!holds) {
        throw std::invalid_argument(what);
    }
}

template <typename Value>
Plane<Value> planeOf(cv::Mat& image) {
    return {image.ptr<Value>(), static_cast<std::ptrdiff_t>(image.step1()), image.cols, image.rows};
}

template <typename Value>
Plane<const Value> planeOf(const cv::Mat& image) {
    return {image.ptr<Value>(), static_cast<std::ptrdiff_t>(image.step1()), image.cols, image.rows};
}

std::function<void()> callable(const std::function<void()>& checkpoint) {
    return checkpoint ? checkpoint : [] {};
}

template <typename Value>
void toForeground(cv::Mat& colours, const cv::Mat& alpha, Unseen unseen,
                  const std::function<void()>& checkpoint) {
    const Plane<const std::uint16_t> alphas = planeOf<std::uint16_t>(alpha);
    keepForeground(planeOf<Value>(colours), colours.channels(), alphas, checkpoint);
    if (unseen == Unseen::kNearest) {
        spreadColours(planeOf<Value>(colours), colours.channels(), alphas, checkpoint);
    } else {
        colours.setTo(cv::Scalar::all(0), alpha == 0);
    }
}

}  // namespace

cv::Mat softAlpha(const cv::Mat& photograph, const cv::Mat& mask, double width,
                  const std::function<void()>& checkpoint) {
    require(photograph.type() == CV_8UC3 || photograph.type() == CV_8UC4,
            "the photograph needs three or four channels of eight bits");
    require(mask.type() == CV_8UC1 && mask.size() == photograph.size(),
            "the mask needs one channel of eight bits and the photograph's size");
    require(width >= 0.0, "the width of an edge cannot be negative");
    cv::Mat alpha(mask.size(), CV_16UC1);
    if (alpha.empty()) {
        return alpha;
    }
    const ColourPlane colours{planeOf<std::uint8_t>(photograph), photograph.channels()};
    softAlpha(colours, planeOf<std::uint8_t>(mask), width, planeOf<std::uint16_t>(alpha),
              callable(checkpoint));
    return alpha;
}

cv::Mat feathered(const cv::Mat& alpha, double sigma, const std::function<void()>& checkpoint) {
    require(alpha.type() == CV_16UC1, "alpha needs one channel of 16 bits");
    require(sigma >= 0.0 && sigma <= kWidestFeather, "the feather of an edge goes from 0 to 100");
    if (sigma == 0.0 || alpha.empty()) {
        return alpha;
    }
    cv::Mat blurred = alpha.clone();
    feather(planeOf<std::uint16_t>(blurred), sigma, callable(checkpoint));
    return blurred;
}

cv::Mat foregroundColours(const cv::Mat& picture, const cv::Mat& alpha, Unseen unseen,
                          const std::function<void()>& checkpoint) {
    require((picture.depth() == CV_8U || picture.depth() == CV_16U) && picture.dims == 2 &&
                picture.channels() >= 1 && picture.channels() <= 4,
            "the picture needs one to four channels of 8 or 16 bits");
    require(alpha.type() == CV_16UC1 && alpha.size() == picture.size(),
            "alpha needs one channel of 16 bits and the picture's size");
    cv::Mat colours = picture.clone();
    if (colours.empty()) {
        return colours;
    }
    if (picture.depth() == CV_8U) {
        toForeground<std::uint8_t>(colours, alpha, unseen, callable(checkpoint));
    } else {
        toForeground<std::uint16_t>(colours, alpha, unseen, callable(checkpoint));
    }
    return colours;
}
