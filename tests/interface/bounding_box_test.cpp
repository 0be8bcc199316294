// The one-call entry from a rectangle.
#include <gtest/gtest.h>

#include "interface/engine_state.h"
#include "interface/segmentation_core.h"
#include "support/log_capture.h"
#include "support/scenes.h"

namespace {

using Mask = std::vector<std::uint8_t>;

class BoundingBox : public testing::Test {
  protected:
    ~BoundingBox() override {
        EXPECT_EQ(takeErrors(), Log{});
        deinitSegmentation();
    }
    static Mask segment(int left, int top, int right, int bottom) {
        const Scene& scene = discScene();
        Mask mask(scene.pixels.size(), 7);
        EXPECT_EQ(doSegmentationBB(scene.width, scene.height, scene.pixels.data(), left, top, right,
                                   bottom, mask.data()),
                  0);
        return mask;
    }
    const std::vector<int>& storedStroke = VORNSEMarker::currentStroke.m_points;
};

TEST_F(BoundingBox, StrokeRunsRoundTheRectangleOnce) {
    segment(80, 60, 82, 61);
    EXPECT_EQ(storedStroke, (std::vector<int>{80, 60, 81, 60, 82, 60, 82, 61, 81, 61, 80, 61}));
    // Inverted ones mark nothing: (50 - 60) + (90 - 20) = 60 points of the two upright sides.
    segment(60, 20, 50, 90);
    ASSERT_EQ(storedStroke.size(), 240U);
    EXPECT_EQ(storedStroke[0], 50);
    EXPECT_EQ(storedStroke[2 * 70], 60);
    segment(100, 100, 10, 10);
    EXPECT_TRUE(storedStroke.empty());
}

TEST_F(BoundingBox, RectangleIsClampedToThePhotograph) {
    EXPECT_EQ(segment(-50, -1, 160, 100000), segment(0, 0, 159, 119));
}

TEST_F(BoundingBox, DegenerateRectangleIsOnePixelWithoutStroke) {
    Mask mask = segment(80, 60, 80, 60);
    EXPECT_TRUE(storedStroke.empty());
    // Everything but the pixel is fixed background, and the region reaches ten pixels around it.
    mask[60 * 160 + 80] = 255;
    EXPECT_EQ(mask, Mask(mask.size(), 255));
    EXPECT_EQ(VORNSEMarker::m_xMinBBox, 70);
    EXPECT_EQ(pHybrid->m_cropHeight, 21);
}

}  // namespace
