#include "session/session.h"

#include <gtest/gtest.h>

#include <functional>

#include "interface/segmentation_core.h"
#include "session/errors.h"
#include "support/log_capture.h"
#include "support/scenes.h"

namespace {

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
    std::string takeEngineError() override {
        onRequest();
        const Log errors = takeErrors();
        return errors.empty() ? std::string() : errors.front().text;
    }
    cv::Mat marksPicture(const std::string& /*name*/) override {
        cv::Mat codes = cv::Mat::zeros(discScene().height, discScene().width, CV_8UC1);
        codes(cv::Rect(4, 4, 6, 6)) = SEGCORE_MARK_OBJECT;
        codes(cv::Rect(76, 56, 8, 8)) = SEGCORE_MARK_BACKGROUND;
        return codes;
    }

    std::function<void()> onInterruptCheck = [] {};
    std::function<void()> onRequest = [] {};  // right before each
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
    host.onRequest = [&requests] {
        if (++requests == 2) {
            throw std::runtime_error("enough");
        }
    };
    EXPECT_THROW(session.apply(plain(Operation::kMarks)), std::runtime_error);
    host.onRequest = [] {};
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

TEST_F(SessionTest, LosesNothingWhenCancelled) {
    const cv::Mat boxed = apply(box());
    Step stroke = plain(Operation::kBrushRemove);
    stroke.points = {{60, 60}, {100, 60}};
    for (const bool inTheEngine : {false, true}) {
        // The engine refuses every request from its cancel until a reset.
        (inTheEngine ? host.onRequest : host.onInterruptCheck) = [this] { session.cancel(); };
        const UserError error = failureOf(stroke);
        EXPECT_EQ(error.reason, UserError::Reason::kCancelled);
        EXPECT_EQ(std::string(error.what()).rfind("step 2 (brush-remove): cancelled", 0), 0U);
        if (!inTheEngine) {
            EXPECT_EQ(failureOf(plain(Operation::kUndo)).reason, UserError::Reason::kCancelled);
        }
        host.onRequest = [] {};
        host.onInterruptCheck = [] {};
        expectShown(boxed);
        EXPECT_TRUE(session.canUndo());
    }
    session.cancel();  // there is nothing to cancel
    session.apply(stroke);
    EXPECT_EQ(cv::countNonZero(session.result()(cv::Rect(60, 60, 41, 1))), 0);
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
