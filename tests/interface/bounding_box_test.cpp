// The one-call entry from a rectangle.
#include <gtest/gtest.h>

#include "interface/engine_state.h"
#include "interface/segmentation_core.h"
#include "support/host_session.h"
#include "support/log_capture.h"

namespace {

using Mask = std::vector<std::uint8_t>;

Mask segmentBox(const Scene& scene, int left, int top, int right, int bottom) {
    Mask mask(scene.pixels.size(), 7);
    EXPECT_EQ(doSegmentationBB(scene.width, scene.height, scene.pixels.data(), left, top, right,
                               bottom, mask.data()),
              0);
    return mask;
}

const std::vector<int>& storedStroke() {
    return VORNSEMarker::currentStroke.m_points;
}

class BoundingBox : public testing::Test {
  protected:
    ~BoundingBox() override {
        deinitSegmentation();
        clearLog();
    }
};

TEST_F(BoundingBox, EqualsASessionWithItsOutlineAndInside) {
    const Mask mask = segmentBox(discScene(), 40, 25, 120, 95);
    EXPECT_LT(discScene().errorRate(mask), 0.01);
    EXPECT_EQ(takeErrors(), Log{});
    HostSession session(discScene());
    session.request({40, 25, 120, 25, 120, 95, 40, 95},
                    session.rectangle(40, 25, 81, 71, SEGCORE_MARK_CANDIDATE), SEGCORE_LOOP_ADD);
    EXPECT_EQ(session.mask, mask);
}

TEST_F(BoundingBox, StrokeRunsRoundTheRectangleOnce) {
    segmentBox(discScene(), 80, 60, 82, 61);
    EXPECT_EQ(storedStroke(), (std::vector<int>{80, 60, 81, 60, 82, 60, 82, 61, 81, 61, 80, 61}));
}

TEST_F(BoundingBox, HostGoesOnAfterwards) {
    HostSession session(makeDiscScene(200, 120));
    session.box(20, 25, 90, 95);
    const Scene& next = discScene();
    const Mask mask = segmentBox(next, 40, 25, 120, 95);
    EXPECT_FALSE(canUndo());
    EXPECT_GT(session.fetchOutline().size(), 1U);
    session.photo = next.pixels;
    session.mask.resize(next.pixels.size());
    session.redo();
    EXPECT_EQ(session.mask, mask);
    EXPECT_NE(session.blended, next.pixels);
}

TEST_F(BoundingBox, RectangleIsClampedToThePhotograph) {
    const Mask inside = segmentBox(discScene(), 0, 0, 159, 119);
    EXPECT_EQ(segmentBox(discScene(), -50, -1, 160, 100000), inside);
    EXPECT_EQ(takeErrors(), Log{});
}

TEST_F(BoundingBox, DegenerateRectangleIsOnePixelWithoutStroke) {
    const Mask mask = segmentBox(discScene(), 80, 60, 80, 60);
    EXPECT_TRUE(storedStroke().empty());
    EXPECT_EQ(takeErrors(), Log{});
    // Everything but the pixel is fixed background, and the region reaches ten pixels around it.
    for (std::size_t i = 0; i < mask.size(); ++i) {
        ASSERT_TRUE(i == 60 * 160 + 80 || mask[i] == 255);
    }
    EXPECT_EQ(VORNSEMarker::m_xMinBBox, 70);
    EXPECT_EQ(pHybrid->m_cropHeight, 21);
}

TEST_F(BoundingBox, InvertedRectangleMarksNothing) {
    // (50 - 60) + (90 - 20) = 60 points of the two upright sides.
    segmentBox(discScene(), 60, 20, 50, 90);
    ASSERT_EQ(storedStroke().size(), 240U);
    EXPECT_EQ(storedStroke()[0], 50);
    EXPECT_EQ(storedStroke()[2 * 70], 60);
    segmentBox(discScene(), 100, 100, 10, 10);
    EXPECT_TRUE(storedStroke().empty());
    EXPECT_EQ(takeErrors(), Log{});
}

}  // namespace
