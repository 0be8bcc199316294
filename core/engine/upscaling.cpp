// From the working mask to photo size without blocky edges: a band along the mask's outline is
// enlarged, and a second cut at photo resolution decides its open pixels from the colour models and
// the photograph's own contrast.
//
// Notation, trimap codes: 7 outside the band, 0 open, 1 the band's outer ring (background), 2 its
// inner ring (object). Invariant at the end: every working image and the band's graph are released,
// m_labelImage is unchanged.
#include <opencv2/imgproc/imgproc_c.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>

#include "engine/hybrid.h"
#include "engine/neighbour_links.h"
#include "engine/terminal_weights.h"
#include "graph/graph.h"
#include "history/marker.h"
#include "support/image.h"
#include "support/log.h"

namespace {

constexpr std::uint8_t kOutsideBand = 7;
constexpr std::uint8_t kOpen = 0;
constexpr std::uint8_t kOuterRing = 1;
constexpr std::uint8_t kInnerRing = 2;
constexpr int kWide = 3;  // dilations and erosions that bound the band
constexpr int kNarrow = 1;

constexpr int kSizeLine = 1460;
constexpr int kCropSizeLine = 1820;
constexpr int kTableLine = 1905;
constexpr int kTableFreeLine = 2011;

constexpr int kGraphBuilt = 0;
constexpr int kGraphFailed = 1;

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
    constexpr std::uint8_t kCodes[] = {kOutsideBand, kOuterRing, kOpen, kInnerRing, kOutsideBand};
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
            if (row[x] != kOutsideBand) {
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

    const auto cropBand = [&](IplImage* source) {
        return ImagePtr(
            cropImageTrimap(source, m_boundWidthTrimap, m_boundHeightTrimap, band.yMin, band.xMin));
    };
    const auto cropTexture = [&](const IplImage* texture) {
        const ImagePtr enlarged = createChecked(photoWidth, photoHeight);
        cvResize(texture, enlarged.get(), CV_INTER_NN);
        return cropBand(enlarged.get());
    };
    ImagePtr trimap = cropBand(bandImage.get());
    ImagePtr image = cropBand(VORNSEMarker::m_originalImage);
    ImagePtr horizontal;
    ImagePtr vertical;
    if (VORNSEMarker::m_isGreyScale) {
        horizontal = cropTexture(VORNSEMarker::m_texHor);
        vertical = cropTexture(VORNSEMarker::m_texVer);
    }
    const int status = constructGraphTrimapVORN(image.get(), horizontal.get(), trimap.get(),
                                                horizontal.get(), vertical.get());
    if (status != kGraphBuilt) {
        SEGCORE_LOG_ERROR("Failed: intelligentUpscaling (status_flag = %d)", status);
        delete m_trimapGraph;
        m_trimapGraph = nullptr;
        enlargeMask(mask, bandImage.get());
        return bandImage.release();
    }
    m_trimapGraph->maxFlow();

    // The enlarged labels take the band image's place: the trimap lives on in its crop.
    ImagePtr labels = std::move(bandImage);
    cvResize(VORNSEMarker::m_labelImage, labels.get(), CV_INTER_NN);
    for (int y = 0; y < m_boundHeightTrimap; ++y) {
        const std::uint8_t* codes = rowOf(trimap.get(), y);
        std::uint8_t* row = rowOf(labels.get(), band.yMin + y) + band.xMin;
        for (int x = 0; x < m_boundWidthTrimap; ++x) {
            if (codes[x] == kOpen) {
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

int VORNSEHybrid::constructGraphTrimapVORN(IplImage* image, IplImage* /*texA*/, IplImage* trimap,
                                           IplImage* texHor, IplImage* texVer) {
    const int width = m_boundWidthTrimap;
    const int height = m_boundHeightTrimap;
    const int pixels = width * height;
    m_trimapGraph = new VORNSEGraph(pixels, pixels * kSlotsPerNode, width, height, 0);
    if (m_trimapGraph->m_nodes == nullptr || m_trimapGraph->m_edgeCaps == nullptr) {
        return kGraphFailed;
    }
    m_trimapGraph->reset();
    m_trimapGraph->addNode(pixels);

    int node = 0;
    for (int y = 0; y < height; ++y) {
        const std::uint8_t* row = rowOf(image, y);
        const std::uint8_t* codes = rowOf(trimap, y);
        const std::uint8_t* horizontal = VORNSEMarker::m_isGreyScale ? rowOf(texHor, y) : nullptr;
        const std::uint8_t* vertical = VORNSEMarker::m_isGreyScale ? rowOf(texVer, y) : nullptr;
        for (int x = 0; x < width; ++x, ++node) {
            if (codes[x] == kOuterRing) {
                m_trimapGraph->addtWeights(node, 0.0F, kHardWeight);
            } else if (codes[x] == kInnerRing) {
                m_trimapGraph->addtWeights(node, kHardWeight, 0.0F);
            } else if (codes[x] == kOutsideBand) {
                m_trimapGraph->addtWeights(node, 0.0F, 0.0F);
            } else {
                const TerminalWeights weights =
                    modelWeights(m_fgModel, m_bgModel, sampleAt(row, horizontal, vertical, x));
                m_trimapGraph->addtWeights(node, static_cast<float>(weights.source),
                                           static_cast<float>(weights.sink));
            }
        }
    }

    const ContrastTable table(m_beta, "constructGraphTrimapVORN", kTableLine, kTableFreeLine);
    if (!table.valid()) {
        return kGraphFailed;
    }
    const auto straight = static_cast<float>(m_lambda);
    const auto diagonal = static_cast<float>(m_lambda * kDiagonal);
    const auto link = [this](int from, int to, float weight) {
        m_trimapGraph->addEdge(from, to, weight, weight, false);
    };
    const auto noLink = [this](int from) { m_trimapGraph->addEdge(from, from, 0.0F, 0.0F, true); };
    node = 0;
    for (int y = 0; y < height; ++y) {
        const std::uint8_t* codes = rowOf(trimap, y);
        const std::uint8_t* codesAbove = y > 0 ? rowOf(trimap, y - 1) : nullptr;
        const std::uint8_t* row = rowOf(image, y);
        const std::uint8_t* above = y > 0 ? rowOf(image, y - 1) : nullptr;
        for (int x = 0; x < width; ++x, ++node) {
            const bool inBand = codes[x] != kOutsideBand;
            const std::uint8_t* pixel = row + kChannels * x;
            const std::uint8_t* up = above != nullptr ? above + kChannels * x : nullptr;
            const auto bandAbove = [&](int column) {
                return inBand && above != nullptr && column >= 0 && column < width &&
                       codesAbove[column] != kOutsideBand;
            };
            // Horizontal links do not depend on colour; results rely on it.
            if (inBand && x >= 1 && codes[x - 1] != kOutsideBand) {
                link(node, node - 1, straight);
            } else {
                noLink(node);
            }
            if (bandAbove(x - 1)) {
                link(node, node - width - 1, table.product(pixel, up - kChannels) * diagonal);
            } else {
                noLink(node);
            }
            if (bandAbove(x)) {
                link(node, node - width,
                     static_cast<float>(m_lambda * static_cast<double>(table.product(pixel, up))));
            } else {
                noLink(node);
            }
            if (bandAbove(x + 1)) {
                link(node, node - width + 1, table.product(pixel, up + kChannels) * diagonal);
            } else {
                noLink(node);
            }
        }
    }
    return kGraphBuilt;
}
