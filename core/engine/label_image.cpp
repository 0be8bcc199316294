// From marks to labels. Before the first result everything unmarked is background; afterwards what
// is shown stays as it is, except where the new marks and the stroke's line say otherwise.
// Invariant at the end: m_labelImage is of working size and holds label codes, m_prevResult is the
// mask on display or null.
#include <opencv2/imgproc/imgproc_c.h>

#include <cmath>

#include "engine/hybrid.h"
#include "history/marker.h"
#include "history/undo_redo_history.h"
#include "support/image.h"
#include "support/log.h"

namespace {

constexpr double kBandFraction = 0.05;  // width of a brush's band, of the photograph's mean side
constexpr int kStrokeThickness = 3;
constexpr int kEightConnected = 8;

// Surrounds a brush stroke with a band of probable object (or background) by dilating the marks.
void growBrushBand(IplImage* markers, int strokeType) {
    const bool adds = stroke::adds(strokeType);
    const std::uint8_t own = adds ? label::kObject : label::kBackground;
    const std::uint8_t band = adds ? label::kProbableObject : label::kProbableBackground;
    const int width = markers->width;
    const int height = markers->height;
    const ImagePtr undilated = cloneImage(markers);
    const auto iterations = static_cast<int>(
        std::sqrt(static_cast<double>(width) * static_cast<double>(height)) * kBandFraction);
    cvDilate(undilated.get(), markers, nullptr, iterations);
    for (int y = 0; y < height; ++y) {
        std::uint8_t* row = rowOf(markers, y);
        const std::uint8_t* before = rowOf(undilated.get(), y);
        for (int x = 0; x < width; ++x) {
            if (row[x] == own && before[x] == 0) {
                row[x] = band;
            }
        }
    }
}

void labelWithoutResult(IplImage* labels) {
    for (int y = 0; y < labels->height; ++y) {
        std::uint8_t* row = rowOf(labels, y);
        for (int x = 0; x < labels->width; ++x) {
            if (row[x] == 0) {
                row[x] = label::kBackground;
            }
        }
    }
}

// Unmarked pixels keep what is shown; marks that repeat what is shown become fixed.
void labelOverResult(IplImage* labels, const IplImage* shown, int strokeType) {
    const bool adds = stroke::adds(strokeType);
    const bool known = adds || stroke::removes(strokeType);
    const std::uint8_t repeated = adds ? 255 : 0;
    const std::uint8_t fixed = adds ? label::kObject : label::kBackground;
    for (int y = 0; y < labels->height; ++y) {
        std::uint8_t* row = rowOf(labels, y);
        const std::uint8_t* shownRow = rowOf(shown, y);
        for (int x = 0; x < labels->width; ++x) {
            if (row[x] == 0) {
                row[x] = shownRow[x] == 0 ? label::kBackground : label::kObject;
            } else if (known && shownRow[x] == repeated) {
                row[x] = fixed;
            }
        }
    }
}

}  // namespace

void VORNSEHybrid::setLabelImage(IplImage* markers) {
    releaseImage(VORNSEMarker::m_labelImage);
    releaseImage(VORNSEMarker::m_prevResult);
    const int strokeType = VORNSEMarker::currentStroke.m_strokeType;
    if (stroke::isBrush(strokeType)) {
        growBrushBand(markers, strokeType);
    }
    ImagePtr labels = cloneImage(markers);
    VORNSEMarker::m_prevResult = VORNSEManageUndoRedo::prevMask();
    if (VORNSEMarker::m_prevResult == nullptr) {
        labelWithoutResult(labels.get());
    } else {
        labelOverResult(labels.get(), VORNSEMarker::m_prevResult, strokeType);
    }
    if (g_imageResizeFactor == 1.0F) {
        VORNSEMarker::m_labelImage = labels.release();
    } else {
        checkImageSize(m_width, m_height, "setLabelImage", 223);
        ImagePtr reduced = createImage(m_width, m_height, 1);
        cvResize(labels.get(), reduced.get(), CV_INTER_NN);
        VORNSEMarker::m_labelImage = reduced.release();
    }
    addUnknownRegion();
}

void VORNSEHybrid::addUnknownRegion() {
    const std::vector<int>& points = VORNSEMarker::currentStroke.m_points;
    const auto workingPoint = [&points](std::size_t i) {
        return cvPoint(static_cast<int>(static_cast<float>(points[i]) / g_imageResizeFactor),
                       static_cast<int>(static_cast<float>(points[i + 1]) / g_imageResizeFactor));
    };
    const auto freeLine = [](CvPoint from, CvPoint to) {
        cvLine(VORNSEMarker::m_labelImage, from, to, cvScalarAll(label::kFree), kStrokeThickness,
               kEightConnected, 0);
    };
    for (std::size_t i = 0; i + 3 < points.size(); i += 2) {
        freeLine(workingPoint(i), workingPoint(i + 2));
    }
    if (points.size() > 3) {
        freeLine(workingPoint(points.size() - 2), workingPoint(0));
    }
}
