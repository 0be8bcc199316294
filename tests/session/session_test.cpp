#include <gtest/gtest.h>
#include <chrono>
#include <functional>
#include <thread>

#include "session/errors.h"
#include "session/session.h"
#include "steps.h"
#include "support/observer.h"
#include "support/scenes.h"

namespace {

using namespace std::chrono_literals;

Step box() {
    return stepOf(Operation::kBox, {{30, 10}, {130, 110}});
}

Step editedDot(int x, int y) {
    return editOf(stepOf(Operation::kBrushAdd, {{x, y}}, 0));
}

// Paints what the disc's mask lacks and what it has too much: two requests on a result.
class TestHost : public SessionHost {
  public:
    void throwIfInterrupted() override { onInterruptCheck(); }
    cv::Mat marksPicture(const std::string& /*name*/) override {
        cv::Mat codes = cv::Mat::zeros(discScene().height, discScene().width, CV_8UC1);
        codes(cv::Rect(4, 4, 6, 6)) = SEGCORE_MARK_OBJECT;
        codes(cv::Rect(76, 56, 8, 8)) = SEGCORE_MARK_BACKGROUND;
        return codes;
    }

    std::function<void()> onInterruptCheck = [] {};  // before each request and at the step's end
};

struct SessionTest : testing::Test {
    explicit SessionTest(const Scene& scene = discScene())
        : photo{scene.width, scene.height, scene.pixels} {}

    cv::Mat apply(const Step& step) {
        session.apply(step);
        return session.result().clone();
    }
    void expectShown(const cv::Mat& mask) const {
        EXPECT_EQ(cv::norm(session.result(), mask, cv::NORM_INF), 0.0);
    }
    UserError failureOf(const Step& step) {
        try {
            session.apply(step);
        } catch (const UserError& error) {
            return error;
        }
        return UserError("it did not fail");
    }

    TestHost host;
    Stats stats;
    const Photo photo;
    Session session{photo, host, stats};
};

TEST_F(SessionTest, UndoesAStepWithAllItsRequests) {
    const cv::Mat boxed = apply(box());
    const cv::Mat marked = apply(stepOf(Operation::kMarks));
    EXPECT_NE(cv::countNonZero(marked(cv::Rect(4, 4, 6, 6))), 0);
    EXPECT_NE(cv::countNonZero(marked(cv::Rect(76, 56, 8, 8)) == 0), 0);
    session.apply(stepOf(Operation::kUndo));
    expectShown(boxed);
    session.apply(stepOf(Operation::kRedo));
    expectShown(marked);
    session.apply(stepOf(Operation::kUndo));
    session.apply(stepOf(Operation::kUndo));
    EXPECT_FALSE(session.hasResult());
    EXPECT_FALSE(session.canUndo());
    EXPECT_EQ(failureOf(stepOf(Operation::kUndo)).what(),
              std::string("step 7 (undo): there is nothing to undo; remove the undo or put a mark "
                          "before it"));
}

TEST_F(SessionTest, UndoesMoreStepsThanTheEngineRemembers) {
    constexpr int kSteps = 40;
    std::vector<cv::Mat> masks;
    for (int i = 0; i < kSteps; ++i) {
        masks.push_back(apply(i % 8 == 7 ? stepOf(Operation::kMarks) : editedDot(2 * i, 3)));
    }
    for (int left = kSteps - 1; left > 0; --left) {
        session.apply(stepOf(Operation::kUndo));
        ASSERT_TRUE(session.hasResult()) << left;
        expectShown(masks[static_cast<std::size_t>(left - 1)]);
    }
    session.apply(stepOf(Operation::kUndo));
    EXPECT_FALSE(session.hasResult());
    for (const cv::Mat& mask : masks) {
        session.apply(stepOf(Operation::kRedo));
        expectShown(mask);
    }
    EXPECT_FALSE(session.canRedo());
}

TEST_F(SessionTest, LosesNothingWhenAStepIsGivenUpBetweenItsRequests) {
    const cv::Mat boxed = apply(box());
    const cv::Mat dotted = apply(editedDot(2, 2));
    session.apply(stepOf(Operation::kUndo));
    int requests = 0;
    host.onInterruptCheck = [&requests] {
        if (++requests == 2) {
            throw std::runtime_error("enough");
        }
    };
    EXPECT_THROW(session.apply(stepOf(Operation::kMarks)), std::runtime_error);
    host.onInterruptCheck = [] {};
    expectShown(boxed);
    session.apply(stepOf(Operation::kRedo));
    expectShown(dotted);
    session.apply(stepOf(Operation::kUndo));
    expectShown(boxed);
    cv::Mat expected = boxed.clone();
    expected.at<uchar>(1, 1) = 255;
    session.apply(editedDot(1, 1));
    expectShown(expected);
    session.apply(stepOf(Operation::kUndo));
    session.apply(stepOf(Operation::kUndo));
    EXPECT_FALSE(session.hasResult());
}

struct CancelledSession : SessionTest {
    CancelledSession() : SessionTest(makeDiscScene(480, 360)) {}  // large enough for every stage
};

TEST_F(CancelledSession, IsAsItWasBefore) {
    const cv::Mat boxed = apply(stepOf(Operation::kBox, {{90, 30}, {390, 330}}));
    EXPECT_NE(stats.text().find("step 1, box"), std::string::npos) << stats.text();
    const Step stroke = stepOf(Operation::kBrushRemove, {{180, 180}, {300, 180}});
    for (int stage = SEGCORE_STAGE_MARKS; stage <= SEGCORE_STAGE_DELIVERY; ++stage) {
        bool reached = false;
        const ScopedObserver observer([&](const segcore_progress& progress) {
            if (progress.stage == stage) {
                reached = true;
                session.cancel();
            }
            return 0;
        });
        const UserError error = failureOf(stroke);
        EXPECT_EQ(error.reason, UserError::Reason::kCancelled);
        EXPECT_EQ(std::string(error.what()).rfind("step 2 (brush-remove): cancelled", 0), 0U);
        EXPECT_TRUE(reached) << stage;
        expectShown(boxed);
        EXPECT_TRUE(session.canUndo() && !session.canRedo());
    }
    {
        // The limit passes while the mask is enlarged: what is delivered unfinished is taken back.
        const ScopedObserver observer([](const segcore_progress& progress) {
            if (progress.stage == SEGCORE_STAGE_ENLARGEMENT) {
                std::this_thread::sleep_for(400ms);
            }
            return 0;
        });
        session.setTimeLimit(0.3);
        EXPECT_EQ(failureOf(stroke).reason, UserError::Reason::kOutOfTime);
    }
    expectShown(boxed);
    EXPECT_THROW(session.setTimeLimit(-1.0), UserError);
    session.setTimeLimit(0.0);
    session.cancel();  // there is nothing to cancel
    const cv::Mat removed = apply(stroke);
    EXPECT_EQ(cv::countNonZero(removed(cv::Rect(180, 180, 121, 1))), 0);
    host.onInterruptCheck = [this] { session.cancel(); };
    EXPECT_EQ(failureOf(stepOf(Operation::kUndo)).reason, UserError::Reason::kCancelled);
    host.onInterruptCheck = [] {};
    expectShown(removed);
    session.apply(stepOf(Operation::kUndo));
    expectShown(boxed);
}

}  // namespace
