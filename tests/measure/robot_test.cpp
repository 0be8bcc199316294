#include "measure/robot.h"

#include <gtest/gtest.h>
#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "session/strokes.h"

namespace {

// A mask and the true one, both empty at first.
struct Masks {
    explicit Masks(cv::Size size)
        : mask(size, CV_8UC1, cv::Scalar(0)), truth(size, CV_8UC1, cv::Scalar(0)) {}

    // '+' is missing and '-' too much; 'x' is in the mask but does not count.
    explicit Masks(const std::vector<std::string>& rows)
        : Masks(cv::Size(static_cast<int>(rows[0].size()), static_cast<int>(rows.size()))) {
        for (int i = 0; i < mask.rows * mask.cols; ++i) {
            const char c = rows[static_cast<std::size_t>(i / mask.cols)]
                               [static_cast<std::size_t>(i % mask.cols)];
            mask.data[i] = c == '-' || c == 'x' ? 255 : 0;
            truth.data[i] = c == '+' ? 255 : c == 'x' ? 128 : 0;
        }
    }

    std::optional<Step> stroke() const { return robotStroke(mask, truth); }

    cv::Mat mask;
    cv::Mat truth;
};

TEST(Robot, PaintsOverTheLargestWrongRegion) {
    struct Case {
        std::vector<std::string> picture;
        Operation operation;
        std::vector<cv::Point> points;
    };
    for (const Case& wrong : {
             // Larger, not deeper. The deepest pixel that comes first is an end already.
             Case{{"++++++++++", "..........", "---.......", "---.......", "---......."},
                  Operation::kBrushAdd,
                  {{9, 0}, {8, 0}, {7, 0}, {6, 0}, {5, 0}, {4, 0}, {3, 0}, {2, 0}, {1, 0}, {0, 0}}},
             // The middle alone is two pixels from the edge, which the border is, too.
             Case{{"---..+", "---..+", "---..+", "......"}, Operation::kBrushRemove, {{1, 1}}},
             // Pixels that do not count separate nothing from the border and are no region.
             Case{{"xxxxx", "x.-xx", "xx-xx"}, Operation::kBrushRemove, {{2, 2}, {2, 1}}},
             // Corners join no region.
             Case{{"+...", ".+..", "..+.", "--.."}, Operation::kBrushRemove, {{1, 3}, {0, 3}}},
             // Of equally far ends the first is where the stroke begins.
             Case{{".+.", "+++"}, Operation::kBrushAdd, {{0, 1}, {1, 0}, {2, 1}}},
             // Of equals the first.
             Case{{"...--", "+....", "+...."}, Operation::kBrushRemove, {{4, 0}, {3, 0}}},
         }) {
        const std::optional<Step> stroke = Masks(wrong.picture).stroke();
        ASSERT_TRUE(stroke) << wrong.picture[0];
        EXPECT_EQ(stroke->operation, wrong.operation) << wrong.picture[0];
        EXPECT_EQ(stroke->points, wrong.points) << wrong.picture[0];
        EXPECT_EQ(stroke->radius, 0) << wrong.picture[0];
    }
    EXPECT_FALSE(Masks({"..x", "xxx"}).stroke());
}

// Of 120 x 60 pixels the middle row is 30 from the first one outside, and the core reaches to 16.
TEST(Robot, FollowsTheCoreThroughTheDeepestPoint) {
    Masks masks({400, 300});
    masks.truth(cv::Rect(100, 50, 120, 60)) = 255;
    const std::optional<Step> stroke = masks.stroke();
    ASSERT_TRUE(stroke);
    EXPECT_EQ(stroke->points.front(), cv::Point(204, 94));
    EXPECT_EQ(stroke->points.back(), cv::Point(115, 65));
    ASSERT_EQ(stroke->points.size(), 90U);  // 75 columns to the deepest point, 14 onwards
    EXPECT_EQ(stroke->points[75], cv::Point(129, 79));
    EXPECT_EQ(stroke->radius, 3);  // of a mean side of 346
}

// A disc of 6 pixels is 5.6 deep, since the nearest pixel outside is one beside its tip.
TEST(Robot, TakesABrushOfHalfTheDepth) {
    Masks masks({1000, 900});
    cv::circle(masks.mask, {50, 60}, 6, cv::Scalar(255), cv::FILLED);
    const std::optional<Step> stroke = masks.stroke();
    ASSERT_TRUE(stroke);
    EXPECT_EQ(stroke->operation, Operation::kBrushRemove);
    EXPECT_EQ(stroke->radius, 2);
    EXPECT_EQ(std::count(stroke->points.begin(), stroke->points.end(), cv::Point(50, 60)), 1);
}

cv::Mat blobs(cv::RNG& generator, cv::Size size) {
    cv::Mat noise(size, CV_32FC1);
    generator.fill(noise, cv::RNG::NORMAL, 0.0, 1.0);
    cv::GaussianBlur(noise, noise, cv::Size(), generator.uniform(1.0, 30.0));
    return noise > 0.0;
}

// Takes the pixels that hang together with this one at their sides away, and counts them.
int takeRegion(cv::Mat& wrong, cv::Point pixel) {
    return cv::floodFill(wrong, pixel, cv::Scalar(0), nullptr, {}, {}, 4);
}

TEST(Robot, PaintsNothingThatIsRight) {
    cv::RNG generator(5);
    int thick = 0;
    for (int round = 0; round < 40; ++round) {
        const cv::Size size(generator.uniform(100, 500), generator.uniform(100, 500));
        Masks masks(size);
        masks.mask = blobs(generator, size);
        masks.truth = blobs(generator, size);
        masks.truth.setTo(128, blobs(generator, size));
        const std::optional<Step> stroke = masks.stroke();
        ASSERT_TRUE(stroke);
        cv::Mat missing = (masks.mask == 0) & (masks.truth == 255);
        cv::Mat surplus = (masks.mask == 255) & (masks.truth == 0);
        cv::Mat& wrong = removes(stroke->operation) ? surplus : missing;
        const cv::Mat painted = requestFor(*stroke, size).markers != 0;
        EXPECT_EQ(cv::countNonZero(painted & ~wrong), 0) << round;
        const int taken = takeRegion(wrong, stroke->points[0]);
        EXPECT_EQ(cv::countNonZero(painted & wrong), 0) << round;
        for (int i = 0; i < size.area(); ++i) {
            for (cv::Mat* kind : {&missing, &surplus}) {
                if (kind->data[i] != 0) {
                    EXPECT_LE(takeRegion(*kind, {i % size.width, i / size.width}), taken) << round;
                }
            }
        }
        thick += *stroke->radius > 0 ? 1 : 0;
    }
    EXPECT_GT(thick, 20);
}

}  // namespace
