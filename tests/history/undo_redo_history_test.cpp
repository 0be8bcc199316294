#include "history/undo_redo_history.h"

#include <gtest/gtest.h>

#include <deque>
#include <random>

#include "history/marker.h"
#include "support/image.h"
#include "support/log_capture.h"

using History = VORNSEManageUndoRedo;

namespace {

constexpr int kWidth = 37;  // neither size is a multiple of a power of two
constexpr int kHeight = 45;
constexpr std::size_t kReachable = 31;

using Mask = std::vector<std::uint8_t>;  // row by row; empty stands for no mask

Mask take(IplImage* image) {
    const ImagePtr owner(image);
    Mask bytes;
    for (int y = 0; image != nullptr && y < image->height; ++y) {
        bytes.insert(bytes.end(), rowOf(image, y), rowOf(image, y) + image->width);
    }
    return bytes;
}

ImagePtr imageOf(const Mask& mask) {
    ImagePtr image = createImage(kWidth, kHeight, 1);
    for (int y = 0; y < kHeight; ++y) {
        std::copy_n(mask.begin() + y * kWidth, kWidth, rowOf(image.get(), y));
    }
    return image;
}

Mask plain(std::uint8_t value) {
    return Mask(kWidth * kHeight, value);
}

// The history as a plain list of masks and how many of them lead up to the one on display.
struct ListOfMasks {
    std::deque<Mask> masks;
    std::size_t shown = 0;

    void record(const Mask& mask) {
        masks.resize(shown);
        masks.push_back(mask);
        if (masks.size() > kReachable) {
            masks.pop_front();
        }
        shown = masks.size();
    }
    Mask display() const { return shown == 0 ? Mask{} : masks[shown - 1]; }
    Mask undo() {
        shown -= shown > 0 ? 1 : 0;
        return display();
    }
    Mask redo() {
        shown += shown < masks.size() ? 1 : 0;
        return display();
    }
};

class MaskHistory : public testing::Test {
  protected:
    void SetUp() override {
        VORNSEMarker::m_originalWidth = kWidth;
        VORNSEMarker::m_originalHeight = kHeight;
        History::allocate();
    }
    void TearDown() override { History::deallocate(); }

    static std::vector<int> ring() {
        return {History::m_bottom, History::m_current, History::m_top};
    }
};

}  // namespace

TEST_F(MaskHistory, BehavesLikeAListOfMasksOnRandomSequences) {
    for (unsigned seed = 0; seed < 12; ++seed) {
        std::mt19937 random(seed);
        ListOfMasks twin;
        History::reset();
        const auto recordShare = 2 + seed % 6;  // from mostly stepping to wrapping the ring
        for (int step = 0; step < 250; ++step) {
            const auto choice = random() % 10;
            if (twin.masks.empty() || choice < recordShare) {
                Mask mask = plain(0);
                for (auto& byte : mask) {
                    byte = random() % 2 == 0 ? 0 : 255;
                }
                History::updateBitPlane(imageOf(mask).get());
                twin.record(mask);
            } else if (choice % 2 == 0) {
                ASSERT_EQ(take(History::undo()), twin.undo()) << seed << ' ' << step;
            } else {
                ASSERT_EQ(take(History::redo()), twin.redo()) << seed << ' ' << step;
            }
            ASSERT_EQ(take(History::prevMask()), twin.display()) << seed << ' ' << step;
            ASSERT_EQ(History::canUndo(), twin.shown > 1);
            ASSERT_EQ(History::canRedo(), twin.shown < twin.masks.size());
        }
    }
}

TEST_F(MaskHistory, StepsThroughThreeMasks) {
    for (const Mask& mask : {plain(1), plain(0), plain(255)}) {
        History::updateBitPlane(imageOf(mask).get());
    }
    EXPECT_EQ(ring(), (std::vector<int>{0, 3, 3}));
    EXPECT_EQ(take(History::redo()), plain(255));  // nothing to redo: the mask on display
    EXPECT_EQ(take(History::undo()), plain(0));
    EXPECT_EQ(take(History::undo()), plain(255));  // stored as 1: any byte but 0 is object
    EXPECT_FALSE(History::canUndo());
    EXPECT_EQ(History::undo(), nullptr);
    EXPECT_EQ(History::undo(), nullptr);
    EXPECT_EQ(ring(), (std::vector<int>{0, 0, 3}));
    History::reset();
    EXPECT_EQ(ring(), (std::vector<int>{0, 0, 0}));
    EXPECT_EQ(take(History::getMask(2)), plain(255));  // the planes keep their bits
}

TEST_F(MaskHistory, TheThirtySecondMaskPushesTheFirstOut) {
    for (int i = 0; i < 32; ++i) {
        History::updateBitPlane(imageOf(plain(0)).get());
    }
    EXPECT_EQ(ring(), (std::vector<int>{1, 0, 0}));
}

TEST_F(MaskHistory, SlotsAreBitsOfColumnMajorWords) {
    Mask corner = plain(0);
    corner[2 * kWidth + 36] = 9;
    History::setMask(31, imageOf(plain(1)).get());
    History::setMask(4, imageOf(corner).get());
    EXPECT_EQ(History::m_bitPlane[36][2], 0x80000010U);
    EXPECT_EQ(History::m_bitPlane[2][36], 0x80000000U);
    History::setMask(31, imageOf(plain(0)).get());
    EXPECT_EQ(History::m_bitPlane[36][2], 0x10U);
}

TEST_F(MaskHistory, AnEmptyHistoryShowsNothingAndRedoReadsClearedPlanes) {
    EXPECT_EQ(History::undo(), nullptr);
    EXPECT_EQ(History::prevMask(), nullptr);
    EXPECT_FALSE(History::canUndo() || History::canRedo());
    EXPECT_EQ(take(History::redo()), plain(0));
    EXPECT_EQ(ring(), (std::vector<int>{0, 0, 0}));
}

TEST_F(MaskHistory, OnlyAnImpossibleSizeIsLogged) {
    clearLog();
    EXPECT_EQ(History::getMask(-1), nullptr);
    History::deallocate();
    EXPECT_EQ((std::vector<int>{History::width, History::height, History::m_maxSize}),
              (std::vector<int>{0, 0, 32}));
    EXPECT_EQ(takeLog(), Log{});
    VORNSEMarker::m_originalHeight = 0;
    EXPECT_EQ(History::getMask(0), nullptr);
    EXPECT_EQ(takeLog(), (Log{{6, "Error", "MEMORY_CRASH : getMask 92"}}));
}
