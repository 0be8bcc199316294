#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/imgproc.hpp>
#include <random>

#include "matting/matting.h"

namespace {

// Alpha of a soft disc, and its object's colours over others.
struct Composite {
    cv::Mat alpha = cv::Mat(90, 110, CV_16UC1);
    cv::Mat front;
    cv::Mat picture;

    explicit Composite(int type) : front(90, 110, type), picture(90, 110, type) {
        const double whole = front.depth() == CV_8U ? 255.0 : 65535.0;
        for (int y = 0; y < alpha.rows; ++y) {
            for (int x = 0; x < alpha.cols; ++x) {
                const double inside = 25.0 - std::hypot(x - 55.0, y - 45.0);
                const double share = std::clamp(0.5 + inside / 12.0, 0.0, 1.0);
                alpha.at<std::uint16_t>(y, x) =
                    static_cast<std::uint16_t>(std::lround(share * 65535.0));
                for (int c = 0; c < front.channels(); ++c) {
                    const double own = (0.7 + 0.002 * x - 0.1 * c) * whole;
                    const double behind = (0.1 + 0.15 * c + 0.001 * y) * whole;
                    set(front, y, x, c, own);
                    set(picture, y, x, c, share * own + (1.0 - share) * behind);
                }
            }
        }
    }
    static void set(cv::Mat& image, int y, int x, int c, double value) {
        if (image.depth() == CV_8U) {
            image.ptr<std::uint8_t>(y)[x * image.channels() + c] =
                static_cast<std::uint8_t>(std::lround(value));
        } else {
            image.ptr<std::uint16_t>(y)[x * image.channels() + c] =
                static_cast<std::uint16_t>(std::lround(value));
        }
    }
};

}  // namespace

TEST(ForegroundColours, AreTheObjectsOwn) {
    for (const int type : {CV_8UC1, CV_8UC3, CV_16UC3, CV_16UC4}) {
        const Composite composite(type);
        const cv::Mat colours =
            foregroundColours(composite.picture, composite.alpha, Unseen::kZero);
        ASSERT_EQ(colours.type(), type);
        const double whole = colours.depth() == CV_8U ? 255.0 : 65535.0;
        cv::Mat seen;
        cv::Mat difference;
        cv::absdiff(colours, composite.front, difference);
        cv::Mat flat = difference.reshape(1, static_cast<int>(difference.total()));
        cv::reduce(flat, flat, 1, cv::REDUCE_MAX);
        flat.reshape(1, difference.rows).convertTo(difference, CV_64F, 1.0 / whole);
        cv::Mat alpha;
        composite.alpha.convertTo(alpha, CV_64F, 1.0 / 65535.0);
        double worst = 0.0;
        cv::minMaxLoc(difference.mul(alpha), nullptr, &worst);
        // The picture itself is off by 0.12 and more.
        EXPECT_LT(worst, 0.025) << type;
        EXPECT_EQ(cv::countNonZero(colours.reshape(1).row(0)), 0);
    }
}

TEST(ForegroundColours, OfUnseenPixelsAreTheNearestSeenOnes) {
    std::mt19937 random(5);
    for (const cv::Size size :
         {cv::Size(40, 33), cv::Size(1, 20), cv::Size(20, 1), cv::Size(9, 70)}) {
        cv::Mat alpha = cv::Mat::zeros(size, CV_16UC1);
        for (int i = 0; i < 6; ++i) {
            alpha.at<std::uint16_t>(
                static_cast<int>(random() % static_cast<unsigned>(size.height)),
                static_cast<int>(random() % static_cast<unsigned>(size.width))) = 65535;
        }
        cv::Mat picture(size, CV_16UC3);
        for (int i = 0; i < 3 * size.area(); ++i) {
            picture.ptr<std::uint16_t>()[i] = static_cast<std::uint16_t>(i / 3 * 7 + i % 3);
        }
        const cv::Mat colours = foregroundColours(picture, alpha, Unseen::kNearest);
        for (int y = 0; y < size.height; ++y) {
            for (int x = 0; x < size.width; ++x) {
                // The colour says which pixel it is from.
                const int from = colours.at<cv::Vec3w>(y, x)[0] / 7;
                const cv::Point source(from % size.width, from / size.width);
                EXPECT_EQ(colours.at<cv::Vec3w>(y, x), picture.at<cv::Vec3w>(source));
                int nearest = INT32_MAX;
                for (int v = 0; v < size.height; ++v) {
                    for (int u = 0; u < size.width; ++u) {
                        if (alpha.at<std::uint16_t>(v, u) != 0) {
                            nearest = std::min(nearest, (u - x) * (u - x) + (v - y) * (v - y));
                        }
                    }
                }
                const cv::Point way = source - cv::Point(x, y);
                EXPECT_EQ(way.dot(way), nearest) << x << ", " << y;
                EXPECT_NE(alpha.at<std::uint16_t>(source), 0);
            }
        }
    }
    const cv::Mat nothing = foregroundColours(cv::Mat(4, 4, CV_8UC3, cv::Scalar::all(9)),
                                              cv::Mat::zeros(4, 4, CV_16UC1), Unseen::kNearest);
    EXPECT_EQ(cv::countNonZero(nothing.reshape(1)), 0);
}
