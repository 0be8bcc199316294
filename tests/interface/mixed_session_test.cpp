// Whole sessions: photographs of extreme sizes, and cancels from a second thread.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <thread>

#include "interface/segmentation_core.h"
#include "support/host_session.h"
#include "support/log_capture.h"

namespace {

// What every step of a session on a photograph of that size delivers.
auto resultsOfSession(int width, int height) {
    HostSession session(makeDiscScene(width, height));
    std::vector<std::vector<std::uint8_t>> masks;
    const auto keep = [&] {
        EXPECT_TRUE(std::all_of(session.mask.begin(), session.mask.end(),
                                [](std::uint8_t byte) { return byte == 0 || byte == 255; }));
        masks.push_back(session.mask);
    };
    session.box(-2, -2, width + 2, height);
    keep();
    for (const int code : {SEGCORE_MARK_OBJECT, SEGCORE_MARK_BACKGROUND}) {
        const bool adds = code == SEGCORE_MARK_OBJECT;
        const std::vector<int> marks = session.rectangle(width / 2, height / 2, 1, 1, code);
        session.request({width / 2, height / 2}, marks,
                        adds ? SEGCORE_BRUSH_ADD : SEGCORE_BRUSH_REMOVE);
        keep();
        session.request({0, 0, width - 1, height - 1}, marks,
                        adds ? SEGCORE_LOOP_ADD : SEGCORE_LOOP_REMOVE);
        keep();
        session.undo();
        keep();
        session.cutOut(marks);
        keep();
    }
    return std::pair(masks, session.fetchOutline());
}

TEST(MixedSession, PhotographsOfAnySizeGiveTheSameBytesAgain) {
    const int sizes[][2] = {{1, 1}, {1, 20}, {20, 1},  {17, 2},    {2, 3},
                            {3, 3}, {9, 60}, {64, 30}, {330, 250}, {40, 2000}};
    for (const auto& [width, height] : sizes) {
        EXPECT_EQ(resultsOfSession(width, height), resultsOfSession(width, height)) << width;
    }
    clearLog();
}

TEST(MixedSession, SecondThreadCancelsAtAnyTime) {
    HostSession session(discScene());
    session.box(35, 20, 125, 100);
    const std::vector<std::uint8_t> mask = session.mask;
    int cancelled = 0;
    for (int delay = 0; delay < 40; ++delay) {
        initSegmentationEngine(0);
        session.mask.assign(mask.size(), 7);
        std::thread second([delay] {
            std::this_thread::sleep_for(std::chrono::milliseconds(delay));
            cancelSegmentation();
        });
        session.box(20, 10, 140, 110);
        second.join();
        if (session.mask.front() == 7) {
            ++cancelled;
            EXPECT_EQ(session.blended, session.photo);
            EXPECT_EQ(session.mask, std::vector<std::uint8_t>(mask.size(), 7));
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
