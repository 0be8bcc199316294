#include "history/marker.h"

#include <gtest/gtest.h>

#include "support/image.h"

using Store = VORNSEMarker;

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
