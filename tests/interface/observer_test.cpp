// The host's observer: what it is told, what it can end, and what it must not do.
#include <gtest/gtest.h>
#include <algorithm>
#include <functional>
#include <opencv2/core.hpp>

#include "interface/context_snapshot.h"
#include "support/host_session.h"
#include "support/log_capture.h"
#include "support/observer.h"

namespace {

using Mask = std::vector<std::uint8_t>;

// What a host is told in a request, and how often of a working mask.
struct Record {
    std::vector<int> stages;
    std::vector<double> fractions;
    cv::Mat1b preview;
    int masks = 0;

    const ScopedObserver observer{[this](const segcore_progress& progress) {
        stages.push_back(progress.stage);
        fractions.push_back(progress.fraction);
        EXPECT_EQ(progress.mask != nullptr, progress.stage == SEGCORE_STAGE_WORKING_MASK);
        if (progress.mask != nullptr) {
            ++masks;
            preview.create(progress.mask_height, progress.mask_width);
            std::copy_n(progress.mask, preview.total(), preview.begin());
            EXPECT_LE(0, progress.left);
            EXPECT_LT(progress.left, progress.right);
            EXPECT_LT(progress.right, preview.cols);
            EXPECT_LT(progress.bottom, preview.rows);
        }
        return 0;
    }};
};

Scene twoDiscs(int columns, int rows) {
    Scene half = makeDiscScene(columns / 2, rows);
    cv::Mat both;
    cv::repeat(cv::Mat(rows, columns / 2, CV_32SC1, half.pixels.data()), 1, 2, both);
    return {columns, rows, {both.begin<int>(), both.end<int>()}};
}

// A photograph of two discs, with the left one on display, and a request of each kind that is going to
// change a part of that.
struct Edit : HostSession {
    Edit(int columns, int rows) : HostSession(twoDiscs(columns, rows)) {
        box(5, 5, width / 2, height - 5);
        clearLog();
    }
    void addDisc() { box(width / 2, 5, width - 5, height - 5); }
    // Half of the left disc, where some of it is marked.
    void removeHalf() {
        const int w = width;
        const int h = height;
        const std::vector<int> points{w / 4, 2, w / 2, 2, w / 2, h - 3, w / 4, h - 3};
        std::vector<int> marks = loopMarkers(points);
        cv::Mat(h, w, CV_32SC1, marks.data())(cv::Rect(w / 4, h / 3, w / 20, h / 3)) =
            SEGCORE_MARK_BACKGROUND;
        request(points, marks, SEGCORE_LOOP_REMOVE);
    }
    void brush(int middle, int code, int strokeType) {
        const int side = height / 5;
        const int left = middle - side / 2;
        request({left, height / 2, left + side, height / 2},
                rectangle(left, height / 2 - side / 2, side + 1, side, code), strokeType);
    }
    void addSquare() { brush(width * 3 / 4, SEGCORE_MARK_OBJECT, SEGCORE_BRUSH_ADD); }
    void removeSquare() { brush(width / 4, SEGCORE_MARK_BACKGROUND, SEGCORE_BRUSH_REMOVE); }
};

TEST(ObserverTest, IsToldTheStagesInTheirOrder) {
    Edit edit(340, 230);
    const Record record;
    edit.addDisc();
    std::vector<int> expected{SEGCORE_STAGE_MARKS, SEGCORE_STAGE_REGION};
    for (int pass = 0; pass < 5; ++pass) {
        expected.insert(expected.end(),
                        {SEGCORE_STAGE_MODELS, SEGCORE_STAGE_GRAPH, SEGCORE_STAGE_CUT});
    }
    expected.insert(expected.end(), {SEGCORE_STAGE_WORKING_MASK, SEGCORE_STAGE_ENLARGEMENT,
                                     SEGCORE_STAGE_CLEANING, SEGCORE_STAGE_DELIVERY});
    EXPECT_EQ(record.stages, expected);
    EXPECT_TRUE(std::is_sorted(record.fractions.begin(), record.fractions.end()));
    EXPECT_EQ(record.fractions.front(), 0.0);
    EXPECT_LT(record.fractions.back(), 1.0);
    EXPECT_EQ(takeErrors(), Log{});
}

// The small photograph's result is not enlarged and is just what was told. The outlines of the large
// one's discs are some 1250 pixels long.
TEST(ObserverTest, PreviewsTheResultOfEveryStrokeType) {
    for (const auto& [columns, rows, mostWrong] : {std::tuple{200, 120, 0}, {640, 400, 2500}}) {
        for (const auto request :
             {&Edit::addDisc, &Edit::removeHalf, &Edit::addSquare, &Edit::removeSquare}) {
            Edit edit(columns, rows);
            const Mask before = edit.mask;
            const Record record;
            (edit.*request)();
            EXPECT_EQ(record.masks, 1);
            const cv::Mat1b& preview = record.preview;
            EXPECT_EQ(preview.cols<columns, mostWrong> 0);
            int wrong = 0;
            int changed = 0;
            for (int i = 0; i < columns * rows; ++i) {
                const auto pixel = static_cast<std::size_t>(i);
                const int x = i % columns * preview.cols / columns;
                const int y = i / columns * preview.rows / rows;
                wrong += preview(y, x) != edit.mask[pixel] ? 1 : 0;
                changed += before[pixel] != edit.mask[pixel] ? 1 : 0;
            }
            EXPECT_LE(wrong, mostWrong);
            EXPECT_GT(changed, std::max(5 * wrong, 200));
        }
    }
}

// The working image is 323 pixels wide, and a point at 409 lies on its pixel 322. Divided by the resize
// factor it would lie on 323.
TEST(ObserverTest, PreviewsStrokesInTheLastColumn) {
    Scene disc = makeDiscScene(410, 300);
    std::rotate(disc.pixels.begin(), disc.pixels.begin() + 205, disc.pixels.end());
    HostSession session(disc);
    session.cutOut(std::vector<int>(disc.pixels.size(), SEGCORE_MARK_BACKGROUND));
    const Record record;
    session.request({409, 140, 409, 160}, session.rectangle(390, 140, 20, 20, SEGCORE_MARK_OBJECT),
                    SEGCORE_BRUSH_ADD);
    EXPECT_GT(std::count(session.mask.begin(), session.mask.end(), 0), 200);
    EXPECT_GT(std::count(record.preview.begin(), record.preview.end(), 0), 100);
}

// The mask that a request from the given edit ends in. The edit is undone.
Mask wholeRequest(Edit& edit) {
    edit.addDisc();
    EXPECT_EQ(segcore_last_status(), SEGCORE_DONE);
    const Mask mask = edit.mask;
    edit.undo();
    return mask;
}

constexpr int kStages = 21;

// Does something as each stage begins, one after the other, but for the passes between the first and
// the last, which are alike. From stage `firstLate` on a mask comes all the same.
void actInEachStage(Edit& edit, int status, int firstLate, const std::function<int()>& act,
                    const std::function<void()>& checkNext) {
    for (const int at : {0, 1, 2, 3, 4, 14, 15, 16, 17, 18, 19, kStages - 1}) {
        SCOPED_TRACE(at);
        const Mask untouched(edit.mask.size(), 7);
        edit.mask = untouched;
        const auto before = editingContext();
        int calls = 0;
        {
            const ScopedObserver observer(
                [&](const segcore_progress&) { return calls++ == at ? act() : 0; });
            edit.addDisc();
            EXPECT_EQ(segcore_last_status(), status);
        }
        EXPECT_TRUE(calls == at + 1 || status != SEGCORE_ENDED_BY_OBSERVER);
        EXPECT_EQ(edit.mask == untouched, at < firstLate);
        if (at < firstLate) {
            EXPECT_TRUE(edit.blended == edit.photo);
            EXPECT_TRUE(editingContext() == before);
        }
        checkNext();
    }
}

TEST(ObserverTest, EndsTheRequestAtEveryStageWithoutATrace) {
    Edit edit(340, 230);
    const Mask whole = wholeRequest(edit);
    actInEachStage(
        edit, SEGCORE_ENDED_BY_OBSERVER, kStages, [] { return -1; },
        [&] { EXPECT_TRUE(wholeRequest(edit) == whole); });
    EXPECT_EQ(takeErrors(), Log{});
}

// Up to the last pass a cancel leaves nothing behind but itself.
TEST(ObserverTest, CancelsInEveryStage) {
    Edit edit(340, 230);
    resetSegmentationInterface();
    const Mask whole = wholeRequest(edit);
    const auto cancel = [] {
        cancelSegmentation();
        return 0;
    };
    actInEachStage(edit, SEGCORE_CANCELLED, kStages - 4, cancel, [&] {
        edit.addDisc();  // cancelled until the reset
        EXPECT_EQ(segcore_last_status(), SEGCORE_CANCELLED);
        resetSegmentationInterface();
        EXPECT_TRUE(wholeRequest(edit) == whole);
    });
    clearLog();
}

// The cancel stays in force for the next request, so a host has to know. The limit that ended an earlier
// request has no part in this one.
TEST(ObserverTest, EndsNoRequestAsIfNobodyHadCancelledIt) {
    Edit edit(200, 120);
    segcore_set_time_limit(1e-9);
    edit.addDisc();
    EXPECT_EQ(segcore_last_status(), SEGCORE_OUT_OF_TIME);
    segcore_set_time_limit(-1.0);
    resetSegmentationInterface();
    int stages = 0;
    const ScopedObserver observer([&stages](const segcore_progress&) {
        ++stages;
        cancelSegmentation();
        return 1;
    });
    edit.addDisc();
    EXPECT_EQ(stages, 1);
    EXPECT_EQ(segcore_last_status(), SEGCORE_CANCELLED);
    resetSegmentationInterface();
    clearLog();
}

TEST(ObserverTest, CallsFromInsideAreRefused) {
    Edit edit(340, 230);
    std::vector<std::uint32_t> words = edit.photo;
    Mask bytes(words.size());
    std::vector<int> ints(words.size());
    int* array = nullptr;
    int count = 0;
    const std::vector<std::function<void()>> calls{
        [&] { setSourceImage(340, 230, words.data()); },
        [] { initSegmentationEngine(0); },
        [&] { copySourceImage(words.data()); },
        [] { freeLocalBuffers(); },
        [] { resetSegmentationInterface(); },
        [] { deinitSegmentation(); },
        [] { exitSegmentation(); },
        [&] { setCurrentMarkerVector(2, ints.data()); },
        [&] { setMarkerImage(340, 230, ints.data(), 0); },
        [&] { processSegment(0, 0, 0, words.data(), bytes.data()); },
        [&] { loadMaskImageInfo(bytes.data()); },
        [&] { loadBlendedImageInfo(words.data()); },
        [&] { fetch_path_array(&array, &count); },
        [&] { cutOutImage(0, 0, 0, words.data(), bytes.data()); },
        [&] { undo(words.data(), bytes.data()); },
        [&] { redo(words.data(), bytes.data()); },
        [] { EXPECT_FALSE(canUndo()); },
        [] { EXPECT_FALSE(canRedo()); },
        [&] { doSegmentationBB(340, 230, words.data(), 1, 1, 9, 9, bytes.data()); },
        [] { EXPECT_EQ(segcore_last_status(), SEGCORE_REFUSED); },
        [] { EXPECT_STREQ(segcore_last_reason(), ""); },
        [] { segcore_set_time_limit(1e-9); },
        [] { segcore_set_log(nullptr, nullptr, 0); },
        [] { segcore_set_observer(nullptr, nullptr); }};
    const Mask whole = wholeRequest(edit);
    clearLog();
    int stages = 0;
    {
        const ScopedObserver observer([&](const segcore_progress&) {
            for (const auto& call : calls) {
                call();
            }
            const Log errors = takeErrors();
            EXPECT_EQ(errors.size(), calls.size());
            for (const LogLine& line : errors) {
                EXPECT_NE(line.text.find(": refused inside the observer"), std::string::npos);
            }
            ++stages;
            return 0;
        });
        edit.addDisc();
    }
    EXPECT_EQ(stages, kStages);
    EXPECT_TRUE(edit.mask == whole);
    EXPECT_TRUE(words == edit.photo && bytes == Mask(bytes.size()) && array == nullptr);
}

}  // namespace
