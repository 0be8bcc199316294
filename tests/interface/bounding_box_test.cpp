// The one-call entry from a rectangle.
#include <gtest/gtest.h>

#include "interface/engine_state.h"
#include "interface/segmentation_core.h"
#include "support/host_session.h"
#include "support/log_capture.h"

namespace {

struct BoxResult {
    std::vector<std::uint8_t> mask;
    std::vector<int> stroke;
};

BoxResult segmentBox(const Scene& scene, int left, int top, int right, int bottom) {
    BoxResult result{std::vector<std::uint8_t>(scene.pixels.size(), 7), {}};
    EXPECT_EQ(doSegmentationBB(scene.width, scene.height, scene.pixels.data(), left, top, right,
                               bottom, result.mask.data()),
              0);
    result.stroke = VORNSEMarker::currentStroke.m_points;
    return result;
}

class BoundingBox : public testing::Test {
  protected:
    ~BoundingBox() override {
        deinitSegmentation();
        clearLog();
    }
};

TEST_F(BoundingBox, EqualsASessionWithItsOutlineAndInside) {
    const BoxResult result = segmentBox(discScene(), 40, 25, 120, 95);
    EXPECT_LT(discScene().errorRate(result.mask), 0.01);
    ASSERT_EQ(result.stroke.size(), 4U * (80 + 70));
    // The corners, and the last point.
    const auto expectPoint = [&](std::size_t number, int x, int y) {
        EXPECT_EQ(result.stroke[2 * number], x);
        EXPECT_EQ(result.stroke[2 * number + 1], y);
    };
    expectPoint(0, 40, 25);
    expectPoint(80, 120, 25);
    expectPoint(150, 120, 95);
    expectPoint(230, 40, 95);
    expectPoint(299, 40, 26);
    EXPECT_EQ(takeErrors(), Log{});

    HostSession session(discScene());
    session.request(result.stroke, session.rectangle(40, 25, 81, 71, SEGCORE_MARK_CANDIDATE),
                    SEGCORE_LOOP_ADD);
    EXPECT_EQ(session.mask, result.mask);
}

TEST_F(BoundingBox, HostGoesOnAfterwards) {
    HostSession session(makeDiscScene(200, 120));
    session.box(20, 25, 90, 95);
    const Scene& next = discScene();
    const BoxResult result = segmentBox(next, 40, 25, 120, 95);
    EXPECT_FALSE(canUndo());
    EXPECT_GT(session.fetchOutline().size(), 1U);
    session.photo = next.pixels;
    session.mask.resize(next.pixels.size());
    session.redo();
    EXPECT_EQ(session.mask, result.mask);
    EXPECT_NE(session.blended, next.pixels);
}

TEST_F(BoundingBox, RectangleIsClampedToThePhotograph) {
    const BoxResult inside = segmentBox(discScene(), 0, 0, 159, 119);
    EXPECT_EQ(segmentBox(discScene(), -50, -1, 160, 100000).mask, inside.mask);
    EXPECT_EQ(takeErrors(), Log{});
}

TEST_F(BoundingBox, DegenerateRectangleIsOnePixelWithoutStroke) {
    const BoxResult result = segmentBox(discScene(), 80, 60, 80, 60);
    EXPECT_TRUE(result.stroke.empty());
    EXPECT_EQ(takeErrors(), Log{});
    // Everything but the pixel is fixed background, and the region reaches ten pixels around it.
    for (std::size_t i = 0; i < result.mask.size(); ++i) {
        ASSERT_TRUE(i == 60 * 160 + 80 || result.mask[i] == 255);
    }
    EXPECT_EQ(VORNSEMarker::m_xMinBBox, 70);
    EXPECT_EQ(pHybrid->m_cropHeight, 21);
}

TEST_F(BoundingBox, InvertedRectangleMarksNothing) {
    // (50 - 60) + (90 - 20) = 60 points of the two upright sides.
    const BoxResult result = segmentBox(discScene(), 60, 20, 50, 90);
    ASSERT_EQ(result.stroke.size(), 240U);
    EXPECT_EQ(result.stroke[0], 50);
    EXPECT_EQ(result.stroke[2 * 70], 60);
    EXPECT_TRUE(segmentBox(discScene(), 100, 100, 10, 10).stroke.empty());
    EXPECT_EQ(takeErrors(), Log{});
}

}  // namespace
