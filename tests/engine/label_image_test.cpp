// From the host's marks to the labels of a request.
#include "engine/engine_test.h"
#include "history/undo_redo_history.h"

namespace {

class LabelImageTest : public EngineTest {
  protected:
    // The labels that marks of the photograph's size lead to.
    static Rows labelsOf(const ImagePtr& markers) {
        pHybrid->setLabelImage(markers.get());
        return textOf(VORNSEMarker::m_labelImage);
    }
};

TEST_F(LabelImageTest, BeforeTheFirstResultUnmarkedIsBackground) {
    startBlue(6, 1);
    setStroke(stroke::kLoopAdd, {});
    EXPECT_EQ(labelsOf(imageOf({".12437"})), (Rows{"112437"}));
    EXPECT_EQ(VORNSEMarker::m_prevResult, nullptr);
}

TEST_F(LabelImageTest, ShownResultStaysAndMarksThatRepeatItAreFixed) {
    // So small that a brush grows no band.
    startBlue(4, 2);
    VORNSEManageUndoRedo::updateBitPlane(imageOf({"....", "####"}).get());
    const auto labelled = [&](int type) {
        setStroke(type, {});
        return labelsOf(imageOf({".124", ".124"}));
    };
    const Rows added{"1124", "2222"};
    const Rows removed{"1111", "2124"};
    EXPECT_EQ(labelled(stroke::kLoopAdd), added);
    EXPECT_EQ(labelled(stroke::kBrushAdd), added);
    EXPECT_EQ(labelled(stroke::kLoopRemove), removed);
    EXPECT_EQ(labelled(stroke::kBrushRemove), removed);
    EXPECT_EQ(labelled(9), (Rows{"1124", "2124"}));
    EXPECT_EQ(textOf(VORNSEMarker::m_prevResult), (Rows{"....", "####"}));
}

TEST_F(LabelImageTest, BrushGrowsABandOfThirteenPixels) {
    startBlue(320, 240);
    for (const int type : {stroke::kBrushAdd, stroke::kBrushRemove}) {
        const int own = type == stroke::kBrushAdd ? 2 : 1;
        const Area point{100, 90, 1, 1};
        setStroke(type, {});
        const ImagePtr expected = imageWith(320, 240, {{0, 0, 320, 240}}, 1);
        fill(expected, {87, 77, 27, 27}, own + 2);
        fill(expected, point, own);
        const ImagePtr markers = imageWith(320, 240, {point}, own);
        EXPECT_EQ(labelsOf(markers), textOf(expected));
        const ImagePtr grown = imageWith(320, 240, {{87, 77, 27, 27}}, own + 2);
        fill(grown, point, own);
        EXPECT_EQ(textOf(markers), textOf(grown));
    }
}

}  // namespace
