// VORNSEHybrid: the segmentation engine, readable as the list of its stages. One object serves all
// requests on one photograph; it works on the images of the marker store (history/marker.h).
//
// A request: setLabelImage turns the marks into labels, segment() finds the working region, cuts it
// up to five times with colour models re-estimated in between, and delivers the mask through
// getObjMask.
//
// Threads: one, except that raising VORNSEMarker::m_exitApp from another stops a running segment().
// Errors: stages throw std::bad_alloc or the imaging library's exception when memory runs out; the
// caller then runs clearMemory() and may go on with the next request.
#pragma once

#include <opencv2/core/core_c.h>

#include <cstdint>

#include "colour/color_model.h"
#include "support/export.h"

class VORNSEGraph;

// Scale from the photograph to the working image, at least 1.0; set by intializer.
SEGCORE_DATA_API extern float g_imageResizeFactor;

class SEGCORE_API VORNSEHybrid {
  public:
    int m_width;  // size of the working image
    int m_height;
    int m_cropHeight;  // size of the working region
    int m_cropWidth;
    IplImage* m_cropImage;  // the working region's pixels, labels, and labels before the
    IplImage* m_cropLabel;  // first pass; they exist during segment() only
    IplImage* m_startLabel;
    IplImage* m_trialLabels[3];  // labels after passes 0, 1 and 2
    double m_lambda;             // smoothness weight
    int m_boxAreaTenth;          // a tenth of the marks' bounding box, in working pixels
    VORNSEGraph* m_graph;        // of the working region, during segment() only
    float* m_nLinks;             // four link weights per working pixel
    VORNSEColorModel m_fgModel;
    VORNSEColorModel m_bgModel;
    double m_beta;               // contrast: 1 / (2 <|difference of neighbours|^2>)
    VORNSEGraph* m_trimapGraph;  // of the band along the outline, during upscaling only
    int m_boundWidthTrimap;      // the band's bounding rectangle in photo pixels
    int m_boundHeightTrimap;
    int m_photoWidth;  // size of the photograph that the engine was prepared for
    int m_photoHeight;

    VORNSEHybrid();
    ~VORNSEHybrid();
    VORNSEHybrid(const VORNSEHybrid&) = delete;
    VORNSEHybrid& operator=(const VORNSEHybrid&) = delete;

    // Preparation, once per photograph. Reads the photograph of the marker store.
    void intializer();
    // Mean channel difference below one level. `image` has 3 channels.
    bool greyScaleTest(IplImage* image);
    // Gradient images that stand in for the chroma of a grey photograph.
    void computeTexture();
    // m_beta and m_nLinks: slot 0 left, 1 up-left, 2 up, 3 up-right of record y * m_width + x.
    // Slot 3 of row 0 is not written, and not to be read.
    void computeNlinks();

    // Marks to labels. `markers` is the marker image at photo size (0 none, 1 background, 2 object,
    // 4 candidate object); brush strokes grow a probable band in it.
    void setLabelImage(IplImage* markers);
    // The same labels without the band in `markers`, which at photo size takes many times longer:
    // for callers that drop the marks after this.
    void labelMarks(const IplImage* markers);
    // Frees the labels under the stroke's line.
    void addUnknownRegion();

    // The request itself: a new mask of photo size (255 object, 0 rest), already recorded in the
    // history; null when cancelled or out of time. The caller owns the mask.
    IplImage* segment();

    // Working region.
    void computeBoundingBox();
    IplImage* cropImage(IplImage* image);
    void preProcess();
    void removeBlackRegion();
    void graphSpaceAllocator();
    void graphSpaceDellocator();

    // Choice of the smoothness weight.
    // Sets weight and labels for a pass: 0 = train the models afresh, 1 = update, 2 = keep them.
    int parallelLamdaSwtich(int pass);
    // Index of the best of three label images by shape and contrast, -1 for none.
    int optimalLamda(IplImage* trialLabels[3], float*);
    // 1 when colours differ more across the mask's outline than inside it, else 2.
    int intensityTest(IplImage* mask);
    // The mask reaches to within `fraction` of all four borders.
    bool boundaryTest(IplImage* mask, float fraction);
    // After the models of a pass: 0 when the background is flat (its model gets more noise, and the
    // smoothness weight is not tried), else 1.
    int homogenousLamda(int pass);

    // One cut.
    void constructGraphVORN_Whole_Image();
    // Does nothing.
    void constructGraphVORN();
    // Writes the cut into the free labels; the number of pixels on the object's side.
    int updateLabelImage();

    // From labels to the mask.
    void chooseIter();
    IplImage* getObjMask();
    // `mask` is of working size with values 0 and 1; the result is of photo size with 0 and 255.
    IplImage* intelligentUpscaling(IplImage* mask);
    IplImage* cropImageTrimap(IplImage* source, int width, int height, int rowStart, int colStart);
    // 0, or 1 without memory for the graph. `texA` is not read; both texture crops are null for a
    // colour photograph.
    int constructGraphTrimapVORN(IplImage* image, IplImage* texA, IplImage* trimap,
                                 IplImage* texHor, IplImage* texVer);
    // Cleans a mask of photo size by the kind of the mark and merges it with the previous result.
    void postProcess(IplImage* mask);
    void postProcessForLoop(IplImage* mask);
    void postProcessForStroke(IplImage* mask);

    // Releases what exists during segment() only, and its timer.
    void clearMemory();
    // Stops the request's timer; true when the request is out of time or cancelled.
    bool cancelSegmentation();
};
