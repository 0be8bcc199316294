// The host's observer: what it is told, what it can end, and what it must not do.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <set>

#include "interface/context_snapshot.h"
#include "interface/segmentation_core.h"
#include "support/host_session.h"
#include "support/log_capture.h"

namespace {

using Mask = std::vector<std::uint8_t>;

// Observes for as long as it lives.
class Observer {
  public:
    using Answer = std::function<int(const segcore_progress&)>;

    explicit Observer(Answer answer = nullptr) : m_answer(std::move(answer)) {
        segcore_set_observer(
            [](const segcore_progress* progress, void* user) {
                return static_cast<Observer*>(user)->told(*progress);
            },
            this);
    }
    ~Observer() { segcore_set_observer(nullptr, nullptr); }
    Observer(const Observer&) = delete;
    Observer& operator=(const Observer&) = delete;

    std::vector<int> stages;
    std::vector<double> fractions;
    Mask preview;
    int width = 0;
    int height = 0;
    int masks = 0;

  private:
    int told(const segcore_progress& progress) {
        stages.push_back(progress.stage);
        fractions.push_back(progress.fraction);
        EXPECT_EQ(progress.mask != nullptr, progress.stage == SEGCORE_STAGE_WORKING_MASK);
        if (progress.mask != nullptr) {
            ++masks;
            width = progress.mask_width;
            height = progress.mask_height;
            preview.assign(progress.mask,
                           progress.mask + static_cast<std::ptrdiff_t>(width) * height);
            EXPECT_LE(0, progress.left);
            EXPECT_LT(progress.left, progress.right);
            EXPECT_LT(progress.right, width);
            EXPECT_LT(progress.bottom, height);
        }
        return m_answer ? m_answer(progress) : 0;
    }

    Answer m_answer;
};

// A photograph of two discs, with the left one on display, and a request of each kind that is going to
// change a part of that.
class Edit : public HostSession {
  public:
    Edit(int columns, int rows) : HostSession(twoDiscs(columns, rows)) {
        box(5, 5, width / 2, height - 5);
        clearLog();
    }

    void request(int strokeType) {
        const int w = width;
        const int h = height;
        if (strokeType == SEGCORE_LOOP_ADD) {
            box(w / 2, 5, w - 5, h - 5);
            return;
        }
        const bool adds = strokeType == SEGCORE_BRUSH_ADD;
        const int middle = adds ? w * 3 / 4 : w / 4;
        const int side = h / 5;
        const int left = middle - side / 2;
        std::vector<int> points{left, h / 2, middle + side / 2, h / 2};
        std::vector<int> marks = rectangle(left, h / 2 - side / 2, side + 1, side,
                                           adds ? SEGCORE_MARK_OBJECT : SEGCORE_MARK_BACKGROUND);
        if (strokeType == SEGCORE_LOOP_REMOVE) {
            // The right half of the disc, where some of it is marked.
            points = {w / 4, 2, w / 2, 2, w / 2, h - 3, w / 4, h - 3};
            marks = loopMarkers(points);
            for (int y = h / 3; y < h * 2 / 3; ++y) {
                std::fill_n(marks.begin() + y * w + w / 4, w / 20, SEGCORE_MARK_BACKGROUND);
            }
        }
        HostSession::request(points, marks, strokeType);
    }

  private:
    static Scene twoDiscs(int columns, int rows) {
        const Scene half = makeDiscScene(columns / 2, rows);
        Scene scene{columns, rows, {}};
        for (auto row = half.pixels.begin(); row != half.pixels.end(); row += half.width) {
            scene.pixels.insert(scene.pixels.end(), row, row + half.width);
            scene.pixels.insert(scene.pixels.end(), row, row + half.width);
        }
        return scene;
    }
};

TEST(ObserverTest, IsToldTheStagesInTheirOrder) {
    Edit edit(340, 230);
    const Observer observer;
    edit.request(SEGCORE_LOOP_ADD);
    std::vector<int> expected{SEGCORE_STAGE_MARKS, SEGCORE_STAGE_REGION};
    for (int pass = 0; pass < 5; ++pass) {
        expected.insert(expected.end(),
                        {SEGCORE_STAGE_MODELS, SEGCORE_STAGE_GRAPH, SEGCORE_STAGE_CUT});
    }
    expected.insert(expected.end(), {SEGCORE_STAGE_WORKING_MASK, SEGCORE_STAGE_ENLARGEMENT,
                                     SEGCORE_STAGE_CLEANING, SEGCORE_STAGE_DELIVERY});
    EXPECT_EQ(observer.stages, expected);
    EXPECT_TRUE(std::is_sorted(observer.fractions.begin(), observer.fractions.end()));
    EXPECT_EQ(observer.fractions.front(), 0.0);
    EXPECT_LT(observer.fractions.back(), 1.0);
    EXPECT_EQ(takeErrors(), Log{});
}

// The small photograph's result is not enlarged and is just what was told. The outlines of the large
// one's discs are some 1250 pixels long.
TEST(ObserverTest, PreviewsTheResultOfEveryStrokeType) {
    for (const auto& [columns, rows, mostWrong] : {std::tuple{200, 120, 0}, {640, 400, 2500}}) {
        for (const int type :
             {SEGCORE_LOOP_ADD, SEGCORE_LOOP_REMOVE, SEGCORE_BRUSH_ADD, SEGCORE_BRUSH_REMOVE}) {
            Edit edit(columns, rows);
            const Mask before = edit.mask;
            const Observer observer;
            edit.request(type);
            EXPECT_EQ(observer.masks, 1);
            EXPECT_EQ(observer.width<columns, mostWrong> 0);
            int wrong = 0;
            int changed = 0;
            for (int i = 0; i < columns * rows; ++i) {
                const int x = i % columns * observer.width / columns;
                const int y = i / columns * observer.height / rows;
                const std::uint8_t byte = edit.mask[static_cast<std::size_t>(i)];
                wrong += observer.preview[static_cast<std::size_t>(y * observer.width + x)] != byte
                             ? 1
                             : 0;
                changed += before[static_cast<std::size_t>(i)] != byte ? 1 : 0;
            }
            EXPECT_LE(wrong, mostWrong) << type;
            EXPECT_GT(changed, std::max(5 * wrong, 200)) << type;
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
    const Observer observer;
    session.request({409, 140, 409, 160}, session.rectangle(390, 140, 20, 20, SEGCORE_MARK_OBJECT),
                    SEGCORE_BRUSH_ADD);
    EXPECT_GT(std::count(session.mask.begin(), session.mask.end(), 0), 200);
    EXPECT_GT(std::count(observer.preview.begin(), observer.preview.end(), 0), 100);
}

// The stages of a request from the given edit, and the mask that it ends in. The edit is undone.
struct Whole {
    std::size_t stages;
    Mask mask;
};
Whole wholeRequest(Edit& edit) {
    const Observer observer;
    edit.request(SEGCORE_LOOP_ADD);
    EXPECT_EQ(segcore_last_status(), SEGCORE_DONE);
    const Whole whole{observer.stages.size(), edit.mask};
    edit.undo();
    return whole;
}

// What the header tells a host to do after a cancel, and the next request.
Whole requestAfterWritingBack(Edit& edit, const Mask& shown) {
    resetSegmentationInterface();
    std::vector<int> marks;
    for (const std::uint8_t byte : shown) {
        marks.push_back(byte == 0 ? SEGCORE_MARK_OBJECT : SEGCORE_MARK_BACKGROUND);
    }
    edit.cutOut(marks);
    EXPECT_TRUE(edit.mask == shown);
    return wholeRequest(edit);
}

// Does something as each stage begins, one after the other, but for the passes between the first and
// the last, which are alike. The stages at which the request delivered a mask all the same.
std::set<int> lateStages(Edit& edit, std::size_t stages, int status,
                         const std::function<int()>& act, const std::function<void()>& checkNext) {
    constexpr std::size_t kFirstPassEnds = 5;
    constexpr std::size_t kLastPassOn = 7;  // its three stages and the four after it
    std::set<int> late;
    for (std::size_t at = 0; at < stages;
         at = at + 1 == kFirstPassEnds ? stages - kLastPassOn : at + 1) {
        const Mask shown = edit.mask;
        const auto before = editingContext();
        std::size_t calls = 0;
        int stage = -1;
        {
            const Observer observer([&](const segcore_progress& progress) {
                if (calls++ != at) {
                    return 0;
                }
                stage = progress.stage;
                return act();
            });
            edit.request(SEGCORE_LOOP_ADD);
            EXPECT_EQ(segcore_last_status(), status) << at;
        }
        EXPECT_TRUE(calls == at + 1 || status != SEGCORE_ENDED_BY_OBSERVER) << at;
        if (edit.mask == shown) {
            EXPECT_TRUE(edit.blended == edit.photo);
            EXPECT_TRUE(editingContext() == before) << at;
        } else {
            late.insert(stage);
        }
        checkNext();
    }
    return late;
}

TEST(ObserverTest, EndsTheRequestAtEveryStageWithoutATrace) {
    Edit edit(340, 230);
    const Whole whole = wholeRequest(edit);
    const auto end = [] { return -1; };
    const auto late = lateStages(edit, whole.stages, SEGCORE_ENDED_BY_OBSERVER, end,
                                 [&] { EXPECT_TRUE(wholeRequest(edit).mask == whole.mask); });
    EXPECT_EQ(late, std::set<int>{});
    EXPECT_EQ(takeErrors(), Log{});
}

// Up to the last pass a cancel leaves nothing behind. After it a mask comes all the same.
TEST(ObserverTest, CancelsInEveryStage) {
    Edit edit(340, 230);
    const Mask shown = edit.mask;
    const Whole whole = requestAfterWritingBack(edit, shown);
    const auto cancel = [] {
        cancelSegmentation();
        return 0;
    };
    const auto late = lateStages(edit, whole.stages, SEGCORE_CANCELLED, cancel, [&] {
        edit.request(SEGCORE_LOOP_ADD);  // cancelled until the reset
        EXPECT_EQ(segcore_last_status(), SEGCORE_CANCELLED);
        EXPECT_TRUE(requestAfterWritingBack(edit, shown).mask == whole.mask);
    });
    EXPECT_EQ(late, (std::set<int>{SEGCORE_STAGE_WORKING_MASK, SEGCORE_STAGE_ENLARGEMENT,
                                   SEGCORE_STAGE_CLEANING, SEGCORE_STAGE_DELIVERY}));
    clearLog();
}

// The cancel stays in force for the next request, so a host has to know. The limit that ended an earlier
// request has no part in this one.
TEST(ObserverTest, EndsNoRequestAsIfNobodyHadCancelledIt) {
    Edit edit(200, 120);
    segcore_set_time_limit(1e-9);
    edit.request(SEGCORE_LOOP_ADD);
    EXPECT_EQ(segcore_last_status(), SEGCORE_OUT_OF_TIME);
    segcore_set_time_limit(-1.0);
    resetSegmentationInterface();
    const Observer observer([](const segcore_progress&) {
        cancelSegmentation();
        return 1;
    });
    edit.request(SEGCORE_LOOP_ADD);
    EXPECT_EQ(observer.stages, std::vector<int>{SEGCORE_STAGE_MARKS});
    EXPECT_EQ(segcore_last_status(), SEGCORE_CANCELLED);
    resetSegmentationInterface();
    clearLog();
}

TEST(ObserverTest, CallsFromInsideAreRefused) {
    Edit edit(200, 120);
    std::vector<std::uint32_t> words = edit.photo;
    Mask bytes(words.size());
    std::vector<int> ints(words.size());
    int* array = nullptr;
    int count = 0;
    const std::vector<std::function<void()>> calls{
        [&] { setSourceImage(200, 120, words.data()); },
        [] { initSegmentationEngine(0); },
        [&] { copySourceImage(words.data()); },
        [] { freeLocalBuffers(); },
        [] { resetSegmentationInterface(); },
        [] { deinitSegmentation(); },
        [] { exitSegmentation(); },
        [&] { setCurrentMarkerVector(2, ints.data()); },
        [&] { setMarkerImage(200, 120, ints.data(), 0); },
        [&] { processSegment(0, 0, 0, words.data(), bytes.data()); },
        [&] { loadMaskImageInfo(bytes.data()); },
        [&] { loadBlendedImageInfo(words.data()); },
        [&] { fetch_path_array(&array, &count); },
        [&] { cutOutImage(0, 0, 0, words.data(), bytes.data()); },
        [&] { undo(words.data(), bytes.data()); },
        [&] { redo(words.data(), bytes.data()); },
        [] { EXPECT_FALSE(canUndo()); },
        [] { EXPECT_FALSE(canRedo()); },
        [&] { doSegmentationBB(200, 120, words.data(), 1, 1, 9, 9, bytes.data()); },
        [] { EXPECT_EQ(segcore_last_status(), SEGCORE_REFUSED); },
        [] { EXPECT_STREQ(segcore_last_reason(), ""); },
        [] { segcore_set_time_limit(1e-9); },
        [] { segcore_set_log(nullptr, nullptr, 0); },
        [] { segcore_set_observer(nullptr, nullptr); }};
    const Whole whole = wholeRequest(edit);
    clearLog();
    {
        const Observer observer([&](const segcore_progress&) {
            for (const auto& call : calls) {
                call();
            }
            const Log errors = takeErrors();
            EXPECT_EQ(errors.size(), calls.size());
            for (const LogLine& line : errors) {
                EXPECT_NE(line.text.find(": refused inside the observer"), std::string::npos);
            }
            return 0;
        });
        edit.request(SEGCORE_LOOP_ADD);
        EXPECT_EQ(observer.stages.size(), whole.stages);
    }
    EXPECT_TRUE(edit.mask == whole.mask);
    EXPECT_TRUE(words == edit.photo && bytes == Mask(bytes.size()) && array == nullptr);
}

}  // namespace
