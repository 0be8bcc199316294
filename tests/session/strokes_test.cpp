#include <gtest/gtest.h>
#include <algorithm>

#include "interface/segmentation_core.h"
#include "session/errors.h"
#include "session/strokes.h"
#include "steps.h"

namespace {

using Points = std::vector<cv::Point>;

// The marks as text, a row a line; '.' is none.
std::string picture(const cv::Mat& markers) {
    std::string text;
    for (int y = 0; y < markers.rows; ++y) {
        for (int x = 0; x < markers.cols; ++x) {
            text += ".1234"[markers.at<std::uint8_t>(y, x)];
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
        const Step step = stepOf(Operation::kBrushAdd, {{12, 12}, {25, 12}, {20, 31}}, radius);
        const cv::Mat markers = requestFor(step, {44, 48}).markers;
        for (int i = 0; i < static_cast<int>(markers.total()); ++i) {
            const cv::Point at(i % 44, i / 44);
            // The imaging library's thick slanted lines reach further than told.
            const double beyond = distanceTo(step.points, at) - radius;
            if (beyond <= 0.0 || beyond > 2.0) {
                ASSERT_EQ(markers.at<std::uint8_t>(at),
                          beyond <= 0.0 ? SEGCORE_MARK_OBJECT : SEGCORE_MARK_NONE)
                    << "radius " << radius << " at " << at;
            }
        }
    }
}

// Only the part of the photograph around a mark is drawn on.
TEST(Strokes, CoverWhatDrawingOnTheWholePhotographCovers) {
    cv::RNG generator(11);
    const auto upTo = [&generator](int last) { return generator.uniform(0, last + 1); };
    for (int round = 0; round < 500; ++round) {
        const cv::Size photo(20 + upTo(300), 20 + upTo(300));
        const int radius = upTo(40);
        Points points(static_cast<std::size_t>(3 + upTo(3)));
        for (cv::Point& point : points) {
            point = {upTo(photo.width - 1), upTo(photo.height - 1)};
        }
        const bool isLoop = round % 3 == 0;
        cv::Mat whole = cv::Mat::zeros(photo, CV_8UC1);
        isLoop ? fillLoop(whole, points, SEGCORE_MARK_CANDIDATE)
               : drawBrush(whole, points, radius, SEGCORE_MARK_OBJECT);
        const Operation operation = isLoop ? Operation::kLoopAdd : Operation::kBrushAdd;
        const Request request = requestFor(stepOf(operation, points, radius), photo);
        ASSERT_EQ(cv::norm(request.markers, whole, cv::NORM_INF), 0.0) << round;
    }
}

TEST(Strokes, ABrushWithoutRadiusHasAHundredthOfTheMeanSide) {
    // The mean side of 900 x 400 is 600. Row 50 shows the diameter.
    const Request request = requestFor(stepOf(Operation::kBrushAdd, {{100, 50}}), {900, 400});
    EXPECT_EQ(cv::countNonZero(request.markers.row(50)), 2 * 6 + 1);
    // And two pixels at least.
    const Request small = requestFor(stepOf(Operation::kBrushAdd, {{9, 9}}), {20, 20});
    EXPECT_EQ(cv::countNonZero(small.markers.row(9)), 2 * 2 + 1);
}

struct Drawn {
    Step step;
    int type;
    const char* marks;
    Points stroke;
};

TEST(Strokes, AreMarksAndALine) {
    for (const Drawn& drawn : std::vector<Drawn>{
             // Boxes and loops hold their border. The photograph's size means its last pixel.
             {stepOf(Operation::kBox, {{1, 1}, {3, 2}}),
              SEGCORE_LOOP_ADD,
              ".....\n.444.\n.444.\n.....\n",
              {{1, 1}, {3, 1}, {3, 2}, {1, 2}}},
             {stepOf(Operation::kBox, {{2, 2}, {5, 4}}),
              SEGCORE_LOOP_ADD,
              ".....\n.....\n..444\n..444\n",
              {{2, 2}, {4, 2}, {4, 3}, {2, 3}}},
             {stepOf(Operation::kLoopRemove, {{0, 0}, {3, 0}, {0, 3}}),
              SEGCORE_LOOP_REMOVE,
              "4444.\n444..\n44...\n4....\n",
              {{0, 0}, {3, 0}, {0, 3}}},
             // A brush there and back again, neither the turning point nor the start twice.
             {stepOf(Operation::kBrushRemove, {{0, 0}, {2, 2}, {2, 3}}, 0),
              SEGCORE_BRUSH_REMOVE,
              "1....\n.1...\n..1..\n..1..\n",
              {{0, 0}, {1, 1}, {2, 2}, {2, 3}, {2, 2}, {1, 1}}},
             {editOf(stepOf(Operation::kLoopRemove, {{0, 0}, {1, 0}, {1, 1}, {0, 1}})),
              SEGCORE_LOOP_REMOVE,
              "11...\n11...\n.....\n.....\n",
              {}}}) {
        const Request request = requestFor(drawn.step, {5, 4});
        EXPECT_EQ(picture(request.markers), drawn.marks);
        EXPECT_EQ(request.stroke, drawn.stroke);
        EXPECT_EQ(request.strokeType, drawn.type);
    }
}

TEST(Strokes, RefuseWhatCannotBeDrawn) {
    for (const Step& step :
         {stepOf(Operation::kBox, {{3, 1}, {1, 2}}), stepOf(Operation::kLoopAdd, {{0, 0}, {1, 1}}),
          stepOf(Operation::kBrushAdd, {}), stepOf(Operation::kBrushAdd, {{1, 1}, {4, 1}}),
          stepOf(Operation::kBrushAdd, {{0, -1}}), stepOf(Operation::kBrushAdd, {{1, 1}}, 16384)}) {
        EXPECT_THROW(requestFor(step, {4, 4}), UserError);
    }
}

}  // namespace
