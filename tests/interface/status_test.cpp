// The status of calls, the time limit and the log callback.
#include <gtest/gtest.h>
#include <chrono>
#include <limits>
#include <thread>

#include "support/fake_clock.h"
#include "support/host_session.h"
#include "support/log_capture.h"
#include "support/observer.h"

namespace {

using namespace std::chrono_literals;

constexpr std::int64_t kDayMicros = 86400000000;

struct StatusTest : testing::Test {
    ~StatusTest() override {
        segcore_set_time_limit(-1.0);
        segcore_set_log(nullptr, nullptr, 0);
        deinitSegmentation();
        clearLog();
    }

    // A box request during which every stage takes `delay`, and the clock of the day jumps.
    static int statusOfBox(HostSession& session, std::chrono::milliseconds delay,
                           std::int64_t jump = 0) {
        const FakeClock clock(0, jump);
        const ScopedObserver observer([delay](const segcore_progress&) {
            std::this_thread::sleep_for(delay);
            return 0;
        });
        session.box(35, 20, 125, 100);
        return segcore_last_status();
    }
};

TEST_F(StatusTest, TellsWhatBecameOfTheLatestCall) {
    EXPECT_EQ((initSegmentationEngine(0), segcore_last_status()), SEGCORE_REFUSED);
    EXPECT_STREQ(segcore_last_reason(), "no photograph, call setSourceImage first");
    HostSession session(discScene());
    EXPECT_STREQ(segcore_last_reason(), "");
    const auto box = [&] { session.box(35, 20, 125, 100); };
    const auto undo = [&] { session.undo(); };
    const auto redo = [&] { session.redo(); };
    const auto fetch = [] { HostSession::fetchOutline(); };
    const auto request = [&] {
        processSegment(0, 0, 0, session.blended.data(), session.mask.data());
    };
    const std::pair<std::function<void()>, int> calls[] = {
        {[] {}, SEGCORE_DONE},
        {undo, SEGCORE_NOTHING_TO_DO},
        {request, SEGCORE_NOTHING_TO_DO},
        {box, SEGCORE_DONE},
        {redo, SEGCORE_NOTHING_TO_DO},
        {undo, SEGCORE_DONE},  // past the first mask: that is a step, too
        {redo, SEGCORE_DONE},
        {fetch, SEGCORE_DONE},
        {fetch, SEGCORE_NOTHING_TO_DO},
        {[] { processSegment(0, 0, 0, nullptr, nullptr); }, SEGCORE_REFUSED},
        {[] { canUndo(); }, SEGCORE_REFUSED},
        {[&] { cancelSegmentation(), box(); }, SEGCORE_CANCELLED}};
    for (const auto& [call, status] : calls) {
        call();
        EXPECT_EQ(segcore_last_status(), status);
    }
}

TEST_F(StatusTest, LimitOfTheHostIsKeptOnAClockThatDoesNotJump) {
    HostSession session(discScene());
    EXPECT_EQ(statusOfBox(session, 0ms, kDayMicros), SEGCORE_OUT_OF_TIME);
    for (const double seconds : {0.0, 3600.0, std::numeric_limits<double>::infinity()}) {
        resetSegmentationInterface();
        segcore_set_time_limit(seconds);
        EXPECT_EQ(statusOfBox(session, 0ms, kDayMicros), SEGCORE_DONE) << seconds;
        EXPECT_LT(discScene().errorRate(session.mask), 0.01);
    }
    for (const double seconds : {1e-9, 0.02}) {
        resetSegmentationInterface();
        segcore_set_time_limit(seconds);
        session.mask.assign(session.mask.size(), 7);
        EXPECT_EQ(statusOfBox(session, 10ms), SEGCORE_OUT_OF_TIME) << seconds;
        EXPECT_EQ(session.mask, std::vector<std::uint8_t>(session.mask.size(), 7));
    }
    // Of no use to anybody, so it means the limit from the start.
    resetSegmentationInterface();
    segcore_set_time_limit(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(statusOfBox(session, 0ms, kDayMicros), SEGCORE_OUT_OF_TIME);
}

TEST_F(StatusTest, LogGoesToTheHostFromItsLeastLevelOn) {
    HostSession session(makeDiscScene(400, 250));
    clearLog();
    Log received;
    const auto receive = [](int level, const char* tag, const char* text, void* user) {
        static_cast<Log*>(user)->push_back({level, tag, text});
        undo(nullptr, nullptr);  // refused, and its own line is dropped
    };
    segcore_set_log(receive, &received, 6);
    session.box(90, 40, 310, 210);
    EXPECT_EQ(received, Log{});
    processSegment(0, 0, 0, nullptr, nullptr);
    EXPECT_EQ(received, (Log{{6, "Error", "processSegment: the blended buffer is null"}}));
    EXPECT_EQ(takeLog(), Log{});
    segcore_set_log(receive, &received, 4);
    session.box(90, 40, 310, 210);
    EXPECT_GT(received.size(), 1U);  // the band of the enlargement
    segcore_set_log(nullptr, nullptr, 0);
    processSegment(0, 0, 0, nullptr, nullptr);
    EXPECT_EQ(takeErrors().size(), 1U);
    // What a host throws stops there: lines are also logged where nothing may be thrown.
    segcore_set_log([](int, const char*, const char*, void*) { throw 1; }, nullptr, 0);
    processSegment(0, 0, 0, nullptr, nullptr);
    EXPECT_STREQ(segcore_last_reason(), "the blended buffer is null");
}

}  // namespace
