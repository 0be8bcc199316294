#include "session/strokes.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "interface/segmentation_core.h"
#include "session/errors.h"

namespace {

using Points = std::vector<cv::Point>;

Step stepOf(Operation operation, Points points) {
    Step step;
    step.operation = operation;
    step.points = std::move(points);
    return step;
}

// The marks as text, a row a line; '.' is none.
std::string picture(const cv::Mat& markers) {
    std::string text;
    for (int y = 0; y < markers.rows; ++y) {
        for (int x = 0; x < markers.cols; ++x) {
            const int code = markers.at<int>(y, x);
            text += code == SEGCORE_MARK_NONE ? '.' : static_cast<char>('0' + code);
        }
        text += '\n';
    }
    return text;
}

double distanceTo(const Points& path, cv::Point2d pixel) {
    double nearest = cv::norm(pixel - cv::Point2d(path.front()));
    for (std::size_t i = 1; i < path.size(); ++i) {
        const cv::Point2d from = path[i - 1];
        const cv::Point2d along = cv::Point2d(path[i]) - from;
        const double t = (pixel - from).dot(along) / along.dot(along);
        nearest = std::min(nearest, cv::norm(pixel - from - along * std::clamp(t, 0.0, 1.0)));
    }
    return nearest;
}

TEST(Strokes, BrushesAreDiscsAlongTheirPath) {
    for (const int radius : {1, 2, 5, 9}) {
        Step step = stepOf(Operation::kBrushAdd, {{12, 12}, {25, 12}, {20, 31}});
        step.radius = radius;
        const Request request = requestFor(step, {44, 48});
        EXPECT_EQ(request.strokeType, SEGCORE_BRUSH_ADD);
        for (int y = 0; y < 48; ++y) {
            for (int x = 0; x < 44; ++x) {
                // The imaging library's thick slanted lines reach further than told.
                const double beyond = distanceTo(step.points, cv::Point2d(x, y)) - radius;
                const int code = request.markers.at<int>(y, x);
                if (beyond <= 0.0 || beyond > 2.0) {
                    ASSERT_EQ(code, beyond <= 0.0 ? SEGCORE_MARK_OBJECT : SEGCORE_MARK_NONE)
                        << "radius " << radius << " at " << x << "," << y;
                }
            }
        }
    }
}

TEST(Strokes, BrushesGoThereAndBackAgain) {
    // Neither the turning point nor the start twice.
    const Points path{{2, 2}, {5, 2}, {5, 3}};
    EXPECT_EQ(requestFor(stepOf(Operation::kBrushAdd, path), {8, 6}).stroke,
              (Points{{2, 2}, {3, 2}, {4, 2}, {5, 2}, {5, 3}, {5, 2}, {4, 2}, {3, 2}}));
}

TEST(Strokes, TheThinnestBrushIsItsPath) {
    Step step = stepOf(Operation::kBrushRemove, {{1, 1}, {3, 3}});
    step.radius = 0;
    const Request request = requestFor(step, {5, 5});
    EXPECT_EQ(picture(request.markers), ".....\n.1...\n..1..\n...1.\n.....\n");
    EXPECT_EQ(request.strokeType, SEGCORE_BRUSH_REMOVE);
    EXPECT_EQ(request.stroke, (Points{{1, 1}, {2, 2}, {3, 3}, {2, 2}}));
}

TEST(Strokes, ABrushWithoutRadiusHasAHundredthOfTheMeanSide) {
    // The mean side of 900 x 400 is 600. Row 50 shows the diameter.
    const Request request = requestFor(stepOf(Operation::kBrushAdd, {{100, 50}}), {900, 400});
    EXPECT_EQ(cv::countNonZero(request.markers.row(50)), 2 * 6 + 1);
    // And two pixels at least.
    const Request small = requestFor(stepOf(Operation::kBrushAdd, {{9, 9}}), {20, 20});
    EXPECT_EQ(cv::countNonZero(small.markers.row(9)), 2 * 2 + 1);
}

TEST(Strokes, BoxesAndLoopsHoldTheirBorder) {
    const Request box = requestFor(stepOf(Operation::kBox, {{1, 1}, {3, 2}}), {5, 4});
    EXPECT_EQ(picture(box.markers), ".....\n.444.\n.444.\n.....\n");
    EXPECT_EQ(box.stroke, (Points{{1, 1}, {3, 1}, {3, 2}, {1, 2}}));
    EXPECT_EQ(box.strokeType, SEGCORE_LOOP_ADD);

    const Points triangle{{0, 0}, {4, 0}, {0, 4}};
    const Request loop = requestFor(stepOf(Operation::kLoopRemove, triangle), {5, 5});
    EXPECT_EQ(picture(loop.markers), "44444\n4444.\n444..\n44...\n4....\n");
    EXPECT_EQ(loop.stroke, triangle);
    EXPECT_EQ(loop.strokeType, SEGCORE_LOOP_REMOVE);
}

TEST(Strokes, EditsSayWhatPixelsAreAndHaveNoStroke) {
    Step step = stepOf(Operation::kLoopRemove, {{0, 0}, {1, 0}, {1, 1}, {0, 1}});
    step.edit = true;
    const Request request = requestFor(step, {3, 2});
    EXPECT_EQ(picture(request.markers), "11.\n11.\n");
    EXPECT_TRUE(request.stroke.empty());
}

TEST(Strokes, RefuseWhatCannotBeDrawn) {
    Step wide = stepOf(Operation::kBrushAdd, {{1, 1}});
    wide.radius = 16384;
    for (const Step& step :
         {stepOf(Operation::kBox, {{3, 1}, {1, 2}}), stepOf(Operation::kLoopAdd, {{0, 0}, {1, 1}}),
          stepOf(Operation::kBrushAdd, {}), stepOf(Operation::kBrushAdd, {{1, 1}, {4, 1}}),
          stepOf(Operation::kBrushAdd, {{0, -1}}), wide}) {
        EXPECT_THROW(requestFor(step, {4, 4}), UserError);
    }
}

}  // namespace
