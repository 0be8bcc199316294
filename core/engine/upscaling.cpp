// From the working mask to photo size without blocky edges: a band along the mask's outline is
// enlarged, and a second cut at photo resolution decides its open pixels from the colour models and
// the photograph's own contrast.
//
// Notation: the trimap codes of trimap.h. Invariant at the end: every working image and the band's graph are released,
// m_labelImage is unchanged.
#include <opencv2/imgproc/imgproc_c.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>

#include "engine/hybrid.h"
#include "engine/trimap.h"
#include "graph/graph.h"
#include "history/marker.h"
#include "support/image.h"
#include "support/log.h"

namespace {

constexpr int kWide = 3;  // dilations and erosions that bound the band
constexpr int kNarrow = 1;

constexpr int kSizeLine = 1460;
constexpr int kCropSizeLine = 1820;

constexpr int kGraphBuilt = 0;

ImagePtr createChecked(int width, int height) {
    checkImageSize(width, height, "intelligentUpscaling", kSizeLine);
    return createImage(width, height, 1);
}

// Codes the band from how many of four images a pixel is set in: the mask dilated and eroded by the
// wide and the narrow step.
void codeTrimap(const IplImage* mask, IplImage* trimap, IplImage* scratch) {
    cvSetZero(trimap);
    const auto addDilated = [&](int steps) {
        cvDilate(mask, scratch, nullptr, steps);
        cvAdd(trimap, scratch, trimap);
    };
    const auto addEroded = [&](int steps) {
        cvErode(mask, scratch, nullptr, steps);
        cvAdd(trimap, scratch, trimap);
    };
    addDilated(kWide);
    addDilated(kNarrow);
    addEroded(kNarrow);
    addEroded(kWide);
    constexpr std::uint8_t kCodes[] = {trimap::kOutside, trimap::kOuterRing, trimap::kOpen,
                                       trimap::kInnerRing, trimap::kOutside};
    for (int y = 0; y < trimap->height; ++y) {
        std::uint8_t* row = rowOf(trimap, y);
        for (int x = 0; x < trimap->width; ++x) {
            if (row[x] < sizeof(kCodes)) {
                row[x] = kCodes[row[x]];
            }
        }
    }
}

struct Extent {
    int xMin = INT_MAX;
    int xMax = -1;
    int yMin = INT_MAX;
    int yMax = -1;
};

Extent extentOfBand(const IplImage* trimap) {
    Extent extent;
    for (int y = 0; y < trimap->height; ++y) {
        const std::uint8_t* row = rowOf(trimap, y);
        for (int x = 0; x < trimap->width; ++x) {
            if (row[x] != trimap::kOutside) {
                extent.xMin = std::min(extent.xMin, x);
                extent.xMax = std::max(extent.xMax, x);
                extent.yMin = std::min(extent.yMin, y);
                extent.yMax = y;
            }
        }
    }
    return extent;
}

void enlargeMask(IplImage* mask, IplImage* result) {
    for (int y = 0; y < mask->height; ++y) {
        std::uint8_t* row = rowOf(mask, y);
        std::replace(row, row + mask->width, std::uint8_t{1}, std::uint8_t{255});
    }
    cvResize(mask, result, CV_INTER_NN);
}

}  // namespace

IplImage* VORNSEHybrid::intelligentUpscaling(IplImage* mask) {
    const int photoWidth = VORNSEMarker::m_originalWidth;
    const int photoHeight = VORNSEMarker::m_originalHeight;
    m_trimapGraph = nullptr;
    ImagePtr bandImage = createChecked(photoWidth, photoHeight);
    ImagePtr smallTrimap = createChecked(mask->width, mask->height);
    ImagePtr scratch = createChecked(mask->width, mask->height);
    codeTrimap(mask, smallTrimap.get(), scratch.get());
    cvResize(smallTrimap.get(), bandImage.get(), CV_INTER_NN);

    const Extent band = extentOfBand(bandImage.get());
    m_boundWidthTrimap = band.xMax - band.xMin + 1;
    m_boundHeightTrimap = band.yMax - band.yMin + 1;
    if (band.xMin >= bandImage->width || band.yMin >= bandImage->height || band.xMax < 0 ||
        band.yMax < 0 || band.xMax - band.xMin < 0 || band.yMax - band.yMin < 0) {
        SEGCORE_LOG_ERROR("Failed: xmin:%d, xmax:%d, ymin:%d, ymax:%d", band.xMin, band.xMax,
                          band.yMin, band.yMax);
        enlargeMask(mask, bandImage.get());
        m_boundWidthTrimap = 0;
        m_boundHeightTrimap = 0;
        return bandImage.release();
    }
    SEGCORE_LOG_INFO("Passed: xmin:%d, xmax:%d, ymin:%d, ymax:%d", band.xMin, band.xMax, band.yMin,
                     band.yMax);
    m_boundWidthTrimap = std::min(m_boundWidthTrimap, photoWidth);
    m_boundHeightTrimap = std::min(m_boundHeightTrimap, photoHeight);
    SEGCORE_LOG_INFO("m_boundWidthTrimap:%d, m_boundHeightTrimap:%d", m_boundWidthTrimap,
                     m_boundHeightTrimap);

    // The trimap and the photograph are read in place, through headers on their band's rectangle.
    const auto viewBand = [&](const IplImage* source) {
        IplImage view = *source;
        view.imageData += static_cast<std::ptrdiff_t>(band.yMin) * source->widthStep +
                          static_cast<std::ptrdiff_t>(band.xMin) * source->nChannels;
        view.width = m_boundWidthTrimap;
        view.height = m_boundHeightTrimap;
        return view;
    };
    const auto cropBand = [&](IplImage* source) {
        return ImagePtr(
            cropImageTrimap(source, m_boundWidthTrimap, m_boundHeightTrimap, band.yMin, band.xMin));
    };
    const auto cropTexture = [&](const IplImage* texture) {
        const ImagePtr enlarged = createChecked(photoWidth, photoHeight);
        cvResize(texture, enlarged.get(), CV_INTER_NN);
        return cropBand(enlarged.get());
    };
    IplImage codes = viewBand(bandImage.get());
    IplImage image = viewBand(VORNSEMarker::m_originalImage);
    ImagePtr horizontal;
    ImagePtr vertical;
    if (VORNSEMarker::m_isGreyScale) {
        horizontal = cropTexture(VORNSEMarker::m_texHor);
        vertical = cropTexture(VORNSEMarker::m_texVer);
    }
    const int status = constructGraphTrimapVORN(&image, horizontal.get(), &codes, horizontal.get(),
                                                vertical.get());
    if (status != kGraphBuilt) {
        SEGCORE_LOG_ERROR("Failed: intelligentUpscaling (status_flag = %d)", status);
        delete m_trimapGraph;
        m_trimapGraph = nullptr;
        enlargeMask(mask, bandImage.get());
        return bandImage.release();
    }
    m_trimapGraph->maxFlow();

    ImagePtr labels = createChecked(photoWidth, photoHeight);
    cvResize(VORNSEMarker::m_labelImage, labels.get(), CV_INTER_NN);
    for (int y = 0; y < m_boundHeightTrimap; ++y) {
        const std::uint8_t* code = rowOf(&codes, y);
        std::uint8_t* row = rowOf(labels.get(), band.yMin + y) + band.xMin;
        for (int x = 0; x < m_boundWidthTrimap; ++x) {
            if (code[x] == trimap::kOpen) {
                row[x] = m_trimapGraph->getTreeofNode(y * m_boundWidthTrimap + x) == 1
                             ? label::kProbableBackground
                             : label::kProbableObject;
            }
        }
    }
    delete m_trimapGraph;
    m_trimapGraph = nullptr;
    for (int y = 0; y < photoHeight; ++y) {
        std::uint8_t* row = rowOf(labels.get(), y);
        for (int x = 0; x < photoWidth; ++x) {
            row[x] = label::isObject(row[x]) ? 255 : 0;
        }
    }
    return labels.release();
}

IplImage* VORNSEHybrid::cropImageTrimap(IplImage* source, int width, int height, int rowStart,
                                        int colStart) {
    checkImageSize(width, height, "cropImageTrimap", kCropSizeLine);
    ImagePtr crop = createImage(width, height, source->nChannels);
    const auto rowBytes = static_cast<std::size_t>(m_boundWidthTrimap * source->nChannels);
    for (int y = 0; y < m_boundHeightTrimap; ++y) {
        std::memcpy(rowOf(crop.get(), y),
                    rowOf(source, rowStart + y) + colStart * source->nChannels, rowBytes);
    }
    return crop.release();
}
