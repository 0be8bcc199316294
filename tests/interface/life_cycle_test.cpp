// The engine's life, made by hand, ended by an exit, and made by the one-call entry.
#include <gtest/gtest.h>
#include <chrono>
#include <thread>

#include "interface/engine_state.h"
#include "support/host_session.h"
#include "support/log_capture.h"

namespace {

TEST(LifeCycle, EngineMadeByHandServesItsPhotograph) {
    HostSession session(makeDiscScene(400, 300));
    session.box(80, 60, 320, 240);
    const std::vector<std::uint8_t> mask = session.mask;
    deinitSegmentation();
    setSourceImage(session.width, session.height, session.photo.data());
    g_imageResizeFactor = 1.0F;
    pHybrid = new VORNSEHybrid;
    clearLog();
    session.box(80, 60, 320, 240);
    EXPECT_EQ(takeErrors().size(), 1U);  // not prepared yet
    VORNSEMarker::initializer();
    pHybrid->intializer();
    session.box(80, 60, 320, 240);
    EXPECT_EQ(session.mask, mask);
    EXPECT_EQ(takeErrors(), Log{});
}

TEST(LifeCycle, ExitTearsDownAfterTheNextResult) {
    using Call = void (*)(HostSession&);
    // A request leaves the exit asked for until one succeeds; the others forget it.
    for (const auto& [call, left] : std::initializer_list<std::pair<Call, int>>{
             {[](HostSession& host) { EXPECT_EQ(host.box(35, 20, 125, 100), -1); }, 1},
             {[](HostSession& host) { host.cutOut(host.noMarkers()); }, 0},
             {[](HostSession& host) { host.undo(); }, 0},
             {[](HostSession& host) { host.redo(); }, 0}}) {
        HostSession session(discScene());
        session.box(35, 20, 125, 100);
        exitSegmentation();  // without a cancel it asks for nothing
        EXPECT_EQ(g_exitStatus, 0);
        cancelSegmentation();
        exitSegmentation();
        call(session);
        EXPECT_EQ(pHybrid, nullptr);
        EXPECT_EQ(VORNSEMarker::m_originalImage, nullptr);
        EXPECT_EQ(g_exitStatus, left);
        EXPECT_EQ(session.box(35, 20, 125, 100), -left);
        setSourceImage(session.width, session.height, session.photo.data());
        initSegmentationEngine(0);
        EXPECT_EQ(session.box(35, 20, 125, 100), 0);
        EXPECT_EQ(g_exitStatus, 0);
    }
    clearLog();
}

TEST(LifeCycle, SecondThreadCancelsAtAnyTime) {
    HostSession session(discScene());
    const std::vector<std::uint8_t> untouched(session.mask.size(), 7);
    int cancelled = 0;
    for (int delay = 0; delay < 40; ++delay) {
        initSegmentationEngine(0);
        session.mask = untouched;
        std::thread second([delay] {
            std::this_thread::sleep_for(std::chrono::milliseconds(delay));
            cancelSegmentation();
        });
        session.box(20, 10, 140, 110);
        second.join();
        if (session.mask == untouched) {
            ++cancelled;
            EXPECT_EQ(session.blended, session.photo);
        } else {
            EXPECT_LT(discScene().errorRate(session.mask), 0.01);
        }
    }
    EXPECT_GT(cancelled, 0);
    clearLog();
}

using Mask = std::vector<std::uint8_t>;

struct BoundingBox : testing::Test {
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
