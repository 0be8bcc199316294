// Steps that find the whole object, and touch-ups between them.
#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/imgproc.hpp>

#include "interface/segmentation_core.h"
#include "session/errors.h"
#include "session/region_start.h"
#include "session/session.h"
#include "session/trusted_changes.h"
#include "steps.h"
#include "support/scenes.h"

namespace {

Step whole(Operation operation, std::vector<cv::Point> points, std::optional<int> radius = {}) {
    Step step = stepOf(operation, std::move(points), radius);
    step.correction = Correction::kWholeObject;
    return step;
}

Step touchUp(Step step) {
    step.correction = Correction::kTouchUp;
    return step;
}

cv::Mat drawn(const Step& step, cv::Size size) {
    return requestFor(step, size).markers != SEGCORE_MARK_NONE;
}

bool same(const cv::Mat& one, const cv::Mat& other) {
    return cv::norm(one, other, cv::NORM_INF) == 0.0;
}

// The disc has its middle at (80, 60) and a radius of 36.
const Step kBox = whole(Operation::kBox, {{30, 10}, {130, 110}});
const Step kAdd = whole(Operation::kBrushAdd, {{60, 60}, {90, 60}}, 2);
const Step kRemove = whole(Operation::kBrushRemove, {{100, 40}, {110, 40}}, 2);

struct Editor {
    explicit Editor(const Scene& scene = discScene())
        : photo{scene.width, scene.height, scene.pixels} {}

    cv::Mat apply(const Step& step) {
        session.apply(step);
        return session.result().clone();
    }
    double errorRate() const {
        cv::Mat bytes = ~session.result();
        return discScene().errorRate({bytes.begin<uchar>(), bytes.end<uchar>()});
    }

    SessionHost host;
    Stats stats;
    Photo photo;
    Session session{photo, host, stats};
};

cv::Mat resultOf(const std::vector<Step>& steps) {
    Editor editor;
    for (const Step& step : steps) {
        editor.apply(step);
    }
    return editor.session.result().clone();
}

TEST(WholeObject, DependsOnPhotographMarksAndLastResultAlone) {
    cv::Mat expected = resultOf({kBox, kAdd, kRemove});
    Editor editor;
    editor.apply(stepOf(Operation::kBox, {{0, 0}, {60, 60}}));
    editor.apply(stepOf(Operation::kUndo));
    editor.apply(kBox);
    const cv::Mat boxed = editor.session.result().clone();
    editor.apply(touchUp(kRemove));
    editor.apply(editOf(stepOf(Operation::kBrushAdd, {{3, 3}}, 2)));
    editor.apply(stepOf(Operation::kUndo));
    editor.apply(stepOf(Operation::kUndo));
    EXPECT_TRUE(same(editor.session.result(), boxed));
    editor.apply(kAdd);
    EXPECT_TRUE(same(editor.apply(kRemove), expected));
    editor.apply(stepOf(Operation::kUndo));
    EXPECT_TRUE(same(editor.apply(stepOf(Operation::kRedo)), expected));
}

TEST(WholeObject, RepeatsTheStartAndThePassesThatItChose) {
    const cv::Mat boxed = resultOf({kBox});
    Editor editor;
    const Step made = editor.session.apply(kBox);
    EXPECT_TRUE(made.passes.has_value());
    EXPECT_NE(regionStartNamed(made.start), nullptr);
    EXPECT_LT(editor.errorRate(), 0.01);
    editor.apply(stepOf(Operation::kUndo));
    EXPECT_TRUE(same(editor.apply(made), boxed));
    Step unknown = kBox;
    unknown.start = "nowhere";
    EXPECT_THROW(editor.apply(unknown), UserError);
    EXPECT_TRUE(same(editor.session.result(), boxed));
}

TEST(WholeObject, OnePassIsTheSingleRequest) {
    Step single = kBox;
    single.passes = 1;
    EXPECT_TRUE(same(resultOf({single}), resultOf({stepOf(Operation::kBox, kBox.points)})));
}

// Inside the box's line, on it, across it, outside, and at the photograph's border.
TEST(WholeObject, TakesMarksAsTheyAreWhereverTheyLie) {
    const cv::Size size(160, 120);
    const Step box = whole(Operation::kBox, {{30, 0}, {90, 110}});
    for (const auto& [from, to] : {std::pair{cv::Point(88, 50), cv::Point(88, 70)},
                                   {cv::Point(90, 50), cv::Point(90, 70)},
                                   {cv::Point(80, 40), cv::Point(110, 80)},
                                   {cv::Point(104, 50), cv::Point(104, 70)},
                                   {cv::Point(60, 0), cv::Point(80, 0)},
                                   {cv::Point(159, 30), cv::Point(159, 50)}}) {
        for (const Operation operation : {Operation::kBrushAdd, Operation::kBrushRemove}) {
            const Step stroke = whole(operation, {from, to}, 1);
            const cv::Mat found = resultOf({box, stroke});
            const cv::Mat marked = drawn(stroke, size);
            const int expected = operation == Operation::kBrushAdd ? cv::countNonZero(marked) : 0;
            EXPECT_EQ(cv::countNonZero(found & marked), expected) << from << nameOf(operation);
        }
    }
    // The box ends in the disc; a stroke beyond it brings in what lies around the stroke as well.
    const Step beyond = whole(Operation::kBrushAdd, {{104, 50}, {104, 70}}, 1);
    const cv::Mat found = resultOf({box, beyond});
    EXPECT_EQ(found.at<uchar>(60, 107), 255);
    EXPECT_EQ(cv::countNonZero(found.colRange(125, 160)), 0);
}

TEST(WholeObject, NeedsNoBox) {
    {
        Editor editor;
        editor.apply(kAdd);
        EXPECT_LT(editor.errorRate(), 0.02);
    }
    // What is alike elsewhere holds no mark, so it is not the object.
    Scene twice = discScene();
    for (int y = 0; y < 12; ++y) {
        for (int x = 0; x < 20; ++x) {
            twice.pixels[static_cast<std::size_t>(y * twice.width + x)] =
                twice.pixels[static_cast<std::size_t>((54 + y) * twice.width + 70 + x)];
        }
    }
    Editor other(twice);
    const cv::Mat found = other.apply(kAdd);
    EXPECT_EQ(cv::countNonZero(found(cv::Rect(0, 0, 20, 12))), 0);
    EXPECT_NE(cv::countNonZero(found), 0);
}

// Strokes alone mean all of the photograph, and a loop that comes later does not take that back.
TEST(WholeObject, OutgrowsALoopThatComesAfterStrokes) {
    Editor editor;
    editor.apply(kAdd);
    editor.apply(touchUp(stepOf(Operation::kLoopAdd, {{140, 100}, {155, 100}, {155, 115}})));
    editor.apply(whole(Operation::kBrushAdd, {{70, 80}, {90, 80}}, 2));
    EXPECT_LT(editor.errorRate(), 0.03);
}

TEST(WholeObject, FindsNothingInWhatIsToBeRemoved) {
    Editor editor;
    editor.apply(whole(Operation::kBox, {{30, 0}, {90, 110}}));
    ASSERT_EQ(cv::countNonZero(editor.session.result()), 0);
    const Step loop = stepOf(Operation::kLoopRemove, {{30, 10}, {130, 10}, {130, 110}, {30, 110}});
    EXPECT_EQ(cv::countNonZero(editor.apply(whole(Operation::kLoopRemove, loop.points))), 0);
    EXPECT_EQ(cv::countNonZero(editor.apply(touchUp(loop))), 0);
    EXPECT_EQ(cv::countNonZero(
                  editor.apply(touchUp(stepOf(Operation::kBrushRemove, {{70, 60}, {90, 60}}, 3)))),
              0);
}

TEST(TouchUp, ChangesNothingAwayFromTheStrokeAndIsKeptByLaterSteps) {
    Editor editor;
    const cv::Mat boxed = editor.apply(kBox);
    const Step dent = touchUp(stepOf(Operation::kBrushRemove, {{80, 28}, {80, 34}}, 3));
    const cv::Mat dented = editor.apply(dent);
    const cv::Mat changed = boxed != dented;
    ASSERT_GT(cv::countNonZero(changed), 0);
    cv::Mat near = cv::Mat::zeros(boxed.size(), CV_8UC1);
    drawBrush(near, dent.points, 3 + 7, 255);  // the brush and the engine's band around it
    EXPECT_EQ(cv::countNonZero(changed & ~near), 0);

    const cv::Mat later = editor.apply(kAdd);
    EXPECT_EQ(cv::countNonZero(later & changed), 0);
    const Step over = whole(Operation::kBrushAdd, {{80, 28}, {80, 34}}, 4);
    const cv::Mat covered = editor.apply(over);
    EXPECT_EQ(cv::countNonZero(~covered & drawn(over, covered.size())), 0);
}

// The stroke changes 6 pixels with it and is 2 itself, so 12 elsewhere are trusted and 13 are not.
TEST(WholeObject, TakesBackLargerChangesThanTheStrokes) {
    const cv::Mat before = cv::Mat::zeros(20, 40, CV_8UC1);
    const auto trusted = [](const cv::Mat& shown, const cv::Mat& found) {
        cv::Mat result = found.clone();
        keepTrustedChanges(shown, {cv::Rect(2, 2, 2, 1), {1, 2, CV_8UC1, cv::Scalar(255)}}, result);
        return result;
    };
    cv::Mat expected = before.clone();
    expected(cv::Rect(2, 2, 3, 2)).setTo(255);
    expected(cv::Rect(10, 5, 4, 3)).setTo(255);
    cv::Mat found = expected.clone();
    found(cv::Rect(20, 7, 13, 1)).setTo(255);
    EXPECT_TRUE(same(trusted(before, found), expected));
    EXPECT_TRUE(same(trusted(before, before), before));
    const cv::Mat withStroke = expected.clone();
    expected(cv::Rect(2, 2, 2, 1)).setTo(0);
    EXPECT_TRUE(same(trusted(withStroke, before), expected));
}

struct StopsAtWorkingMask : SessionHost {
    bool onProgress(const RequestProgress& progress) override {
        return progress.workingMask.empty() || --left > 0;
    }
    void throwIfInterrupted() override { ++asked; }
    int asked = 0;
    int left = 0;
};

TEST(WholeObject, GivenUpAnywhereLeavesTheSessionAsItWas) {
    const cv::Mat boxed = resultOf({kBox});
    const Scene& scene = discScene();
    const Photo photo{scene.width, scene.height, scene.pixels};
    StopsAtWorkingMask host;
    Stats stats;
    Session session(photo, host, stats);
    const int requests = static_cast<int>(kBoxStarts.size()) + 1;
    for (int at = 1; at <= requests; ++at) {
        host.left = at;
        EXPECT_THROW(session.apply(kBox), UserError) << at;
        EXPECT_FALSE(session.hasResult());
    }
    host.left = 1000;
    host.asked = 0;
    session.apply(kBox);
    EXPECT_GE(host.asked, requests);  // an interruption is heard before each request
    EXPECT_TRUE(same(session.result(), boxed));
    EXPECT_THROW(Session(photo, host, stats), UserError);  // one at a time
    EXPECT_TRUE(same(session.result(), boxed));
}

TEST(RegionStart, EnlargesSoThatReducingGivesTheSameBack) {
    cv::RNG random(1);
    for (int round = 0; round < 200; ++round) {
        const cv::Size small(random.uniform(1, 60), random.uniform(1, 60));
        const cv::Size large(small.width + random.uniform(0, 200),
                             small.height + random.uniform(0, 200));
        cv::Mat mask(small, CV_8UC1);
        random.fill(mask, cv::RNG::UNIFORM, 0, 2);
        cv::Mat reduced;
        cv::resize(enlargedTo(large, mask), reduced, small, 0, 0, cv::INTER_NEAREST);
        ASSERT_TRUE(same(reduced, mask)) << small << large;
    }
}

// Half object, half not. The object takes half of the upper and of the lower side, the left one and
// nothing of the right: half of all sides. It spans half of the width.
TEST(RegionStart, MeasuresHowFarColoursSetTheObjectApart) {
    Photo photo{40, 40, std::vector<std::uint32_t>(1600, 0xFF101010U)};
    cv::Mat object = cv::Mat::zeros(40, 40, CV_8UC1);
    object.colRange(0, 20).setTo(255);
    const cv::Mat region(40, 40, CV_8UC1, cv::Scalar(255));
    EXPECT_NEAR(separation(photo, region, object), 0.05 - 0.25, 1e-12);
    asImage(photo.words, photo.size()).colRange(0, 20).setTo(cv::Scalar(200, 16, 16, 255));
    EXPECT_NEAR(separation(photo, region, object), std::log(2.0) + 0.05 - 0.25, 1e-12);
    EXPECT_LT(separation(photo, region, cv::Mat::zeros(40, 40, CV_8UC1)), -0.5);
}

}  // namespace
