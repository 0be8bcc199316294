#include <gtest/gtest.h>
#include <algorithm>
#include <cstring>
#include <random>

#include "history/marker.h"
#include "history/undo_redo_history.h"
#include "history_model.h"
#include "interface/segmentation_core.h"
#include "support/image_bytes.h"
#include "support/log_capture.h"

using History = VORNSEManageUndoRedo;
using Store = VORNSEMarker;

namespace {

constexpr int kWidth = 37;  // neither size is a multiple of a power of two
constexpr int kHeight = 45;

// The bytes of a mask that the history hands over; none stand for no mask.
Mask take(IplImage* image) {
    return bytesOf(ImagePtr(image));
}

Mask plain(std::uint8_t value) {
    return Mask(kWidth * kHeight, value);
}

struct MaskHistory : testing::Test {
    MaskHistory() {
        Store::m_originalWidth = kWidth;
        Store::m_originalHeight = kHeight;
        History::allocate();
    }
    ~MaskHistory() override { History::deallocate(); }

    // Planes as a host builds them; the words hold anything.
    static void buildPlanes() {
        History::deallocate();
        History::m_bitPlane = new std::uint32_t*[kWidth];
        for (int x = 0; x < kWidth; ++x) {
            History::m_bitPlane[x] = new std::uint32_t[kHeight];
            std::fill_n(History::m_bitPlane[x], kHeight, 0x12345678U);
        }
        History::width = kWidth;
        History::height = kHeight;
    }
    static void record(const Mask& mask) {
        History::record(imageOf(kWidth, kHeight, 1, mask).get());
    }
    static Mask at(int x, int y) {
        Mask mask = plain(0);
        mask[static_cast<std::size_t>(y * kWidth + x)] = 255;
        return mask;
    }
};

}  // namespace

TEST_F(MaskHistory, BehavesLikeAListOfMasksOnRandomSequences) {
    for (unsigned seed = 0; seed < 24; ++seed) {
        std::mt19937 random(seed);
        const bool direct = seed % 2 == 0;
        const auto shown = direct ? History::prevMask : History::shown;
        const auto record = direct ? History::updateBitPlane : History::record;
        const auto stepBack = direct ? History::undo : History::stepBack;
        const auto stepForward = direct ? History::redo : History::stepForward;
        if (seed == 8) {
            buildPlanes();
        } else if (seed == 16) {
            History::deallocate();
            History::allocate();
            History::width = History::height = 0;  // the photograph's size counts
        }
        HistoryModel twin;
        History::reset();
        const auto recordShare = 2 + seed % 8;  // from mostly stepping to wrapping the ring
        for (int step = 0; step < 250; ++step) {
            const auto display = [&] { return twin.shown() == nullptr ? Mask{} : *twin.shown(); };
            const auto choice = random() % 10;
            if ((twin.shown() == nullptr && !twin.canRedo()) || choice < recordShare) {
                Mask mask = plain(random() % 2 == 0 ? 0 : 255);
                const std::size_t noisy = random() % mask.size() * (random() % 2);
                std::generate_n(mask.begin(), noisy, [&] { return random() % 2 * 255; });
                record(imageOf(kWidth, kHeight, 1, mask).get());
                twin.record(mask);
            } else if (choice % 2 == 0) {
                twin.stepBack();
                ASSERT_EQ(take(stepBack()), display()) << seed << ' ' << step;
            } else {
                twin.stepForward();
                ASSERT_EQ(take(stepForward()), display()) << seed << ' ' << step;
            }
            ASSERT_EQ(take(shown()), display()) << seed << ' ' << step;
            ASSERT_EQ(History::canUndo(), twin.canUndo());
            ASSERT_EQ(History::canRedo(), twin.canRedo());
        }
    }
}

// Also for what host calls read and write, once the planes were given out.
TEST_F(MaskHistory, WordsWrittenByOthersCount) {
    record(plain(0));
    record(plain(255));
    std::uint32_t** const planes = History::m_bitPlane;
    History::setMask(31, imageOf(kWidth, kHeight, 1, at(36, 2)).get());
    EXPECT_EQ(planes[36][2], 0x80000002U);
    planes[36][2] = 0x80000001U;  // slots 0 and 31 get the pixel, slot 1 loses it
    EXPECT_EQ(take(History::stepBack()), at(36, 2));
    Mask hole = plain(255);
    hole[2 * kWidth + 36] = 0;
    EXPECT_EQ(take(History::stepForward()), hole);
    EXPECT_EQ(take(History::getMask(31)), at(36, 2));
    planes[5][40] |= 4U;
    record(plain(0));
    EXPECT_EQ(take(History::shown()), plain(0));
    planes[5][40] |= 4U;
    EXPECT_EQ(take(History::shown()), at(5, 40));
}

// The sanitizers see columns that stay, and those that are released in the wrong way.
TEST_F(MaskHistory, NewPhotographReleasesAHostsPlanes) {
    const std::vector<std::uint32_t> photo(kWidth * kHeight);
    buildPlanes();
    delete[] std::exchange(History::m_bitPlane[3], nullptr);
    setSourceImage(kWidth, kHeight, photo.data());
    record(at(1, 1));
    EXPECT_EQ(take(History::shown()), at(1, 1));
    Store::dellocator();
}

// Code that knows only the pointer's symbol gives the class no sign, but its direct calls read words.
TEST_F(MaskHistory, DirectCallsAlwaysReadTheWords) {
    std::uint32_t** planes = nullptr;
    static_assert(sizeof(BitPlanes) >= sizeof planes, "the pointer comes first");
    std::memcpy(&planes, &reinterpret_cast<const char&>(History::m_bitPlane), sizeof planes);
    record(plain(255));
    planes[5][40] = 2U;  // out of slot 0, into slot 1
    Mask hole = plain(255);
    hole[40 * kWidth + 5] = 0;
    EXPECT_EQ(take(History::prevMask()), hole);
    History::updateBitPlane(imageOf(kWidth, kHeight, 1, plain(0)).get());
    EXPECT_EQ(planes[5][40], 0U);
}

// What is written for a smaller photograph leaves the rest of the planes.
TEST_F(MaskHistory, PlanesMayBeLargerThanThePhotograph) {
    record(plain(0));
    History::reset();
    Store::m_originalWidth = 33;
    Store::m_originalHeight = 40;
    History::record(imageOf(33, 40, 1, Mask(33 * 40, 255)).get());
    Store::m_originalWidth = kWidth;
    Store::m_originalHeight = kHeight;
    const Mask mask = take(History::shown());
    EXPECT_EQ(std::count(mask.begin(), mask.end(), 255), 33 * 40);
    EXPECT_EQ(mask[39 * kWidth + 32], 255);
}

TEST_F(MaskHistory, OnlyAnImpossibleSizeIsLogged) {
    clearLog();
    EXPECT_EQ(History::getMask(-1), nullptr);
    History::deallocate();
    EXPECT_EQ(takeLog(), Log{});
    Store::m_originalHeight = 0;
    EXPECT_EQ(History::getMask(0), nullptr);
    EXPECT_EQ(takeLog(), (Log{{6, "Error", "MEMORY_CRASH : getMask 92"}}));
}

TEST(MarkerStore, OperationsKeepWhatTheNextRequestNeeds) {
    const auto fillStore = [] {
        Store::dellocator();
        for (IplImage** image : {&Store::m_srcImage, &Store::m_prevResult, &Store::m_labelImage}) {
            *image = createImage(3, 2, 1).release();
        }
        Store::m_exitApp = Store::m_isHomogenous = true;
        Store::m_noiseLevel = 10.0;
        Store::currentStroke.m_points = {1, 2, 3, 4};
    };
    fillStore();
    const ImagePtr labels(Store::m_labelImage);
    Store::initializer();         // forgets the labels without releasing them
    EXPECT_EQ(labels->width, 3);  // the address sanitizer sees a release
    EXPECT_TRUE(Store::m_prevResult != nullptr && Store::m_labelImage == nullptr);
    fillStore();
    Store::resetMarkers();
    EXPECT_TRUE(Store::m_srcImage != nullptr && Store::m_prevResult == nullptr);
    EXPECT_TRUE(Store::m_labelImage == nullptr && Store::currentStroke.m_points.empty());
    EXPECT_FALSE(Store::m_exitApp || Store::m_isHomogenous);
    EXPECT_EQ(Store::m_noiseLevel, 0.1);
    fillStore();
    Store::dellocator();
    EXPECT_TRUE(Store::m_srcImage == nullptr && Store::m_exitApp && Store::m_isHomogenous);
    Store::m_exitApp = false;
}
