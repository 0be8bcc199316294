#include "cut_out.h"

#include <opencv2/imgproc.hpp>

namespace {

constexpr double kLevels = 257.0;  // of 16 bits in one of 8
constexpr int kOpaque = 65535;

// Both of 16 bits; rounded.
cv::Mat product(const cv::Mat& alpha, const cv::Mat& other) {
    cv::Mat result(alpha.size(), CV_16UC1);
    for (int y = 0; y < alpha.rows; ++y) {
        const auto* a = alpha.ptr<std::uint16_t>(y);
        const auto* b = other.ptr<std::uint16_t>(y);
        auto* out = result.ptr<std::uint16_t>(y);
        for (int x = 0; x < alpha.cols; ++x) {
            out[x] =
                static_cast<std::uint16_t>((std::uint32_t{a[x]} * b[x] + kOpaque / 2) / kOpaque);
        }
    }
    return result;
}

cv::Mat in16Bits(const cv::Mat& image) {
    cv::Mat wide = image;
    if (image.depth() == CV_8U) {
        image.convertTo(wide, CV_16U, kLevels);
    }
    return wide;
}

}  // namespace

cv::Mat alphaOf(const cv::Mat& seen, const cv::Mat& mask, const OutputChoice& choice,
                const std::function<void()>& checkpoint) {
    if (choice.edges != Edges::kSoft) {
        return in16Bits(mask != 0);
    }
    return softAlpha(seen, mask, choice.edgeWidth.value_or(0.0), checkpoint);
}

cv::Mat visible(const cv::Mat& alpha, const Picture& photograph, const OutputChoice& choice,
                const std::function<void()>& checkpoint) {
    const bool isSoft = choice.edges == Edges::kSoft;
    const cv::Mat shown =
        isSoft ? feathered(alpha, choice.feather.value_or(0.0), checkpoint) : alpha;
    cv::Mat result = photograph.alpha.empty() ? shown : product(shown, in16Bits(photograph.alpha));
    if (photograph.pixels.depth() == CV_8U) {
        result.convertTo(result, CV_8U, 1.0 / kLevels);
    }
    return result;
}

Picture cutOut(const Picture& photograph, const cv::Mat& alpha, const cv::Mat& seen, Unseen unseen,
               const std::function<void()>& checkpoint) {
    Picture result = photograph;
    // A feather shows pixels without alpha, which need colours.
    const bool showsMore = cv::countNonZero(seen) > cv::countNonZero(alpha);
    result.pixels = foregroundColours(photograph.pixels, alpha,
                                      showsMore ? Unseen::kNearest : unseen, checkpoint);
    result.alpha = seen;
    if (unseen == Unseen::kZero) {
        result.pixels.setTo(cv::Scalar::all(0), seen == 0);
    }
    return result;
}

cv::Rect partInUse(const cv::Mat& alpha, int margin) {
    const cv::Rect tight = cv::boundingRect(alpha != 0);
    if (tight.empty()) {
        return tight;
    }
    const cv::Point around(margin, margin);
    return cv::Rect(tight.tl() - around, tight.br() + around) & cv::Rect({0, 0}, alpha.size());
}
