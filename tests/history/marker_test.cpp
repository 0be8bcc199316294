#include "history/marker.h"

#include <gtest/gtest.h>

#include "support/image.h"

using Store = VORNSEMarker;

namespace {

class MarkerStore : public testing::Test {
  protected:
    ~MarkerStore() override { Store::dellocator(); }

    void fillStore() {
        for (IplImage** image : images) {
            releaseImage(*image);
            *image = createImage(3, 2, 1).release();
        }
        Store::m_exitApp = Store::m_isHomogenous = true;
        Store::m_noiseLevel = 10.0;
        Store::currentStroke.m_points = {1, 2, 3, 4};
    }
    // Whether the images are held, in the order below.
    std::vector<bool> held() const {
        std::vector<bool> present;
        for (IplImage* const* image : images) {
            present.push_back(*image != nullptr);
        }
        return present;
    }

    const std::vector<IplImage**> images = {&Store::m_originalImage, &Store::m_srcImage,
                                            &Store::m_texHor,        &Store::m_texVer,
                                            &Store::m_prevResult,    &Store::m_labelImage};
};

}  // namespace

TEST_F(MarkerStore, OperationsKeepWhatTheNextRequestNeeds) {
    fillStore();
    const ImagePtr labels(Store::m_labelImage);
    Store::initializer();  // forgets the labels without releasing them
    EXPECT_EQ(held(), (std::vector<bool>{true, true, true, true, true, false}));
    EXPECT_FALSE(Store::m_exitApp || Store::m_isHomogenous);
    EXPECT_EQ(labels->width, 3);  // the address sanitizer sees a release
    fillStore();
    Store::resetMarkers();
    EXPECT_EQ(held(), (std::vector<bool>{true, true, true, true, false, false}));
    EXPECT_TRUE(Store::currentStroke.m_points.empty());
    EXPECT_FALSE(Store::m_exitApp || Store::m_isHomogenous);
    EXPECT_EQ(Store::m_noiseLevel, 0.1);
    fillStore();
    Store::dellocator();
    EXPECT_EQ(held(), std::vector<bool>(6, false));
    EXPECT_TRUE(Store::m_exitApp && Store::m_isHomogenous);
}
