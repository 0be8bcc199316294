// The photograph in and out, and the engine's life.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "interface/engine_state.h"
#include "interface/segmentation_core.h"
#include "support/host_session.h"
#include "support/log_capture.h"

namespace {

TEST(LifeCycle, PixelWordsKeepTheirChannelsAndGetAnOpaqueAlpha) {
    const std::vector<std::uint32_t> words{0x12345678U, 0xFFFFFFFFU, 0U, 0x00FF0001U};
    setSourceImage(2, 2, words.data());
    EXPECT_EQ(rowOf(VORNSEMarker::m_originalImage, 0)[0], 0x78);
    std::vector<std::uint32_t> out(4);
    copySourceImage(out.data());
    EXPECT_EQ(out,
              (std::vector<std::uint32_t>{0xFF345678U, 0xFFFFFFFFU, 0xFF000000U, 0xFFFF0001U}));
    deinitSegmentation();
}

TEST(LifeCycle, ResetForgetsTheEditAndKeepsPhotographAndEngine) {
    HostSession session(discScene());
    session.box(35, 20, 125, 100);
    const std::vector<std::uint8_t> mask = session.mask;
    const VORNSEHybrid* engine = pHybrid;
    resetSegmentationInterface();
    EXPECT_EQ(pHybrid, engine);
    EXPECT_EQ(session.fetchOutline(), std::vector<int>{0});
    session.box(35, 20, 125, 100);
    EXPECT_EQ(session.mask, mask);
    EXPECT_FALSE(canUndo());
}

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
    HostSession session(discScene());
    session.box(35, 20, 125, 100);
    exitSegmentation();  // without a cancel it asks for nothing
    EXPECT_EQ(g_exitStatus, 0);
    cancelSegmentation();
    exitSegmentation();
    EXPECT_EQ(session.box(35, 20, 125, 100), -1);
    EXPECT_EQ(session.blended, session.photo);
    EXPECT_EQ(pHybrid, nullptr);
    EXPECT_EQ(VORNSEMarker::m_originalImage, nullptr);
    EXPECT_EQ(g_exitStatus, 1);
    EXPECT_EQ(session.box(35, 20, 125, 100), -1);  // still asked for
    clearLog();
    setSourceImage(session.width, session.height, session.photo.data());
    initSegmentationEngine(0);
    EXPECT_EQ(session.box(35, 20, 125, 100), 0);
    EXPECT_EQ(g_exitStatus, 0);
    EXPECT_EQ(takeErrors(), Log{});
}

TEST(LifeCycle, OtherResultCallsForgetTheExitAfterIt) {
    for (const auto call : {+[](HostSession& session) { session.cutOut(session.noMarkers()); },
                            +[](HostSession& session) { session.undo(); },
                            +[](HostSession& session) { session.redo(); }}) {
        HostSession session(discScene());
        session.box(35, 20, 125, 100);
        cancelSegmentation();
        exitSegmentation();
        call(session);
        EXPECT_EQ(pHybrid, nullptr);
        EXPECT_EQ(g_exitStatus, 0);
    }
    clearLog();
}

TEST(LifeCycle, SecondThreadCancelsAtAnyTime) {
    HostSession session(discScene());
    session.box(35, 20, 125, 100);
    const std::vector<std::uint8_t> mask = session.mask;
    int cancelled = 0;
    for (int delay = 0; delay < 40; ++delay) {
        initSegmentationEngine(0);
        session.mask.assign(session.mask.size(), 7);
        std::thread second([delay] {
            std::this_thread::sleep_for(std::chrono::milliseconds(delay));
            cancelSegmentation();
        });
        session.box(20, 10, 140, 110);
        second.join();
        if (session.mask.front() == 7) {
            ++cancelled;
            EXPECT_EQ(session.blended, session.photo);
            EXPECT_EQ(session.mask, std::vector<std::uint8_t>(session.mask.size(), 7));
        } else {
            EXPECT_LT(discScene().errorRate(session.mask), 0.01);
            session.undo();
            EXPECT_EQ(session.mask, mask);
        }
    }
    EXPECT_GT(cancelled, 0);
    clearLog();
}

}  // namespace
