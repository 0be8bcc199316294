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
        const int band = type == stroke::kBrushAdd ? 4 : 3;
        const ImagePtr markers = imageWith(320, 240, {{100, 90, 1, 1}}, own);
        setStroke(type, {});
        pHybrid->setLabelImage(markers.get());
        for (int y = 0; y < 240; ++y) {
            for (int x = 0; x < 320; ++x) {
                const bool near = std::abs(x - 100) <= 13 && std::abs(y - 90) <= 13;
                const int expected = x == 100 && y == 90 ? own : (near ? band : 1);
                ASSERT_EQ(rowOf(VORNSEMarker::m_labelImage, y)[x], expected) << x << ' ' << y;
            }
        }
    }
}

TEST_F(LabelImageTest, LabelsOfAReducedPhotographAreTheNearestMarks) {
    startBlue(640, 480);
    setStroke(stroke::kLoopAdd, {41, 161, 121, 161});  // (20, 80) to (60, 80)
    ImagePtr markers = imageWith(640, 480, {{40, 60, 1, 1}}, 2);
    rowOf(markers.get(), 61)[43] = 4;  // between the sampled pixels
    pHybrid->setLabelImage(markers.get());
    ASSERT_EQ(VORNSEMarker::m_labelImage->width, 320);
    EXPECT_EQ(rowOf(VORNSEMarker::m_labelImage, 30)[20], 2);
    EXPECT_EQ(rowOf(VORNSEMarker::m_labelImage, 30)[21], 1);
    EXPECT_EQ(rowOf(VORNSEMarker::m_labelImage, 80)[45], 0);
    EXPECT_EQ(rowOf(VORNSEMarker::m_labelImage, 83)[45], 1);
}

TEST_F(LabelImageTest, StrokeIsFreedAsAThickClosedLine) {
    startBlue(30, 30);
    setStroke(stroke::kLoopAdd, {5, 5, 20, 5, 20, 20});
    const Rows labels = labelsOf(imageWith(30, 30, {}, 0));
    // The imaging library's lines of thickness 3 cover one or two pixels on each side.
    for (std::size_t i = 4; i <= 6; ++i) {
        EXPECT_EQ(labels[i][12], '.');       // first side, y = 5
        EXPECT_EQ(labels[12][i + 15], '.');  // second side, x = 20
        EXPECT_EQ(labels[12][i + 7], '.');   // closing side, the diagonal
    }
    EXPECT_EQ(labels[2], std::string(30, '1'));
    EXPECT_EQ(labels[8][13], '1');
    EXPECT_EQ(labels[12].substr(23), "1111111");
    EXPECT_EQ(labels[12].substr(0, 9), "111111111");
}

}  // namespace
