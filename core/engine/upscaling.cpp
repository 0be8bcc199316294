// From the working mask to photo size without blocky edges: a band along the mask's outline is
// enlarged, and a second cut at photo resolution decides its open pixels from the colour models and
// the photograph's own contrast.
//
// Notation: the trimap codes of trimap.h. Invariant at the end: every working image and the band's
// graph are released, m_labelImage is unchanged.
#include <opencv2/imgproc/imgproc_c.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

#include "engine/hybrid.h"
#include "engine/trimap.h"
#include "graph/graph.h"
#include "history/marker.h"
#include "support/image.h"
#include "support/log.h"
#include "support/nearest_sampling.h"

namespace {

constexpr int kWide = 3;  // dilations and erosions that bound the band
constexpr int kNarrow = 1;

constexpr int kSizeLine = 1460;
// The enlarged band, the enlarged labels and the result: the size check logs a line for each,
// though the first two are never made in full.
constexpr int kPhotoSizedImages = 3;
constexpr int kCropSizeLine = 1820;

ImagePtr createChecked(int width, int height) {
    checkImageSize(width, height, "intelligentUpscaling", kSizeLine);
    return createImage(width, height, 1);
}

// The code of a pixel of the band depends on how many of four images it is set in: the mask dilated
// and eroded by the wide and by the narrow step.
void codeTrimap(const IplImage* mask, IplImage* trimap) {
    const ImagePtr owner = createChecked(mask->width, mask->height);
    IplImage* const scratch = owner.get();
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

    bool empty() const { return xMax < 0 || yMax < 0; }
};

// A working image as it looks at photo size, by nearest neighbour. The large image is never made.
class Enlarged {
  public:
    Enlarged(const IplImage* small, int width, int height)
        : m_small(small),
          m_columns(nearestPositions(small->width, width)),
          m_rows(nearestPositions(small->height, height)) {}

    // Whether row y repeats the row before it.
    bool repeats(int y) const {
        const auto row = static_cast<std::size_t>(y);
        return y > 0 && m_rows[row] == m_rows[row - 1];
    }
    // Row y from column x on, `width` values.
    void copyRow(int y, int x, int width, std::uint8_t* out) const {
        const std::uint8_t* source = sourceRow(y);
        const int* columns = m_columns.data() + x;
        for (int i = 0; i < width; ++i) {
            out[i] = source[columns[i]];
        }
    }

    // The rectangle of the values other than `empty`.
    Extent extentOf(std::uint8_t empty) const {
        Extent extent;
        std::vector<bool> columnUsed(static_cast<std::size_t>(m_small->width));
        for (int y = 0; y < static_cast<int>(m_rows.size()); ++y) {
            if (repeats(y) && extent.yMax != y - 1) {
                continue;
            }
            const std::uint8_t* row = sourceRow(y);
            bool used = false;
            for (int x = 0; x < m_small->width; ++x) {
                if (row[x] != empty) {
                    columnUsed[static_cast<std::size_t>(x)] = true;
                    used = true;
                }
            }
            if (used) {
                extent.yMin = std::min(extent.yMin, y);
                extent.yMax = y;
            }
        }
        for (int x = 0; x < static_cast<int>(m_columns.size()); ++x) {
            if (columnUsed[static_cast<std::size_t>(m_columns[static_cast<std::size_t>(x)])]) {
                extent.xMin = std::min(extent.xMin, x);
                extent.xMax = std::max(extent.xMax, x);
            }
        }
        return extent;
    }

  private:
    const std::uint8_t* sourceRow(int y) const {
        return rowOf(m_small, m_rows[static_cast<std::size_t>(y)]);
    }

    const IplImage* m_small;
    std::vector<int> m_columns;
    std::vector<int> m_rows;
};

void enlargeMask(IplImage* mask, IplImage* result) {
    for (int y = 0; y < mask->height; ++y) {
        std::uint8_t* row = rowOf(mask, y);
        std::replace(row, row + mask->width, std::uint8_t{1}, std::uint8_t{255});
    }
    cvResize(mask, result, CV_INTER_NN);
}

// The mask at working size, 255 for object.
ImagePtr maskOfLabels(const IplImage* labels) {
    ImagePtr mask = createChecked(labels->width, labels->height);
    for (int y = 0; y < labels->height; ++y) {
        const std::uint8_t* row = rowOf(labels, y);
        std::transform(row, row + labels->width, rowOf(mask.get(), y), [](std::uint8_t value) {
            return static_cast<std::uint8_t>(label::isObject(value) ? 255 : 0);
        });
    }
    return mask;
}

// What the cut decided at the open pixels of the band's rectangle.
class CutRows {
  public:
    CutRows(const VORNSEGraph& cut, const Enlarged& codes, const Extent& band)
        : m_cut(cut),
          m_codes(codes),
          m_left(band.xMin),
          m_top(band.yMin),
          m_codeRow(static_cast<std::size_t>(cut.m_width)) {}

    // Into row y of the photo-sized mask; rows come from the top down.
    void writeRow(int y, std::uint8_t* row) {
        if (y < m_top || y >= m_top + m_cut.m_height) {
            return;
        }
        if (y == m_top || !m_codes.repeats(y)) {
            findOpenColumns(y);
        }
        const int firstNode = (y - m_top) * m_cut.m_width;
        for (const int x : m_openColumns) {
            row[m_left + x] = m_cut.getTreeofNode(firstNode + x) == 1 ? 0 : 255;
        }
    }

  private:
    void findOpenColumns(int y) {
        m_codes.copyRow(y, m_left, m_cut.m_width, m_codeRow.data());
        m_openColumns.clear();
        for (int x = 0; x < m_cut.m_width; ++x) {
            if (m_codeRow[static_cast<std::size_t>(x)] == trimap::kOpen) {
                m_openColumns.push_back(x);
            }
        }
    }

    const VORNSEGraph& m_cut;
    const Enlarged& m_codes;
    int m_left;
    int m_top;
    std::vector<std::uint8_t> m_codeRow;
    std::vector<int> m_openColumns;  // of the last row
};

// The working mask at photo size, with what the cut decided.
ImagePtr maskWithCut(const IplImage* smallMask, CutRows cutRows) {
    const int width = VORNSEMarker::m_originalWidth;
    const int height = VORNSEMarker::m_originalHeight;
    const Enlarged enlarged(smallMask, width, height);
    ImagePtr mask = createChecked(width, height);
    std::vector<std::uint8_t> plainRow(static_cast<std::size_t>(width));
    for (int y = 0; y < height; ++y) {
        if (!enlarged.repeats(y)) {
            enlarged.copyRow(y, 0, width, plainRow.data());
        }
        std::uint8_t* row = rowOf(mask.get(), y);
        std::copy(plainRow.begin(), plainRow.end(), row);
        cutRows.writeRow(y, row);
    }
    return mask;
}

}  // namespace

IplImage* VORNSEHybrid::intelligentUpscaling(IplImage* mask) {
    const int photoWidth = VORNSEMarker::m_originalWidth;
    const int photoHeight = VORNSEMarker::m_originalHeight;
    m_trimapGraph = nullptr;
    ImagePtr smallCodes = createChecked(mask->width, mask->height);
    codeTrimap(mask, smallCodes.get());
    for (int i = 0; i < kPhotoSizedImages; ++i) {
        checkImageSize(photoWidth, photoHeight, "intelligentUpscaling", kSizeLine);
    }
    const Enlarged enlargedCodes(smallCodes.get(), photoWidth, photoHeight);
    const auto enlargedMask = [&] {
        ImagePtr result = createChecked(photoWidth, photoHeight);
        enlargeMask(mask, result.get());
        return result.release();
    };

    const Extent band = enlargedCodes.extentOf(trimap::kOutside);
    if (band.empty()) {
        SEGCORE_LOG_ERROR("Failed: xmin:%d, xmax:%d, ymin:%d, ymax:%d", band.xMin, band.xMax,
                          band.yMin, band.yMax);
        m_boundWidthTrimap = 0;
        m_boundHeightTrimap = 0;
        return enlargedMask();
    }
    SEGCORE_LOG_INFO("Passed: xmin:%d, xmax:%d, ymin:%d, ymax:%d", band.xMin, band.xMax, band.yMin,
                     band.yMax);
    m_boundWidthTrimap = std::min(band.xMax - band.xMin + 1, photoWidth);
    m_boundHeightTrimap = std::min(band.yMax - band.yMin + 1, photoHeight);
    SEGCORE_LOG_INFO("m_boundWidthTrimap:%d, m_boundHeightTrimap:%d", m_boundWidthTrimap,
                     m_boundHeightTrimap);

    const auto cropOf = [&](const Enlarged& enlarged) {
        ImagePtr crop = createChecked(m_boundWidthTrimap, m_boundHeightTrimap);
        for (int y = 0; y < m_boundHeightTrimap; ++y) {
            std::uint8_t* row = rowOf(crop.get(), y);
            if (y > 0 && enlarged.repeats(band.yMin + y)) {
                std::memcpy(row, rowOf(crop.get(), y - 1),
                            static_cast<std::size_t>(m_boundWidthTrimap));
            } else {
                enlarged.copyRow(band.yMin + y, band.xMin, m_boundWidthTrimap, row);
            }
        }
        return crop;
    };
    const auto cropTexture = [&](const IplImage* texture) {
        return cropOf(Enlarged(texture, photoWidth, photoHeight));
    };
    // The photograph is read in place, through a header on the band's rectangle.
    IplImage image = *VORNSEMarker::m_originalImage;
    image.imageData += static_cast<std::ptrdiff_t>(band.yMin) * image.widthStep +
                       static_cast<std::ptrdiff_t>(band.xMin) * image.nChannels;
    image.width = m_boundWidthTrimap;
    image.height = m_boundHeightTrimap;
    ImagePtr codes = cropOf(enlargedCodes);
    ImagePtr horizontal;
    ImagePtr vertical;
    if (VORNSEMarker::m_isGreyScale) {
        horizontal = cropTexture(VORNSEMarker::m_texHor);
        vertical = cropTexture(VORNSEMarker::m_texVer);
    }
    const int status = constructGraphTrimapVORN(&image, horizontal.get(), codes.get(),
                                                horizontal.get(), vertical.get());
    const std::unique_ptr<VORNSEGraph> cut(m_trimapGraph);
    m_trimapGraph = nullptr;
    if (status != kGraphBuilt) {
        SEGCORE_LOG_ERROR("Failed: intelligentUpscaling (status_flag = %d)", status);
        return enlargedMask();
    }
    codes.reset();
    horizontal.reset();
    vertical.reset();
    cut->maxFlow();
    const ImagePtr smallMask = maskOfLabels(VORNSEMarker::m_labelImage);
    return maskWithCut(smallMask.get(), CutRows(*cut, enlargedCodes, band)).release();
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
