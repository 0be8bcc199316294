#include "history/marker.h"

#include <gtest/gtest.h>

#include "support/image.h"

using Store = VORNSEMarker;

namespace {

class MarkerStore : public testing::Test {
  protected:
    void SetUp() override {
        for (IplImage** image : images) {
            *image = createImage(3, 2, 1).release();
        }
        Store::m_exitApp = Store::m_isHomogenous = Store::m_isGreyScale = true;
        Store::m_noiseLevel = 10.0;
        Store::currentStroke = {{1, 2, 3, 4}, stroke::kBrushRemove};
    }
    void TearDown() override { Store::dellocator(); }

    std::vector<bool> held() const {
        std::vector<bool> result;
        for (IplImage* const* image : images) {
            result.push_back(*image != nullptr);
        }
        return result;
    }
    static void expectFlags(bool raised, double noise) {
        EXPECT_EQ(Store::m_exitApp, raised);
        EXPECT_EQ(Store::m_isHomogenous, raised);
        EXPECT_EQ(Store::m_noiseLevel, noise);
        EXPECT_TRUE(Store::m_isGreyScale);  // no operation touches these two
        EXPECT_EQ(Store::currentStroke.m_strokeType, stroke::kBrushRemove);
    }

    const std::vector<IplImage**> images = {&Store::m_originalImage, &Store::m_srcImage,
                                            &Store::m_texHor,        &Store::m_texVer,
                                            &Store::m_prevResult,    &Store::m_labelImage};
};

}  // namespace

TEST_F(MarkerStore, InitializerForgetsTheLabelsWithoutReleasingThem) {
    const ImagePtr labels(Store::m_labelImage);
    Store::allocator();
    Store::initializer();
    EXPECT_EQ(held(), (std::vector<bool>{true, true, true, true, true, false}));
    EXPECT_EQ(labels->width, 3);  // the address sanitizer sees a release
    EXPECT_EQ(Store::currentStroke.m_points.size(), 4U);
    expectFlags(false, 0.1);
}

TEST_F(MarkerStore, ResetKeepsThePhotographAndWhatWasComputedFromIt) {
    for (int times = 0; times < 2; ++times) {  // again on an empty store
        Store::resetMarkers();
        EXPECT_EQ(held(), (std::vector<bool>{true, true, true, true, false, false}));
        EXPECT_TRUE(Store::currentStroke.m_points.empty());
        expectFlags(false, 0.1);
    }
}

TEST_F(MarkerStore, DeallocatorReleasesEveryImageAndKeepsFlagsAndCapacity) {
    Store::dellocator();
    EXPECT_EQ(held(), std::vector<bool>(6, false));
    EXPECT_TRUE(Store::currentStroke.m_points.empty());
    EXPECT_GE(Store::currentStroke.m_points.capacity(), 4U);
    expectFlags(true, 10.0);
}
