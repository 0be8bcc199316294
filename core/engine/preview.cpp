#include "engine/preview.h"

#include <cstdint>
#include <opencv2/imgproc.hpp>

#include "engine/hybrid.h"
#include "engine/stroke_rules.h"
#include "history/marker.h"

namespace {

// At the places that the label image samples, so that both show the same of the mask on display.
ImagePtr reducedTo(const IplImage* mask, int width, int height) {
    ImagePtr small = createImage(width, height, 1);
    cv::Mat image = cv::cvarrToMat(small.get());
    cv::resize(cv::cvarrToMat(mask), image, image.size(), 0.0, 0.0, cv::INTER_NEAREST);
    return small;
}

// To the pixels that stand for its points in the mask. Dividing by the resize factor would put
// points at the right and the lower border outside of it, because the working size is rounded down.
strokeInfo reducedStroke(const strokeInfo& stroke, const IplImage* mask) {
    const auto reduced = [](int coordinate, int small, int large) {
        return static_cast<int>(static_cast<std::int64_t>(coordinate) * small / large);
    };
    strokeInfo small = stroke;
    for (std::size_t i = 0; i + 1 < small.m_points.size(); i += 2) {
        int& x = small.m_points[i];
        int& y = small.m_points[i + 1];
        x = reduced(x, mask->width, VORNSEMarker::m_originalWidth);
        y = reduced(y, mask->height, VORNSEMarker::m_originalHeight);
    }
    return small;
}

}  // namespace

ImagePtr previewOf(const IplImage* workingMask, int object, int cropWidth, int cropHeight) {
    ImagePtr mask = cloneImage(workingMask);
    cv::Mat image = cv::cvarrToMat(mask.get());
    image.setTo(255, image == object);
    const strokeInfo stroke = reducedStroke(VORNSEMarker::currentStroke, mask.get());
    ImagePtr previous;
    if (VORNSEMarker::m_prevResult != nullptr) {
        previous = reducedTo(VORNSEMarker::m_prevResult, mask->width, mask->height);
    }
    const cv::Rect region(VORNSEMarker::m_xMinBBox, VORNSEMarker::m_yMinBBox, cropWidth,
                          cropHeight);
    applyStrokeRules(mask.get(), previous.get(), stroke, region);
    return mask;
}
