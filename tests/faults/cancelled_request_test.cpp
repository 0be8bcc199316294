// A request that is cancelled at any of the places where it looks, or that runs out of time: no
// mask, nothing recorded, and the next engine works as if nothing had happened.
#include <gtest/gtest.h>
#include <linux/hw_breakpoint.h>
#include <linux/perf_event.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <limits>

#include "interface/context_snapshot.h"
#include "support/fake_clock.h"
#include "support/host_session.h"
#include "support/log_capture.h"

namespace {

constexpr int kSide = 12;
constexpr std::int64_t kTimeLimitMicros = 10000000;

// A photograph with a pixel on display, and a loop that adds its disc.
struct Edit : HostSession {
    Edit() : HostSession(makeDiscScene(kSide, kSide)) {
        cutOut(rectangle(0, 0, 1, 1, SEGCORE_MARK_OBJECT));
        maskBefore = mask;
        clearLog();
    }
    void request() { box(2, 2, kSide - 2, kSide - 2); }
    bool delivered() const { return mask != maskBefore; }
    template <typename Context>
    void expectUntouched(const Context& before) {
        EXPECT_FALSE(delivered());
        EXPECT_TRUE(blended == photo);
        EXPECT_TRUE(before == editingContext());
        EXPECT_EQ(takeErrors(), (Log{{6, "Error", "Segmentation canceled due to timeout"}}));
    }

    std::vector<std::uint8_t> maskBefore;
};

// Cancels right after poll number n, by a hardware watchpoint on the cancel flag: it works on the
// library as it is shipped. Poll number 0 is a cancel from the start.
class PollTrap {
  public:
    explicit PollTrap(std::uint64_t poll) {
        perf_event_attr watch{};
        watch.type = PERF_TYPE_BREAKPOINT;
        watch.size = sizeof watch;
        watch.bp_type = HW_BREAKPOINT_RW;
        watch.bp_addr = reinterpret_cast<std::uintptr_t>(&VORNSEMarker::m_exitApp);
        watch.bp_len = HW_BREAKPOINT_LEN_1;
        watch.sample_period = std::max<std::uint64_t>(poll, 1);
        watch.exclude_kernel = 1;
        watch.exclude_hv = 1;
        watch.sigtrap = 1;
        watch.remove_on_exec = 1;
        s_reached = poll == 0;
        if (s_reached) {
            cancelSegmentation();
            return;
        }
        std::signal(SIGTRAP, [](int) {
            s_reached = 1;
            ioctl(s_event, PERF_EVENT_IOC_DISABLE, 0);
            cancelSegmentation();
        });
        s_event = static_cast<int>(syscall(SYS_perf_event_open, &watch, 0, -1, -1, 0));
    }
    ~PollTrap() {
        if (s_event >= 0) {
            close(s_event);
        }
        s_event = -1;
    }
    PollTrap(const PollTrap&) = delete;
    PollTrap& operator=(const PollTrap&) = delete;

    static std::uint64_t polls() {
        std::uint64_t count = 0;
        return read(s_event, &count, sizeof count) == sizeof count ? count : 0;
    }
    // Whether the request came so far.
    static bool reached() { return s_reached != 0; }
    static bool available() {
        const PollTrap trap(1);
        static_cast<void>(VORNSEMarker::m_exitApp.load());
        return reached();
    }

  private:
    static inline volatile std::sig_atomic_t s_reached = 0;
    static inline int s_event = -1;
};

// A quarter of the polls each, so that they can run side by side.
constexpr std::uint64_t kShares = 4;
class EveryPoll : public testing::TestWithParam<std::uint64_t> {};

TEST_P(EveryPoll, CancelsWithoutATrace) {
    if (!PollTrap::available()) {
        GTEST_SKIP() << "no hardware watchpoints here";
    }
    std::vector<std::uint8_t> uncancelled;
    std::uint64_t polls = 0;
    {
        Edit plain;
        const PollTrap trap(std::numeric_limits<std::int32_t>::max());
        plain.request();
        polls = PollTrap::polls();
        ASSERT_TRUE(plain.delivered());
        uncancelled = plain.mask;
    }
    Edit edit;
    std::uint64_t poll = GetParam();
    for (; !edit.delivered() && !HasFailure(); poll += kShares) {
        initSegmentationEngine(0);
        const auto before = editingContext();
        {
            const PollTrap trap(poll);
            edit.request();
        }
        if (!edit.delivered()) {
            EXPECT_TRUE(PollTrap::reached());
            edit.expectUntouched(before);
        }
    }
    // Five passes, in each a poll for every node that the flow reaches. After the last one, and no
    // sooner, a cancel is too late. One more poll is for the status.
    EXPECT_GT(poll, 5U * kSide);
    EXPECT_GE(poll - kShares + 1, polls);
    EXPECT_TRUE(edit.mask == uncancelled);
    EXPECT_EQ(takeErrors(), Log{});
}

INSTANTIATE_TEST_SUITE_P(CancelledRequest, EveryPoll, testing::Range(std::uint64_t{0}, kShares));

// The clock moves on with every reading, so that the limit is passed at a chosen one.
TEST(CancelledRequest, OutOfTimeDeliversNothing) {
    std::int64_t readings = 0;
    {
        Edit edit;
        const FakeClock clock(0);
        edit.request();
        readings = FakeClock::reads();
    }
    // The start, the nodes that the first pass reaches, the ends of five passes.
    ASSERT_GT(readings, kSide);
    Edit edit;
    for (const std::int64_t reading : {std::int64_t{1}, std::int64_t{2}, readings / 2, readings - 6,
                                       readings - 5, readings - 1}) {
        initSegmentationEngine(0);
        const FakeClock clock(0, kTimeLimitMicros / reading + 1);
        const auto before = editingContext();
        edit.request();
        edit.expectUntouched(before);
    }
    initSegmentationEngine(0);
    const FakeClock clock(0, kTimeLimitMicros / (readings - 1));  // the last one is still in time
    edit.request();
    EXPECT_TRUE(edit.delivered());
    EXPECT_EQ(takeErrors(), Log{});
}

}  // namespace
