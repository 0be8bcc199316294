// Stroke and marks on their way in; mask, painted outline and outline points on their way out.
#include <gtest/gtest.h>

#include "history/undo_redo_history.h"
#include "interface/engine_state.h"
#include "support/host_session.h"
#include "support/image_bytes.h"
#include "support/log_capture.h"

namespace {

constexpr std::uint32_t kYellow = 0xFFFFFF00U;

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

struct ResultTest : testing::Test {
    ~ResultTest() override { EXPECT_EQ(takeErrors(), Log{}); }
    static std::size_t at(int x, int y) { return static_cast<std::size_t>(y * 160 + x); }

    HostSession m_session{discScene()};
};

TEST_F(ResultTest, MaskBytesAreInvertedAndOnly255IsObject) {
    g_resultMask = createImage(4, 1, 1).release();
    const std::uint8_t bytes[] = {0, 255, 1, 254};
    std::copy(bytes, bytes + 4, rowOf(g_resultMask, 0));
    std::vector<std::uint8_t> mask(4);
    loadMaskImageInfo(mask.data());
    EXPECT_EQ(mask, (std::vector<std::uint8_t>{255, 0, 255, 255}));
}

TEST_F(ResultTest, SquareHasAnOutlineOfFourCornersFetchedOnce) {
    m_session.cutOut(m_session.rectangle(20, 30, 10, 10, SEGCORE_MARK_OBJECT));
    EXPECT_EQ(m_session.fetchOutline(),
              (std::vector<int>{1, 4, 20, 30, 20, 39, 29, 39, 29, 30, -1}));
    EXPECT_EQ(m_session.fetchOutline(), std::vector<int>{0});
    // Painted along the border, not in the middle and not apart from it.
    EXPECT_EQ(m_session.blended[at(20, 35)], kYellow);
    EXPECT_EQ(m_session.blended[at(25, 35)], m_session.photo[at(25, 35)]);
    EXPECT_EQ(m_session.blended[at(40, 35)], m_session.photo[at(40, 35)]);

    m_session.cutOut(m_session.rectangle(0, 0, 60, 60, SEGCORE_MARK_BACKGROUND));
    EXPECT_EQ(m_session.blended, m_session.photo);
    EXPECT_EQ(contours, nullptr);
    EXPECT_EQ(m_session.fetchOutline(), std::vector<int>{0});
}

// Other codes change nothing, and the unchanged copy is an entry of its own.
TEST_F(ResultTest, EditsLookAtObjectAndBackgroundMarksAlone) {
    m_session.cutOut(m_session.rectangle(20, 30, 10, 10, SEGCORE_MARK_OBJECT));
    const std::vector<std::uint8_t> first = m_session.mask;
    m_session.cutOut(m_session.rectangle(10, 10, 40, 40, SEGCORE_MARK_CANDIDATE));
    EXPECT_EQ(m_session.mask, first);
    EXPECT_EQ(VORNSEManageUndoRedo::m_current, 2);
    EXPECT_EQ(g_markerImage, nullptr);
    resetSegmentationInterface();
    EXPECT_EQ(m_session.fetchOutline(), std::vector<int>{0});
}

TEST_F(ResultTest, CallsWithoutAMaskShowThePhotographAndNeedNoBuffer) {
    setMarkerImage(160, 120, m_session.noMarkers().data(), SEGCORE_LOOP_ADD);
    for (const bool requests : {false, true}) {  // the step drops the marks
        m_session.blended.assign(m_session.blended.size(), 0);
        requests ? processSegment(1, 2, 3, m_session.blended.data(), nullptr)
                 : (undo(m_session.blended.data(), nullptr), 0);
        EXPECT_EQ(g_markerImage, nullptr);
        EXPECT_EQ(m_session.blended, m_session.photo);
        EXPECT_EQ(VORNSEManageUndoRedo::m_current, 0);
    }
    m_session.mask.assign(m_session.mask.size(), 7);
    m_session.redo();  // a cleared slot
    EXPECT_EQ(m_session.mask, std::vector<std::uint8_t>(m_session.mask.size(), 255));
}

TEST(SnapPath, FollowsOneColourOrTheStraightLine) {
    constexpr std::uint32_t x = 0x00FF0000U;  // red
    constexpr std::uint32_t o = 0x00000000U;
    constexpr std::uint32_t a = 0x80000000U;  // alpha does not count
    const std::uint32_t image[] = {
        o, x, x, a,  //
        a, x, x, o,  //
        x, o, o, x,
    };
    const auto path = [&image](int fromX, int toX, double alpha) {
        int* array = nullptr;
        int count = 0;
        segcore_snap_path(4, 3, image, fromX, 0, toX, 0, alpha, &array, &count);
        EXPECT_EQ(segcore_last_status(), SEGCORE_DONE);
        const std::vector<int> points(array, array + count);
        release_path_array(array);
        return points;
    };
    EXPECT_EQ(path(0, 3, 0.0), (std::vector<int>{0, 0, 0, 1, 1, 2, 2, 2, 3, 1, 3, 0}));
    EXPECT_EQ(path(3, 0, 1.0), (std::vector<int>{3, 0, 2, 0, 1, 0, 0, 0}));
    EXPECT_EQ(path(2, 2, 0.5), (std::vector<int>{2, 0}));
}

}  // namespace
