// The working region: the box around what the request may change, padded by a margin and clamped to
// the working image, and crops of it.
#include <algorithm>
#include <climits>
#include <cstring>

#include "engine/hybrid.h"
#include "history/marker.h"
#include "support/image.h"
#include "support/log.h"

namespace {

constexpr int kMargin = 10;

struct Extent {
    int xMin = INT_MAX;
    int xMax = -1;
    int yMin = INT_MAX;
    int yMax = -1;

    void include(int x, int y) {
        xMin = std::min(xMin, x);
        xMax = std::max(xMax, x);
        yMin = std::min(yMin, y);
        yMax = std::max(yMax, y);
    }
    bool empty() const { return xMax < 0; }
};

template <typename Wanted>
Extent extentOfLabels(Wanted wanted) {
    Extent extent;
    const IplImage* labels = VORNSEMarker::m_labelImage;
    for (int y = 0; y < labels->height; ++y) {
        const std::uint8_t* row = rowOf(labels, y);
        for (int x = 0; x < labels->width; ++x) {
            if (wanted(row[x])) {
                extent.include(x, y);
            }
        }
    }
    return extent;
}

Extent extentOfStroke(const std::vector<int>& points) {
    Extent extent;
    const float scale = 1.0F / g_imageResizeFactor;
    for (std::size_t i = 0; i + 1 < points.size(); i += 2) {
        extent.include(static_cast<int>(static_cast<float>(points[i]) * scale),
                       static_cast<int>(static_cast<float>(points[i + 1]) * scale));
    }
    return extent;
}

Extent extentOfRequest() {
    const strokeInfo& current = VORNSEMarker::currentStroke;
    Extent extent;
    if (current.m_points.empty()) {
        extent = extentOfLabels(
            [](int code) { return code == label::kFree || code == label::kProbableObject; });
    } else if (stroke::isBrush(current.m_strokeType)) {
        const int band = stroke::adds(current.m_strokeType) ? label::kProbableObject
                                                            : label::kProbableBackground;
        extent = extentOfLabels([band](int code) { return code == band; });
    } else {
        extent = extentOfStroke(current.m_points);
    }
    return extent.empty() ? Extent{0, 0, 0, 0} : extent;
}

int paddedEnd(int last, int size) {
    return last + kMargin < size ? last + kMargin : size - 1;
}

}  // namespace

void VORNSEHybrid::computeBoundingBox() {
    const Extent extent = extentOfRequest();
    VORNSEMarker::m_xMinBBox = std::max(extent.xMin - kMargin, 0);
    VORNSEMarker::m_yMinBBox = std::max(extent.yMin - kMargin, 0);
    VORNSEMarker::m_xMaxBBox = paddedEnd(extent.xMax, m_width);
    VORNSEMarker::m_yMaxBBox = paddedEnd(extent.yMax, m_height);
    m_cropHeight = VORNSEMarker::m_yMaxBBox - VORNSEMarker::m_yMinBBox + 1;
    m_cropWidth = VORNSEMarker::m_xMaxBBox - VORNSEMarker::m_xMinBBox + 1;
    m_boxAreaTenth =
        static_cast<int>(((extent.xMax - extent.xMin) * (extent.yMax - extent.yMin)) * 0.1);
}

IplImage* VORNSEHybrid::cropImage(IplImage* image) {
    checkImageSize(m_cropWidth, m_cropHeight, "cropImage", 850);
    ImagePtr crop = createImage(m_cropWidth, m_cropHeight, image->nChannels);
    const auto rowBytes = static_cast<std::size_t>(m_cropWidth * image->nChannels);
    const int offset = VORNSEMarker::m_xMinBBox * image->nChannels;
    for (int y = 0; y < m_cropHeight; ++y) {
        std::memcpy(rowOf(crop.get(), y), rowOf(image, VORNSEMarker::m_yMinBBox + y) + offset,
                    rowBytes);
    }
    return crop.release();
}
