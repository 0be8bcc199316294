#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "matting/matting.h"
#include "support/digest.h"

namespace {

constexpr int kSide = 160;

cv::Mat sample(const char* name, cv::Rect part) {
    const cv::Mat whole = cv::imread(std::string(SEGCORE_SAMPLES) + "/" + name, cv::IMREAD_COLOR);
    return whole(part).clone();
}

// A cup with saucer over a suit, their edge blurred by a true Gaussian.
struct Composite {
    cv::Mat alpha;  // CV_64F, 0 to 1
    cv::Mat front = sample("coffee.png", {140, 60, 300, 300});
    cv::Mat photograph;
    cv::Mat mask;

    explicit Composite(double sigma) {
        cv::Mat back = sample("astronaut.png", {60, 200, 300, 300});
        cv::Mat hard = cv::Mat::zeros(front.size() * 4, CV_8UC1);
        cv::ellipse(hard, {600, 560}, {420, 330}, 20.0, 0.0, 360.0, 255, cv::FILLED);
        cv::rectangle(hard, {380, 500}, {840, 1020}, 255, cv::FILLED);
        hard.convertTo(alpha, CV_64F, 1.0 / 255.0);
        cv::GaussianBlur(alpha, alpha, {}, 4.0 * sigma);
        cv::resize(alpha, alpha, front.size(), 0.0, 0.0, cv::INTER_AREA);
        mask = alpha >= 0.5;
        photograph = front.clone();
        for (int y = 0; y < front.rows; ++y) {
            for (int x = 0; x < front.cols; ++x) {
                const double share = alpha.at<double>(y, x);
                for (int c = 0; c < 3; ++c) {
                    photograph.at<cv::Vec3b>(y, x)[c] = cv::saturate_cast<std::uint8_t>(
                        share * front.at<cv::Vec3b>(y, x)[c] +
                        (1.0 - share) * back.at<cv::Vec3b>(y, x)[c]);
                }
            }
        }
    }
};

double errorSum(const cv::Mat& alpha, const cv::Mat& truth) {
    cv::Mat share;
    alpha.convertTo(share, CV_64F, alpha.depth() == CV_16U ? 1.0 / 65535.0 : 1.0 / 255.0);
    return cv::norm(share, truth, cv::NORM_L1);
}

}  // namespace

TEST(SoftAlpha, KeepsSharpEdgesSharp) {
    for (const double slope : {0.0, 0.3, 1.0}) {
        cv::Mat photograph(kSide, kSide, CV_8UC3);
        cv::Mat mask(kSide, kSide, CV_8UC1);
        cv::RNG random(3);
        for (int y = 0; y < kSide; ++y) {
            for (int x = 0; x < kSide; ++x) {
                const bool isObject = x + slope * (y - 80) < 80.0;
                mask.at<std::uint8_t>(y, x) = isObject ? 1 : 0;
                const int noise = random.uniform(-4, 5);
                photograph.at<cv::Vec3b>(y, x) =
                    isObject ? cv::Vec3b(static_cast<std::uint8_t>(200 + noise), 180, 60)
                             : cv::Vec3b(40, static_cast<std::uint8_t>(70 + noise), 90);
            }
        }
        const cv::Mat alpha = softAlpha(photograph, mask, 0.0);
        for (int y = 0; y < kSide; ++y) {
            for (int x = 0; x < kSide; ++x) {
                const double share = alpha.at<std::uint16_t>(y, x) / 65535.0;
                if (std::min(x, kSide - 1 - x) < 8 && std::min(y, kSide - 1 - y) < 8) {
                    continue;  // a picture's corner, if cut off, holds too little of one side
                }
                const double away = std::fabs(x + slope * (y - 80) - 79.5) / std::hypot(1.0, slope);
                // Next to the edge within a quarter, from a pixel on within a hundredth.
                EXPECT_NEAR(share, mask.at<std::uint8_t>(y, x), away < 1.0 ? 0.25 : 0.02)
                    << slope << ": " << x << ", " << y;
            }
        }
    }
}

// Checks of black and white on their mean: no blur of the outline explains the picture better than another.
TEST(SoftAlpha, KeepsSharpEdgesOfTexturesSharp) {
    constexpr int kCheck = 6;
    cv::Mat photograph(300, 300, CV_8UC3, cv::Scalar::all(128));
    cv::Mat mask = cv::Mat::zeros(300, 300, CV_8UC1);
    const cv::Rect object(70, 60, 160, 180);
    mask(object).setTo(255);
    for (int y = object.y; y < object.br().y; ++y) {
        for (int x = object.x; x < object.br().x; ++x) {
            const int value = (x / kCheck + y / kCheck) % 2 * 255;
            photograph.at<cv::Vec3b>(y, x) = cv::Vec3b::all(static_cast<std::uint8_t>(value));
        }
    }
    cv::Mat truth;
    mask.convertTo(truth, CV_64F, 1.0 / 255.0);
    // A sixth of a pixel for each of the outline.
    EXPECT_LT(errorSum(softAlpha(photograph, mask, 0.0), truth), 680.0 / 6.0);
}

// Where the truth is known, the error of the hard mask is the measure. The two objects have colours in
// common, so that colours alone do not tell.
TEST(SoftAlpha, FollowsBlurredEdges) {
    for (const auto& [sigma, most] :
         {std::pair(0.5, 0.45), {1.0, 0.36}, {2.0, 0.37}, {5.0, 0.42}}) {
        const Composite composite(sigma);
        const cv::Mat alpha = softAlpha(composite.photograph, composite.mask, 0.0);
        const double hard = errorSum(composite.mask, composite.alpha);
        EXPECT_LT(errorSum(alpha, composite.alpha), most * hard) << sigma;
        // No holes in the object and no haze outside of it, a little beyond the edge.
        const int beyond = static_cast<int>(6.0 + 1.5 * sigma);
        cv::Mat inner;
        cv::Mat outer;
        cv::erode(composite.alpha > 0.99, inner, {}, {-1, -1}, beyond);
        cv::erode(composite.alpha < 0.01, outer, {}, {-1, -1}, beyond);
        EXPECT_EQ(cv::countNonZero((alpha < 65000) & inner), 0) << sigma;
        EXPECT_EQ(cv::countNonZero((alpha > 535) & outer), 0) << sigma;
    }
}

// Only by going back to the edge from where the first alpha puts it: a single look at the surroundings of
// a mask that is four pixels too large leaves 0.63 of it.
TEST(SoftAlpha, ComesBackToAnEdgeThatTheMaskMissed) {
    const Composite composite(1.0);
    const cv::Rect part(0, 0, 150, 300);
    cv::Mat mask = composite.mask.clone();
    cv::dilate(composite.mask(part), mask(part), {}, {-1, -1}, 4);
    const double hard = errorSum(mask, composite.alpha);
    const double soft = errorSum(softAlpha(composite.photograph, mask, 0.0), composite.alpha);
    EXPECT_LT(soft, 0.45 * hard);
}

TEST(SoftAlpha, GoesNoFurtherThanItsWidthAndIsFeathered) {
    const Composite composite(1.0);
    const cv::Mat narrow = softAlpha(composite.photograph, composite.mask, 1.5);
    cv::Mat inside;
    cv::Mat outside;
    cv::distanceTransform(composite.mask, inside, cv::DIST_L2, cv::DIST_MASK_PRECISE);
    cv::distanceTransform(composite.mask == 0, outside, cv::DIST_L2, cv::DIST_MASK_PRECISE);
    const cv::Mat isSoft = (narrow > 0) & (narrow < 65535);
    EXPECT_GT(cv::countNonZero(isSoft), 1000);
    EXPECT_EQ(cv::countNonZero(isSoft & ((inside > 2.0) | (outside > 2.0))), 0);

    cv::Mat step(80, 80, CV_8UC3, cv::Scalar::all(20));
    cv::Mat mask = cv::Mat::zeros(80, 80, CV_8UC1);
    step.colRange(0, 40).setTo(cv::Scalar(200, 150, 99));
    mask.colRange(0, 40).setTo(255);
    const cv::Mat across = feathered(softAlpha(step, mask, 0.0), 3.0);
    const cv::Mat down = feathered(softAlpha(step.t(), mask.t(), 0.0), 3.0);
    for (int i = 25; i < 55; ++i) {
        const double expected = std::erfc((i + 0.5 - 40.0) / (3.0 * std::sqrt(2.0))) / 2.0;
        EXPECT_NEAR(across.at<std::uint16_t>(40, i) / 65535.0, expected, 0.015) << i;
        EXPECT_NEAR(down.at<std::uint16_t>(i, 40) / 65535.0, expected, 0.015) << i;
    }
}

// The same bits from every compiler, on every machine.
TEST(SoftAlpha, IsTheSameEverywhere) {
    Digest digest;
    for (const int times : {1, 12}) {
        cv::Mat photograph = sample("coffee.png", {0, 0, 600, 400});
        cv::Mat mask = cv::Mat::zeros(photograph.size(), CV_8UC1);
        cv::ellipse(mask, {300, 190}, {210, 165}, 0.0, 0.0, 360.0, 255, cv::FILLED);
        if (times > 1) {  // so soft that reductions are solved, too
            const cv::Rect part(40, 60, 180, 120);
            cv::resize(photograph(part), photograph, part.size() * times, 0.0, 0.0,
                       cv::INTER_LINEAR_EXACT);
            cv::resize(mask(part), mask, part.size() * times, 0.0, 0.0, cv::INTER_NEAREST);
        }
        const cv::Mat alpha = feathered(softAlpha(photograph, mask, 0.0), times == 1 ? 1.0 : 0.0);
        digest.add(
            std::vector<std::uint16_t>(alpha.begin<std::uint16_t>(), alpha.end<std::uint16_t>()));
        const cv::Mat colours = foregroundColours(photograph, alpha, Unseen::kNearest);
        digest.add(std::vector<std::uint8_t>(colours.datastart, colours.dataend));
    }
    EXPECT_EQ(digest.text(), "da37a4c6ebab73c9425f6e917db2187b");
}

TEST(SoftAlpha, RefusesWhatItCannotUse) {
    const cv::Mat photograph = cv::Mat::zeros(8, 9, CV_8UC3);
    const cv::Mat mask = cv::Mat::zeros(8, 9, CV_8UC1);
    EXPECT_THROW(softAlpha(photograph, cv::Mat::zeros(9, 8, CV_8UC1), 0.0), std::invalid_argument);
    EXPECT_THROW(softAlpha(cv::Mat::zeros(8, 9, CV_16UC3), mask, 0.0), std::invalid_argument);
    EXPECT_THROW(softAlpha(photograph, mask, -1.0), std::invalid_argument);
    EXPECT_THROW(feathered(softAlpha(photograph, mask, 0.0), std::nan("")), std::invalid_argument);
    EXPECT_THROW(foregroundColours(photograph, mask, Unseen::kZero), std::invalid_argument);
    // Nothing, all, single pixels and rows are masks like any other.
    for (const cv::Size size : {cv::Size(9, 8), cv::Size(1, 1), cv::Size(40, 1), cv::Size(2, 30)}) {
        cv::Mat colours(size, CV_8UC4, cv::Scalar(9, 200, 30, 77));
        cv::Mat half = cv::Mat::zeros(size, CV_8UC1);
        EXPECT_EQ(cv::countNonZero(softAlpha(colours, half, 0.0)), 0);
        half.at<std::uint8_t>(0, 0) = 1;
        EXPECT_EQ(softAlpha(colours, half, 0.0).size(), size);
        EXPECT_EQ(cv::countNonZero(softAlpha(colours, half + 1, 0.0) != 65535), 0);
    }
    int calls = 0;
    const auto stop = [&] {
        if (++calls == 5) {
            throw std::runtime_error("stopped");
        }
    };
    const Composite composite(1.0);
    EXPECT_THROW(softAlpha(composite.photograph, composite.mask, 0.0, stop), std::runtime_error);
}
