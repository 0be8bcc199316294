#include "measure/grab_cut.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include "support/scenes.h"

namespace {

cv::Mat pictureOf(const Scene& scene) {
    std::vector<std::uint32_t> pixels = scene.pixels;
    cv::Mat picture;
    cv::cvtColor(cv::Mat(scene.height, scene.width, CV_8UC4, pixels.data()), picture,
                 cv::COLOR_BGRA2BGR);
    return picture;
}

Step stepOf(Operation operation, std::vector<cv::Point> points) {
    Step step;
    step.operation = operation;
    step.points = std::move(points);
    step.radius = 4;
    return step;
}

// Beside the true one; an enlarged edge is a pixel or two off.
int wrongPixels(const Scene& scene, const cv::Mat& mask) {
    int wrong = 0;
    for (int i = 0; i < scene.width * scene.height; ++i) {
        const int x = i % scene.width;
        const int y = i / scene.width;
        wrong += (mask.at<std::uint8_t>(y, x) == 255) != scene.isObject(x, y) ? 1 : 0;
    }
    return wrong;
}

TEST(GrabCut, FindsTheObjectFromEveryStart) {
    const Scene scene = makeDiscScene(320, 240);  // a disc of 11,300 pixels
    for (const Step& start : {stepOf(Operation::kBox, {{90, 50}, {230, 190}}),
                              stepOf(Operation::kLoopAdd, {{20, 40}, {300, 40}, {160, 235}}),
                              stepOf(Operation::kBrushAdd, {{150, 110}, {170, 130}})}) {
        GrabCut grabCut(pictureOf(scene), {160, 120}, kGrabCutIterations);
        EXPECT_EQ(cv::countNonZero(grabCut.mask()), 0);
        grabCut.apply(start);
        EXPECT_LT(wrongPixels(scene, grabCut.mask()), 600) << nameOf(start.operation);
        // What was marked stays what it was marked as.
        grabCut.apply(stepOf(Operation::kBrushRemove, {{160, 120}}));
        grabCut.apply(stepOf(Operation::kBrushAdd, {{20, 20}}));
        EXPECT_EQ(grabCut.mask().at<std::uint8_t>(120, 160), 0);
        EXPECT_EQ(grabCut.mask().at<std::uint8_t>(20, 20), 255);
    }
}

TEST(GrabCut, NeedsBothKindsOfPixelsToCut) {
    const Scene scene = makeDiscScene(40, 30);
    GrabCut grabCut(pictureOf(scene), reducedSize({40, 30}, kGrabCutPixels), kGrabCutIterations);
    grabCut.apply(stepOf(Operation::kBox, {{0, 0}, {39, 29}}));
    EXPECT_EQ(cv::countNonZero(grabCut.mask()), 40 * 30);
    grabCut.apply(stepOf(Operation::kBrushRemove, {{2, 2}, {37, 2}, {37, 27}, {2, 27}, {2, 2}}));
    EXPECT_LT(wrongPixels(scene, grabCut.mask()), 200);
    EXPECT_EQ(reducedSize({6000, 4000}, 76800), cv::Size(339, 226));
}

}  // namespace
