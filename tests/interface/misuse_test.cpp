// Calls that cannot be carried out: one error line each besides the size checks' own, and the
// context as it was.
#include <gtest/gtest.h>
#include <cmath>

#include "interface/context_snapshot.h"
#include "support/host_session.h"
#include "support/log_capture.h"

namespace {

LogLine sizeCheck(const char* function, int line) {
    return {6, "Error", "MEMORY_CRASH : " + std::string(function) + ' ' + std::to_string(line)};
}

template <typename Call>
void expectRefused(const std::string& name, Call call, const Log& sizeChecks = {}) {
    SCOPED_TRACE(name);
    const auto before = editingContext();
    clearLog();
    call();
    Log errors = takeErrors();
    EXPECT_EQ(errors.size(), sizeChecks.size() + 1) << testing::PrintToString(errors);
    if (!errors.empty()) {
        EXPECT_EQ(errors.back().text.rfind(name + ": ", 0), 0U) << errors.back().text;
        errors.pop_back();
        EXPECT_EQ(errors, sizeChecks);
    }
    EXPECT_TRUE(editingContext() == before);
}

struct Misuse : testing::Test {
    ~Misuse() override {
        EXPECT_EQ(m_words, std::vector<std::uint32_t>(m_words.size(), 5));
        EXPECT_EQ(m_bytes, std::vector<std::uint8_t>(m_bytes.size(), 7));
        deinitSegmentation();
        freeLocalBuffers();
        clearLog();
    }
    std::uint32_t* words() { return m_words.data(); }
    std::uint8_t* bytes() { return m_bytes.data(); }
    int* markers() { return m_markers.data(); }

    std::vector<std::uint32_t> m_words = std::vector<std::uint32_t>(160 * 120, 5);
    std::vector<std::uint8_t> m_bytes = std::vector<std::uint8_t>(160 * 120, 7);
    std::vector<int> m_markers = std::vector<int>(160 * 120, SEGCORE_MARK_CANDIDATE);
};

TEST_F(Misuse, BeforeThePhotograph) {
    for (const bool afterTeardown : {false, true}) {
        deinitSegmentation();
        // A teardown leaves the size behind.
        VORNSEMarker::m_originalWidth = afterTeardown ? 160 : 0;
        VORNSEMarker::m_originalHeight = afterTeardown ? 120 : 0;
        expectRefused("initSegmentationEngine", [] { EXPECT_EQ(initSegmentationEngine(0), 0); });
        expectRefused("copySourceImage", [this] { copySourceImage(words()); });
        expectRefused("setCurrentMarkerVector", [this] { setCurrentMarkerVector(4, markers()); });
        expectRefused("setMarkerImage", [this] { setMarkerImage(160, 120, markers(), 0); });
        expectRefused("processSegment",
                      [this] { EXPECT_EQ(processSegment(0, 0, 0, words(), bytes()), 0); });
        expectRefused(
            "cutOutImage", [this] { cutOutImage(0, 0, 0, words(), bytes()); },
            afterTeardown ? Log{} : Log{sizeCheck("cutOutImage", 197)});
        expectRefused("undo", [this] { undo(words(), bytes()); });
        expectRefused("redo", [this] { redo(words(), bytes()); });
        EXPECT_FALSE(canUndo() || canRedo());
    }
}

TEST_F(Misuse, BeforeTheEngine) {
    setSourceImage(160, 120, discScene().pixels.data());
    setMarkerImage(160, 120, markers(), SEGCORE_LOOP_ADD);
    expectRefused("processSegment", [this] { processSegment(0, 0, 0, words(), bytes()); });
    initSegmentationEngine(0);
    // A photograph of another size leaves the engine and its marks behind.
    for (const auto& [width, height] : {std::pair{80, 120}, {160, 100}, {120, 160}}) {
        setSourceImage(160, 120, words());
        setMarkerImage(160, 120, markers(), SEGCORE_LOOP_ADD);
        setSourceImage(width, height, words());
        expectRefused("processSegment", [this] { processSegment(0, 0, 0, words(), bytes()); });
        setMarkerImage(width, height, markers(), SEGCORE_LOOP_ADD);
        expectRefused("processSegment", [this] { processSegment(0, 0, 0, words(), bytes()); });
    }
}

TEST_F(Misuse, DuringAnEdit) {
    HostSession session(discScene());
    session.box(40, 25, 120, 95);
    session.box(50, 40, 100, 80);
    const Log photoCheck{sizeCheck("setSourceImage", 115)};
    for (const int side : {0, -1}) {
        expectRefused(
            "setSourceImage", [&] { setSourceImage(9, side, words()); }, photoCheck);
    }
    expectRefused("setSourceImage", [&] { setSourceImage(1 << 16, 1 << 16, words()); });
    expectRefused("setSourceImage", [&] { setSourceImage(160, 120, nullptr); });
    expectRefused("setMarkerImage", [&] { setMarkerImage(0, 0, markers(), 0); },
                  {sizeCheck("setMarkerImage", 164), sizeCheck("setMarkerImage", 173)});
    expectRefused("setMarkerImage", [&] { setMarkerImage(160, 120, nullptr, 0); });
    for (const auto& [width, height] : {std::pair{120, 160}, {1 << 30, 1 << 30}}) {
        expectRefused("setMarkerImage",
                      [&, w = width, h = height] { setMarkerImage(w, h, markers(), 0); });
    }
    expectRefused("setCurrentMarkerVector", [] { setCurrentMarkerVector(2, nullptr); });
    expectRefused("copySourceImage", [] { copySourceImage(nullptr); });
    expectRefused("processSegment", [this] { processSegment(0, 0, 0, nullptr, bytes()); });
    setMarkerImage(160, 120, markers(), 0);
    expectRefused("processSegment", [this] { processSegment(0, 0, 0, words(), nullptr); });
    expectRefused("cutOutImage", [this] { cutOutImage(0, 0, 0, words(), bytes()); });
    for (const auto& [name, step] : {std::pair{"undo", undo}, {"redo", redo}}) {
        expectRefused(name, [&, step = step] { step(nullptr, bytes()); });
        expectRefused(name, [&, step = step] { step(words(), nullptr); });
    }
    int count = 0;
    int* array = nullptr;
    const auto path = [&](int width, int fromX, int toY, double alpha) {
        return [=, &array, &count] {
            segcore_snap_path(width, 120, words(), fromX, 0, 9, toY, alpha, &array, &count);
            EXPECT_TRUE(array == nullptr && count == 0);
        };
    };
    expectRefused("segcore_snap_path", path(0, 0, 9, 0.5));
    expectRefused("segcore_snap_path", path(160, 160, 9, 0.5));
    expectRefused("segcore_snap_path", path(160, 0, -1, 0.5));
    expectRefused("segcore_snap_path", path(160, 0, 9, std::nan("")));
    const auto nowhere = [&](const std::uint32_t* pixels, int** out, int* length) {
        return [=] { segcore_snap_path(160, 120, pixels, 0, 0, 9, 9, 0.5, out, length); };
    };
    expectRefused("segcore_snap_path", nowhere(nullptr, &array, &count));
    expectRefused("segcore_snap_path", nowhere(words(), nullptr, &count));
    expectRefused("segcore_snap_path", nowhere(words(), &array, nullptr));
    const auto box = [&](int width, const std::uint32_t* pixels, std::uint8_t* mask) {
        return [=] { EXPECT_EQ(doSegmentationBB(width, 120, pixels, 1, 1, 50, 50, mask), 0); };
    };
    expectRefused("doSegmentationBB", box(0, words(), bytes()), photoCheck);
    expectRefused("doSegmentationBB", box(160, nullptr, bytes()));
    expectRefused("doSegmentationBB", box(160, words(), nullptr));
}

TEST_F(Misuse, PhotographTooNarrowForAWorkingImage) {
    // Reduced to the working area, the line would be less than a pixel wide.
    HostSession session(discScene());
    session.box(40, 25, 120, 95);
    const std::vector<std::uint32_t> line(100000, 3);
    m_bytes.assign(line.size(), 7);
    expectRefused("doSegmentationBB",
                  [&] { doSegmentationBB(1, 100000, line.data(), 0, 0, 0, 9, bytes()); },
                  {sizeCheck("intializer", 103)});
    setSourceImage(1, 100000, line.data());
    expectRefused("initSegmentationEngine", [] { initSegmentationEngine(0); },
                  {sizeCheck("intializer", 103)});
}

}  // namespace
