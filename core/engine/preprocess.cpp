// Narrows the working region before the graph is built: black borders and flat margins become fixed
// background and are cut off. Invariant: the region only shrinks. What is cut off is labelled 1,
// and so, deliberately, is the outermost line of what stays.
#include <algorithm>

#include "engine/gradient.h"
#include "engine/hybrid.h"
#include "engine/margin_search.h"
#include "history/marker.h"
#include "support/image.h"
#include "support/log.h"

namespace {

// True when every channel byte of the column is 0.
bool isBlackColumn(const IplImage* image, int x) {
    for (int y = 0; y < image->height; ++y) {
        const std::uint8_t* pixel = rowOf(image, y) + image->nChannels * x;
        if (std::any_of(pixel, pixel + image->nChannels, [](std::uint8_t c) { return c != 0; })) {
            return false;
        }
    }
    return true;
}

bool isBlackRow(const IplImage* image, int y) {
    const std::uint8_t* row = rowOf(image, y);
    return std::all_of(row, row + image->nChannels * image->width,
                       [](std::uint8_t c) { return c == 0; });
}

// Labels what does not lie strictly inside the rectangle (in box coordinates) as background and
// makes the rectangle the working region.
void narrowTo(VORNSEHybrid& engine, const cv::Rect& kept) {
    const int right = kept.x + kept.width - 1;
    const int bottom = kept.y + kept.height - 1;
    for (int y = 0; y < engine.m_cropHeight; ++y) {
        std::uint8_t* row = rowOf(VORNSEMarker::m_labelImage, VORNSEMarker::m_yMinBBox + y) +
                            VORNSEMarker::m_xMinBBox;
        for (int x = 0; x < engine.m_cropWidth; ++x) {
            if (x <= kept.x || x >= right || y <= kept.y || y >= bottom) {
                row[x] = label::kBackground;
            }
        }
    }
    VORNSEMarker::m_xMinBBox += kept.x;
    VORNSEMarker::m_yMinBBox += kept.y;
    VORNSEMarker::m_xMaxBBox = VORNSEMarker::m_xMinBBox + kept.width - 1;
    VORNSEMarker::m_yMaxBBox = VORNSEMarker::m_yMinBBox + kept.height - 1;
    engine.m_cropHeight = kept.height;
    engine.m_cropWidth = kept.width;
}

}  // namespace

void VORNSEHybrid::removeBlackRegion() {
    const ImagePtr crop(cropImage(VORNSEMarker::m_srcImage));
    const int width = crop->width;
    const int height = crop->height;
    int left = 0;
    while (left < width && isBlackColumn(crop.get(), left)) {
        ++left;
    }
    if (left == width) {
        return;  // all black: no row can be found either
    }
    int right = width - 1;
    while (isBlackColumn(crop.get(), right)) {
        --right;
    }
    int top = 0;
    while (isBlackRow(crop.get(), top)) {
        ++top;
    }
    int bottom = height - 1;
    while (isBlackRow(crop.get(), bottom)) {
        --bottom;
    }
    if (left == 0 && right == width - 1 && top == 0 && bottom == height - 1) {
        return;
    }
    narrowTo(*this, cv::Rect(left, top, right - left + 1, bottom - top + 1));
}

void VORNSEHybrid::preProcess() {
    removeBlackRegion();
    checkImageSize(m_cropWidth, m_cropHeight, "preProcess", 2871);
    if (m_cropWidth < 1 || m_cropHeight < 1) {
        return;
    }
    const ImagePtr crop(cropImage(VORNSEMarker::m_srcImage));
    const ImagePtr labels(cropImage(VORNSEMarker::m_labelImage));
    const cv::Rect whole(0, 0, m_cropWidth, m_cropHeight);
    const cv::Rect kept = searchMargins(gradientMagnitude(crop.get()), cv::cvarrToMat(crop.get()),
                                        cv::cvarrToMat(labels.get()));
    if (kept != whole) {
        narrowTo(*this, kept);
    }
}
