#include "engine/preview.h"

#include <opencv2/core.hpp>
#include <vector>

#include "engine/hybrid.h"
#include "engine/stroke_rules.h"
#include "history/marker.h"
#include "support/nearest_sampling.h"

namespace {

// At the places that the label image samples, so that both show the same of the mask on display.
ImagePtr reducedTo(const IplImage* mask, int width, int height) {
    const std::vector<int> columns = nearestPositions(mask->width, width);
    const std::vector<int> rows = nearestPositions(mask->height, height);
    ImagePtr small = createImage(width, height, 1);
    for (int y = 0; y < height; ++y) {
        const std::uint8_t* row = rowOf(mask, rows[static_cast<std::size_t>(y)]);
        std::uint8_t* out = rowOf(small.get(), y);
        for (int x = 0; x < width; ++x) {
            out[x] = row[columns[static_cast<std::size_t>(x)]];
        }
    }
    return small;
}

strokeInfo reducedStroke(const strokeInfo& stroke) {
    strokeInfo small = stroke;
    for (int& coordinate : small.m_points) {
        coordinate = static_cast<int>(static_cast<float>(coordinate) / g_imageResizeFactor);
    }
    return small;
}

}  // namespace

ImagePtr previewOf(const IplImage* workingMask, int object, int cropWidth, int cropHeight) {
    ImagePtr mask = cloneImage(workingMask);
    cv::Mat image = cv::cvarrToMat(mask.get());
    image.setTo(255, image == object);
    const strokeInfo stroke = reducedStroke(VORNSEMarker::currentStroke);
    ImagePtr previous;
    if (VORNSEMarker::m_prevResult != nullptr) {
        previous = reducedTo(VORNSEMarker::m_prevResult, mask->width, mask->height);
    }
    const cv::Rect region(VORNSEMarker::m_xMinBBox, VORNSEMarker::m_yMinBBox, cropWidth,
                          cropHeight);
    applyStrokeRules(mask.get(), previous.get(), stroke, region);
    return mask;
}
