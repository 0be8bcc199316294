// Flat margins that the working region loses, and those that it keeps.
#include "engine/engine_test.h"

namespace {

// A bright block on a grey ground, in a box of candidates ten pixels inside the photograph. Only
// the margin on its left is wide: the gradient of its edge begins at column 39, so the patch of
// columns 38 and 39 ends the margin, and 8 columns before that are kept: 30 are cut off.
struct MarginSearchTest : EngineTest {
    static constexpr int kWidth = 100;
    static constexpr int kHeight = 80;

    MarginSearchTest() {
        fill({40, 12, 40, 56}, 200);
        ::fill(m_labels, {10, 10, 80, 60}, label::kProbableObject);
    }
    void fill(const Area& area, int value) { ::fill(m_grey, area, value); }
    // The region left of the whole photograph.
    Area kept(int strokeType = stroke::kLoopAdd) {
        const IplImage* grey = m_grey.get();
        start(grey->width, grey->height, [=](int x, int y) { return greyWord(rowOf(grey, y)[x]); });
        setLabels(ImagePtr(cvCloneImage(m_labels.get())));
        setStroke(strokeType, {});
        setRegion({0, 0, grey->width, grey->height});
        pHybrid->preProcess();
        return region();
    }
    static Area from(int column) { return {column, 0, kWidth - column, kHeight}; }

    ImagePtr m_grey = imageWith(kWidth, kHeight, {{0, 0, kWidth, kHeight}}, 100);
    ImagePtr m_labels = imageWith(kWidth, kHeight, {{0, 0, kWidth, kHeight}}, 1);
};

TEST_F(MarginSearchTest, PlainMarginIsCutOffOnItsSide) {
    EXPECT_EQ(kept(), from(30));
    EXPECT_EQ(rowOf(VORNSEMarker::m_labelImage, 40)[30], label::kBackground);
    EXPECT_EQ(rowOf(VORNSEMarker::m_labelImage, 40)[31], label::kProbableObject);
    const auto turned = [this](bool sideways, int flip) {
        for (ImagePtr* image : {&m_grey, &m_labels}) {
            const cv::Mat source = cv::cvarrToMat(image->get());
            cv::Mat result = sideways ? cv::Mat(source.t()) : source.clone();
            cv::flip(result, result, flip);
            *image = createImage(result.cols, result.rows, 1);
            result.copyTo(cv::cvarrToMat(image->get()));
        }
        return kept();
    };
    EXPECT_EQ(turned(false, 1), Area(0, 0, 70, 80));   // right
    EXPECT_EQ(turned(true, 1), Area(0, 0, 80, 70));    // bottom
    EXPECT_EQ(turned(false, 0), Area(0, 30, 80, 70));  // top
}

TEST_F(MarginSearchTest, MarkedPixelEndsTheMargin) {
    for (int x = 11; x < 38; ++x) {
        rowOf(m_labels.get(), 40)[x] = label::kObject;
        EXPECT_EQ(kept(), from(x < 24 ? 0 : x - 8)) << x;  // less than 16 columns do not pay
        EXPECT_EQ(rowOf(VORNSEMarker::m_labelImage, 40)[x], label::kObject);
        rowOf(m_labels.get(), 40)[x] = label::kProbableObject;
    }
}

TEST_F(MarginSearchTest, ThinAndSoftThingsEndTheMargin) {
    // A spoke: around its tip the gradient's mean is 36 in columns 26 and 27, 98 in 27 and 28.
    fill({28, 40, 12, 1}, 160);
    EXPECT_EQ(kept(), from(19));
    fill({28, 40, 12, 1}, 100);
    fill({28, kHeight - 1, 12, 1}, 160);  // 64 in the last patch of columns 27 and 28
    EXPECT_EQ(kept(), from(19));
    fill({28, kHeight - 1, 12, 1}, 100);
    for (int x = 20; x < 40; ++x) {
        fill({x, 30, 1, 20}, 100 + 2 * (x - 19));  // a slope: columns 24, 25 are 11 levels away
    }
    EXPECT_EQ(kept(), from(16));
}

TEST_F(MarginSearchTest, FaintLineAlongTheSideEndsTheMargin) {
    // A step of one level has a gradient of 4, below 5; one of two levels has 8, from column 27 on.
    fill({28, 0, 12, kHeight}, 101);
    EXPECT_EQ(kept(), from(30));
    fill({28, 0, 12, kHeight}, 102);
    EXPECT_EQ(kept(), from(19));
}

TEST_F(MarginSearchTest, NothingIsCutInDoubt) {
    for (const int type : {stroke::kLoopRemove, stroke::kBrushAdd, stroke::kBrushRemove}) {
        EXPECT_EQ(kept(type), from(0));
    }
    for (const auto code : {label::kFree, label::kObject}) {  // on the side that is not cut
        rowOf(m_labels.get(), 40)[kWidth - 1] = code;
        EXPECT_EQ(kept(), from(0));
    }
    rowOf(m_labels.get(), 40)[kWidth - 1] = label::kBackground;
    fill({40, 12, 40, 56}, 100);  // no object to be seen
    EXPECT_EQ(kept(), from(0));
}

}  // namespace
