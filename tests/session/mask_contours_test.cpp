#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>
#include <random>

#include "session/mask_contours.h"
#include "support/filled_contours.h"

namespace {

// Level and upright sides in turn.
bool alternates(const std::vector<cv::Point>& corners) {
    bool wasLevel = corners.front().y == corners.back().y;
    for (std::size_t i = 1; i < corners.size(); ++i) {
        const cv::Point side = corners[i] - corners[i - 1];
        if ((side.x == 0) == (side.y == 0) || (side.y == 0) == wasLevel) {
            return false;
        }
        wasLevel = !wasLevel;
    }
    return true;
}

// The smallest of the filled contours that holds all of this one.
int parentByArea(const std::vector<cv::Mat>& filled, std::size_t contour) {
    int parent = -1;
    for (std::size_t other = 0; other < filled.size(); ++other) {
        const bool holds =
            other != contour && cv::countNonZero(filled[contour] & ~filled[other]) == 0;
        if (holds &&
            (parent < 0 || cv::countNonZero(filled[other]) <
                               cv::countNonZero(filled[static_cast<std::size_t>(parent)]))) {
            parent = static_cast<int>(other);
        }
    }
    return parent;
}

void expectContoursOf(const cv::Mat& mask) {
    const std::vector<Contour> contours = contoursOf(mask);
    std::vector<std::vector<cv::Point>> all;
    std::vector<cv::Mat> filled;
    int objects = 0;
    for (const Contour& contour : contours) {
        all.push_back(contour.corners);
        filled.push_back(filledEvenOdd({contour.corners}, mask.size()));
        objects += contour.isHole ? 0 : 1;
    }
    // Object pixels hold together at a corner, so that background does not.
    cv::Mat labels;
    EXPECT_EQ(objects, cv::connectedComponents(mask, labels, 8) - 1);
    EXPECT_EQ(cv::norm(filledEvenOdd(all, mask.size()), mask, cv::NORM_INF), 0.0);
    for (std::size_t i = 0; i < contours.size(); ++i) {
        const Contour& contour = contours[i];
        EXPECT_TRUE(alternates(contour.corners));
        // Clockwise on a screen around objects.
        EXPECT_EQ(cv::contourArea(contour.corners, true) < 0, contour.isHole);
        EXPECT_EQ(contour.parent, parentByArea(filled, i));
        const bool parentIsHole =
            contour.parent < 0 || contours[static_cast<std::size_t>(contour.parent)].isHole;
        EXPECT_NE(contour.isHole, parentIsHole);
    }
}

TEST(MaskContours, FillToTheMask) {
    std::mt19937 random(1);
    for (int trial = 0; trial < 400; ++trial) {
        cv::Mat mask(1 + trial % 9, 1 + trial / 9 % 11, CV_8UC1);
        const unsigned share = 1 + static_cast<unsigned>(trial) % 7;
        for (int i = 0; i < static_cast<int>(mask.total()); ++i) {
            mask.data[i] = random() % 8 < share ? 255 : 0;
        }
        expectContoursOf(mask);
        ASSERT_FALSE(HasFailure()) << mask;
    }
}

}  // namespace
