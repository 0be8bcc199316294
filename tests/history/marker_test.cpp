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

    void expect(const std::vector<bool>& held, std::size_t pointInts, bool flags, double noise) {
        std::vector<bool> present;
        for (IplImage* const* image : images) {
            present.push_back(*image != nullptr);
        }
        EXPECT_EQ(present, held);
        EXPECT_EQ(Store::currentStroke.m_points.size(), pointInts);
        EXPECT_EQ(Store::m_exitApp, flags);
        EXPECT_EQ(Store::m_isHomogenous, flags);
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
    expect({true, true, true, true, true, false}, 4, false, 0.1);
    EXPECT_EQ(labels->width, 3);  // the address sanitizer sees a release
}

TEST_F(MarkerStore, ResetKeepsThePhotographAndWhatWasComputedFromIt) {
    for (int times = 0; times < 2; ++times) {  // again on an empty store
        Store::resetMarkers();
        expect({true, true, true, true, false, false}, 0, false, 0.1);
    }
}

TEST_F(MarkerStore, DeallocatorReleasesEveryImageAndKeepsFlagsAndCapacity) {
    Store::dellocator();
    expect({false, false, false, false, false, false}, 0, true, 10.0);
    EXPECT_GE(Store::currentStroke.m_points.capacity(), 4U);
}
