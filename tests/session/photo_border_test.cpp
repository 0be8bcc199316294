#include <gtest/gtest.h>

#include "session/photo_border.h"
#include "session/session.h"
#include "steps.h"
#include "support/scenes.h"

namespace {

Step removed(std::vector<cv::Point> corners, bool toBorder) {
    Step step = stepOf(Operation::kLoopRemove, std::move(corners));
    step.correction = Correction::kTouchUp;
    step.toBorder = toBorder;
    return step;
}

// What is left of background in the lower right corner that was added and is taken out by a loop.
cv::Mat leftInCorner(cv::Size size, bool toBorder) {
    const Scene scene = makeDiscScene(size.width, size.height);
    const Photo photo{scene.width, scene.height, scene.pixels};
    SessionHost host;
    Stats stats;
    Session session(photo, host, stats);
    session.apply(stepOf(Operation::kBox, {{size.width / 5, size.height / 10},
                                           {size.width * 4 / 5, size.height * 9 / 10}}));
    const cv::Mat before = session.result().clone();
    const cv::Point low(size.width - 60, size.height - 50);
    const cv::Point high(size.width - 1, size.height - 1);
    session.apply(
        editOf(stepOf(Operation::kLoopAdd, {low, {high.x, low.y}, high, {low.x, high.y}})));
    const cv::Point wide = low - cv::Point(9, 9);
    session.apply(removed({wide, {high.x, wide.y}, high, {wide.x, high.y}}, toBorder));
    return session.result() & ~before;
}

// A loop to the border leaves a line there, and nothing else, unless the session takes it along.
TEST(PhotoBorder, IsWhereTheEngineEnds) {
    for (const cv::Size size : {cv::Size(500, 400), cv::Size(481, 321), cv::Size(1207, 905)}) {
        SCOPED_TRACE(testing::Message() << size);
        const cv::Mat left = leftInCorner(size, false);
        const cv::Size part = changeablePart(size);
        EXPECT_GE(cv::countNonZero(left.rowRange(part.height + 1, size.height)), 50);
        EXPECT_GE(cv::countNonZero(left.colRange(part.width + 1, size.width)), 40);
        EXPECT_EQ(cv::countNonZero(left(cv::Rect({0, 0}, part))), 0);
        EXPECT_EQ(cv::countNonZero(leftInCorner(size, true)), 0);
    }
}

// 500 x 400 pixels are reduced by 1.6137 to 309 x 247, which go back to 498 x 398. Up to one pixel more
// is lost where a rectangle's start and length are rounded each.
TEST(PhotoBorder, GetsWhatTheNearestPixelsHaveBecome) {
    const cv::Size photo(500, 400);
    ASSERT_EQ(changeablePart(photo), cv::Size(497, 397));
    EXPECT_EQ(changeablePart({320, 240}), cv::Size(320, 240));

    cv::Mat before = cv::Mat::zeros(photo, CV_8UC1);
    before(cv::Rect(100, 300, 400, 100)).setTo(255);
    cv::Mat after = before.clone();
    after(cv::Rect(200, 350, 50, 47)).setTo(0);   // taken out down to where the engine ends
    before(cv::Rect(300, 350, 50, 47)).setTo(0);  // out before, but for the line
    after(cv::Rect(300, 350, 50, 47)).setTo(0);
    cv::Mat expected = after.clone();
    carryToBorder({}, before, after);
    expected(cv::Rect(200, 397, 50, 3)).setTo(0);
    EXPECT_EQ(cv::norm(after, expected, cv::NORM_INF), 0.0);

    const auto markOf = [](cv::Rect where, bool removes, bool isCertain) {
        return BorderMark{
            {where, cv::Mat(where.size(), CV_8UC1, cv::Scalar(1))}, removes, isCertain};
    };
    // A loop takes what the engine left in it, not what the engine kept; it adds nothing.
    carryToBorder({markOf({310, 390, 20, 10}, true, false), markOf({0, 390, 20, 10}, true, false),
                   markOf({400, 390, 20, 10}, true, false)},
                  before, after);
    expected(cv::Rect(310, 397, 20, 3)).setTo(0);
    EXPECT_EQ(cv::norm(after, expected, cv::NORM_INF), 0.0);
    // A brush says what it covers; in the corner, too.
    carryToBorder({markOf({498, 398, 2, 2}, true, true), markOf({10, 399, 5, 1}, false, true)},
                  before, after);
    expected(cv::Rect(498, 398, 2, 2)).setTo(0);
    expected(cv::Rect(10, 399, 5, 1)).setTo(255);
    EXPECT_EQ(cv::norm(after, expected, cv::NORM_INF), 0.0);
}

}  // namespace
