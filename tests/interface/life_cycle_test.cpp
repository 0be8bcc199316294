// The photograph in and out, and the engine's life.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "interface/engine_state.h"
#include "interface/segmentation_core.h"
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

}  // namespace
