// What a brush does to the marks themselves.
#include "engine/engine_test.h"

namespace {

using LabelImageTest = EngineTest;

TEST_F(LabelImageTest, BrushGrowsABandOfThirteenPixels) {
    startBlue(320, 240);
    for (const int type : {stroke::kBrushAdd, stroke::kBrushRemove}) {
        const int own = type == stroke::kBrushAdd ? 2 : 1;
        setStroke(type, {});
        const ImagePtr markers = imageWith(320, 240, {{100, 90, 1, 1}}, own);
        pHybrid->setLabelImage(markers.get());
        for (const int unmarked : {1, 0}) {
            const ImagePtr expected = imageWith(320, 240, {{0, 0, 320, 240}}, unmarked);
            fill(expected, {87, 77, 27, 27}, own + 2);
            fill(expected, {100, 90, 1, 1}, own);
            EXPECT_EQ(textOf(unmarked == 1 ? VORNSEMarker::m_labelImage : markers.get()),
                      textOf(expected));
        }
    }
}

}  // namespace
