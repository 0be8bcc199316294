#include "history/marker.h"

#include <gtest/gtest.h>

#include "support/image.h"

using Store = VORNSEMarker;

namespace {

class MarkerStore : public testing::Test {
  protected:
    void SetUp() override {
        for (IplImage** image : {&Store::m_originalImage, &Store::m_srcImage, &Store::m_labelImage,
                                 &Store::m_prevResult, &Store::m_texHor, &Store::m_texVer}) {
            *image = createImage(3, 2, 1).release();
        }
        Store::m_exitApp = true;
        Store::m_isHomogenous = true;
        Store::m_isGreyScale = true;
        Store::m_noiseLevel = 10.0;
        Store::m_width = 7;
        Store::m_xMaxBBox = 5;
        Store::currentStroke.m_points = {1, 2, 3, 4};
        Store::currentStroke.m_strokeType = stroke::kBrushRemove;
    }
    void TearDown() override { Store::dellocator(); }

    static void expectStartFlags() {
        EXPECT_FALSE(Store::m_exitApp);
        EXPECT_FALSE(Store::m_isHomogenous);
        EXPECT_EQ(Store::m_noiseLevel, 0.1);
        expectUntouched();
    }
    // What no operation of the store changes.
    static void expectUntouched() {
        EXPECT_TRUE(Store::m_isGreyScale);
        EXPECT_EQ(Store::m_width, 7);
        EXPECT_EQ(Store::m_xMaxBBox, 5);
        EXPECT_EQ(Store::currentStroke.m_strokeType, stroke::kBrushRemove);
    }
};

}  // namespace

TEST_F(MarkerStore, InitializerForgetsTheLabelsWithoutReleasingThem) {
    const ImagePtr labels(Store::m_labelImage);
    Store::allocator();
    Store::initializer();
    EXPECT_EQ(Store::m_labelImage, nullptr);
    EXPECT_EQ(labels->width, 3);  // still ours: the address sanitizer would object
    EXPECT_NE(Store::m_prevResult, nullptr);
    EXPECT_EQ(Store::currentStroke.m_points.size(), 4U);
    expectStartFlags();
}

TEST_F(MarkerStore, ResetKeepsThePhotographAndWhatWasComputedFromIt) {
    for (int times = 0; times < 2; ++times) {  // again on an empty store
        Store::resetMarkers();
        EXPECT_EQ(Store::m_labelImage, nullptr);
        EXPECT_EQ(Store::m_prevResult, nullptr);
        EXPECT_TRUE(Store::currentStroke.m_points.empty());
        expectStartFlags();
    }
    for (const IplImage* kept :
         {Store::m_originalImage, Store::m_srcImage, Store::m_texHor, Store::m_texVer}) {
        EXPECT_NE(kept, nullptr);
    }
}

TEST_F(MarkerStore, DeallocatorReleasesEveryImageAndKeepsFlagsAndCapacity) {
    Store::dellocator();
    for (const IplImage* image : {Store::m_originalImage, Store::m_srcImage, Store::m_labelImage,
                                  Store::m_prevResult, Store::m_texHor, Store::m_texVer}) {
        EXPECT_EQ(image, nullptr);
    }
    EXPECT_TRUE(Store::currentStroke.m_points.empty());
    EXPECT_GE(Store::currentStroke.m_points.capacity(), 4U);
    EXPECT_TRUE(Store::m_exitApp);
    EXPECT_EQ(Store::m_noiseLevel, 10.0);
    expectUntouched();
}
