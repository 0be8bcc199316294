#include "session/session.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <thread>

#include "interface/segmentation_core.h"
#include "session/errors.h"
#include "support/scenes.h"

namespace {

using namespace std::chrono_literals;

Photo photoOfScene(const Scene& scene) {
    return {scene.width, scene.height, scene.pixels};
}

Step plain(Operation operation) {
    Step step;
    step.operation = operation;
    return step;
}

Step box() {
    Step step;
    step.points = {{30, 10}, {130, 110}};
    return step;
}

Step editedDot(int x, int y, bool adds = true) {
    Step step = plain(adds ? Operation::kBrushAdd : Operation::kBrushRemove);
    step.points = {{x, y}};
    step.radius = 0;
    step.edit = true;
    return step;
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

class SessionTest : public testing::Test {
  protected:
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
    const Photo photo = photoOfScene(discScene());
    Session session{photo, host, stats};
};

TEST_F(SessionTest, UndoesAStepWithAllItsRequests) {
    const cv::Mat boxed = apply(box());
    const cv::Mat marked = apply(plain(Operation::kMarks));
    EXPECT_NE(cv::countNonZero(marked(cv::Rect(4, 4, 6, 6))), 0);
    EXPECT_NE(cv::countNonZero(marked(cv::Rect(76, 56, 8, 8)) == 0), 0);
    session.apply(plain(Operation::kUndo));
    expectShown(boxed);
    session.apply(plain(Operation::kRedo));
    expectShown(marked);
    session.apply(plain(Operation::kUndo));
    session.apply(plain(Operation::kUndo));
    EXPECT_FALSE(session.hasResult());
    EXPECT_FALSE(session.canUndo());
    EXPECT_EQ(failureOf(plain(Operation::kUndo)).what(),
              std::string("step 7 (undo): there is nothing to undo; remove the undo or put a mark "
                          "before it"));
}

TEST_F(SessionTest, UndoesMoreStepsThanTheEngineRemembers) {
    constexpr int kSteps = 40;
    std::vector<cv::Mat> masks;
    for (int i = 0; i < kSteps; ++i) {
        masks.push_back(apply(i % 8 == 7 ? plain(Operation::kMarks) : editedDot(2 * i, 3)));
    }
    for (int left = kSteps - 1; left > 0; --left) {
        session.apply(plain(Operation::kUndo));
        ASSERT_TRUE(session.hasResult()) << left;
        expectShown(masks[static_cast<std::size_t>(left - 1)]);
    }
    session.apply(plain(Operation::kUndo));
    EXPECT_FALSE(session.hasResult());
    for (const cv::Mat& mask : masks) {
        session.apply(plain(Operation::kRedo));
        expectShown(mask);
    }
    EXPECT_FALSE(session.canRedo());
}

TEST_F(SessionTest, LosesNothingWhenAStepIsGivenUpBetweenItsRequests) {
    const cv::Mat boxed = apply(box());
    const cv::Mat dotted = apply(editedDot(2, 2));
    session.apply(plain(Operation::kUndo));
    int requests = 0;
    host.onInterruptCheck = [&requests] {
        if (++requests == 2) {
            throw std::runtime_error("enough");
        }
    };
    EXPECT_THROW(session.apply(plain(Operation::kMarks)), std::runtime_error);
    host.onInterruptCheck = [] {};
    expectShown(boxed);
    session.apply(plain(Operation::kRedo));
    expectShown(dotted);
    session.apply(plain(Operation::kUndo));
    expectShown(boxed);
    cv::Mat expected = boxed.clone();
    expected.at<uchar>(1, 1) = 255;
    session.apply(editedDot(1, 1));
    expectShown(expected);
    session.apply(plain(Operation::kUndo));
    session.apply(plain(Operation::kUndo));
    EXPECT_FALSE(session.hasResult());
}

// Cancels when a stage of a request begins.
struct CancelAt {
    Session& session;
    int stage;
    bool reached = false;
};

int cancelAtStage(const segcore_progress* progress, void* user) {
    auto* const cancel = static_cast<CancelAt*>(user);
    if (progress->stage == cancel->stage) {
        cancel->reached = true;
        cancel->session.cancel();
    }
    return 0;
}

TEST(CancelledSession, IsAsItWasBefore) {
    const Scene scene = makeDiscScene(480, 360);  // large enough for every stage
    const Photo photo = photoOfScene(scene);
    TestHost host;
    Stats stats;
    Session session(photo, host, stats);
    Step first;
    first.points = {{90, 30}, {390, 330}};
    session.apply(first);
    const cv::Mat boxed = session.result().clone();
    Step stroke = plain(Operation::kBrushRemove);
    stroke.points = {{180, 180}, {300, 180}};
    for (int stage = SEGCORE_STAGE_MARKS; stage <= SEGCORE_STAGE_DELIVERY; ++stage) {
        CancelAt cancel{session, stage};
        segcore_set_observer(cancelAtStage, &cancel);
        try {
            session.apply(stroke);
            ADD_FAILURE() << "not cancelled at stage " << stage;
        } catch (const UserError& error) {
            EXPECT_EQ(error.reason, UserError::Reason::kCancelled);
            EXPECT_EQ(std::string(error.what()).rfind("step 2 (brush-remove): cancelled", 0), 0U);
        }
        segcore_set_observer(nullptr, nullptr);
        EXPECT_TRUE(cancel.reached) << stage;
        EXPECT_EQ(cv::norm(session.result(), boxed, cv::NORM_INF), 0.0) << stage;
        EXPECT_TRUE(session.canUndo());
        EXPECT_FALSE(session.canRedo());
    }
    // The limit passes while the mask is enlarged: an unfinished one is delivered, and taken back.
    segcore_set_observer(
        [](const segcore_progress* progress, void*) {
            if (progress->stage == SEGCORE_STAGE_ENLARGEMENT) {
                std::this_thread::sleep_for(400ms);
            }
            return 0;
        },
        nullptr);
    session.setTimeLimit(0.3);
    try {
        session.apply(stroke);
        ADD_FAILURE() << "not out of time";
    } catch (const UserError& error) {
        EXPECT_EQ(error.reason, UserError::Reason::kOutOfTime);
    }
    segcore_set_observer(nullptr, nullptr);
    EXPECT_EQ(cv::norm(session.result(), boxed, cv::NORM_INF), 0.0);
    EXPECT_THROW(session.setTimeLimit(-1.0), UserError);
    session.setTimeLimit(0.0);
    session.cancel();  // there is nothing to cancel
    session.apply(stroke);
    EXPECT_EQ(cv::countNonZero(session.result()(cv::Rect(180, 180, 121, 1))), 0);
    host.onInterruptCheck = [&session] { session.cancel(); };
    EXPECT_THROW(session.apply(plain(Operation::kUndo)), UserError);
    host.onInterruptCheck = [] {};
    EXPECT_EQ(cv::countNonZero(session.result()(cv::Rect(180, 180, 121, 1))), 0);
    session.apply(plain(Operation::kUndo));
    EXPECT_EQ(cv::norm(session.result(), boxed, cv::NORM_INF), 0.0);
}

TEST_F(SessionTest, GivesUpAtItsTimeLimitAndGoesOn) {
    const cv::Mat boxed = apply(box());
    session.setTimeLimit(1e-9);
    EXPECT_EQ(failureOf(box()).reason, UserError::Reason::kOutOfTime);
    expectShown(boxed);
    session.setTimeLimit(0.0);
    session.apply(box());
    session.apply(plain(Operation::kUndo));
    expectShown(boxed);
}

TEST_F(SessionTest, TellsTheStagesOfAStep) {
    apply(box());
    const std::string text = stats.text();
    for (const char* stage : {"set photograph", "prepare engine", "step 1, box", "total"}) {
        EXPECT_NE(text.find(stage), std::string::npos) << text;
    }
    EXPECT_EQ(text.find("MB"), std::string::npos) << "nobody measures memory";
}

}  // namespace
