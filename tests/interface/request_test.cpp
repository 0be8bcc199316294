// Stroke and marks on their way in.
#include <gtest/gtest.h>

#include "interface/engine_state.h"
#include "interface/segmentation_core.h"
#include "support/host_session.h"
#include "support/image_bytes.h"
#include "support/log_capture.h"

namespace {

TEST(Request, PointsOutsideMoveToTheBorderInTheHostsArrayToo) {
    const HostSession session(discScene());
    std::vector<int> points{-5, 7, session.width + 3, session.height, 159, 119};
    const std::vector<int> clamped{0, 7, 159, 119, 159, 119};
    EXPECT_EQ(setCurrentMarkerVector(5, points.data()), 0);  // takes the y behind an odd count
    EXPECT_EQ(points, clamped);
    EXPECT_EQ(VORNSEMarker::currentStroke.m_points, clamped);
    EXPECT_EQ(takeErrors(), Log{});
    EXPECT_EQ(setCurrentMarkerVector(0, points.data()), 0);
    EXPECT_TRUE(VORNSEMarker::currentStroke.m_points.empty());
}

TEST(Request, MarkerValuesSaturateToBytes) {
    const std::vector<std::uint32_t> photo(6);
    setSourceImage(3, 2, photo.data());
    const std::vector<int> values{300, -1, 4, 255, 256, 0};
    setMarkerImage(3, 2, values.data(), SEGCORE_BRUSH_REMOVE);
    setMarkerImage(3, 2, values.data(), SEGCORE_LOOP_REMOVE);  // replaces the pending one
    EXPECT_EQ(bytesOf(g_markerImage), (Bytes{255, 0, 4, 255, 255, 0}));
    EXPECT_EQ(VORNSEMarker::currentStroke.m_strokeType, SEGCORE_LOOP_REMOVE);
    EXPECT_EQ(freeLocalBuffers(), 0);
    EXPECT_EQ(g_markerImage, nullptr);
    deinitSegmentation();
}

}  // namespace
