// From marks to labels. Before the first result everything unmarked is background; afterwards what
// is shown stays as it is, except where the new marks and the stroke's line say otherwise.
// Invariant at the end: m_labelImage is of working size and holds label codes, m_prevResult is the
// mask on display or null.
#include <opencv2/imgproc/imgproc_c.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "engine/hybrid.h"
#include "history/marker.h"
#include "history/undo_redo_history.h"
#include "support/image.h"
#include "support/log.h"
#include "support/nearest_sampling.h"

namespace {

constexpr double kBandFraction = 0.05;  // width of a brush's band, of the photograph's mean side
constexpr int kStrokeThickness = 3;
constexpr int kEightConnected = 8;

// The marker image at evenly spread positions. Labels depend on those that the working image
// samples, and on no others.
class SampledMarkers {
  public:
    SampledMarkers(const IplImage* markers, int width, int height)
        : m_markers(cv::cvarrToMat(markers)),
          m_columns(nearestPositions(markers->width, width)),
          m_rows(nearestPositions(markers->height, height)) {}

    cv::Size photoSize() const { return m_markers.size(); }
    const std::vector<int>& columns() const { return m_columns; }
    const std::vector<int>& rows() const { return m_rows; }

    cv::Mat values() const {
        cv::Mat sampled(static_cast<int>(m_rows.size()), static_cast<int>(m_columns.size()),
                        CV_8UC1);
        for (std::size_t y = 0; y < m_rows.size(); ++y) {
            const auto* row = m_markers.ptr<std::uint8_t>(m_rows[y]);
            auto* out = sampled.ptr<std::uint8_t>(static_cast<int>(y));
            for (std::size_t x = 0; x < m_columns.size(); ++x) {
                out[x] = row[m_columns[x]];
            }
        }
        return sampled;
    }

    // What `radius` dilations by the 3 x 3 square leave there: the maximum of the square window.
    cv::Mat dilated(int radius) const {
        // The maximum of 2 rows from each row on, then of 4, 8 and so on, as long as that fits into
        // the window. Two of the last ones, overlapping, cover it.
        cv::Mat maxima = rowMaxima(radius);
        const int window = 2 * radius + 1;
        int covered = 1;
        for (; 2 * covered <= window; covered *= 2) {
            const int rows = maxima.rows - covered;
            cv::Mat doubled;
            cv::max(maxima.rowRange(0, rows), maxima.rowRange(covered, maxima.rows), doubled);
            maxima = doubled;
        }
        cv::Mat sampled(static_cast<int>(m_rows.size()), maxima.cols, CV_8UC1);
        for (int y = 0; y < sampled.rows; ++y) {
            const int first = m_rows[static_cast<std::size_t>(y)];
            cv::Mat out = sampled.row(y);
            cv::max(maxima.row(first), maxima.row(first + window - covered), out);
        }
        return sampled;
    }

  private:
    // For every row of the photograph: the maxima around the sampled columns. `radius` rows of
    // zeros come before the first row and after the last.
    cv::Mat rowMaxima(int radius) const {
        cv::Mat maxima = cv::Mat::zeros(m_markers.rows + 2 * radius,
                                        static_cast<int>(m_columns.size()), CV_8UC1);
        const std::vector<std::uint8_t> unmarked(static_cast<std::size_t>(m_markers.cols));
        for (int y = 0; y < m_markers.rows; ++y) {
            const auto* row = m_markers.ptr<std::uint8_t>(y);
            if (std::memcmp(row, unmarked.data(), unmarked.size()) == 0) {
                continue;
            }
            auto* out = maxima.ptr<std::uint8_t>(y + radius);
            for (std::size_t x = 0; x < m_columns.size(); ++x) {
                const int first = std::max(m_columns[x] - radius, 0);
                const int last = std::min(m_columns[x] + radius, m_markers.cols - 1);
                std::uint8_t largest = 0;
                for (int i = first; i <= last; ++i) {
                    largest = std::max(largest, row[i]);
                }
                out[x] = largest;
            }
        }
        return maxima;
    }

    cv::Mat m_markers;
    std::vector<int> m_columns;
    std::vector<int> m_rows;
};

// Surrounds a brush stroke with a band of probable object (or background) by dilating the marks.
cv::Mat withBrushBand(const SampledMarkers& markers, const cv::Mat& values, int strokeType) {
    const bool adds = stroke::adds(strokeType);
    const std::uint8_t own = adds ? label::kObject : label::kBackground;
    const std::uint8_t band = adds ? label::kProbableObject : label::kProbableBackground;
    const double pixels = static_cast<double>(markers.photoSize().width) *
                          static_cast<double>(markers.photoSize().height);
    cv::Mat banded = markers.dilated(static_cast<int>(std::sqrt(pixels) * kBandFraction));
    for (int y = 0; y < banded.rows; ++y) {
        auto* row = banded.ptr<std::uint8_t>(y);
        const auto* before = values.ptr<std::uint8_t>(y);
        for (int x = 0; x < banded.cols; ++x) {
            if (row[x] == own && before[x] == mark::kNone) {
                row[x] = band;
            }
        }
    }
    return banded;
}

// The label of a mark before the first result: everything unmarked is background.
std::uint8_t labelWithoutResult(std::uint8_t code) {
    return code == mark::kNone ? label::kBackground : code;
}

// The label of a mark over a result: unmarked pixels keep what is shown, and marks that repeat what
// is shown become fixed.
std::uint8_t labelOverResult(std::uint8_t code, std::uint8_t shown, int strokeType) {
    if (code == mark::kNone) {
        return shown == 0 ? label::kBackground : label::kObject;
    }
    if (stroke::adds(strokeType) && shown == 255) {
        return label::kObject;
    }
    return stroke::removes(strokeType) && shown == 0 ? label::kBackground : code;
}

}  // namespace

void VORNSEHybrid::labelMarks(const IplImage* markers) {
    releaseImage(VORNSEMarker::m_labelImage);
    releaseImage(VORNSEMarker::m_prevResult);
    const int strokeType = VORNSEMarker::currentStroke.m_strokeType;
    const bool reduced = g_imageResizeFactor != 1.0F;
    if (reduced) {
        checkImageSize(m_width, m_height, "setLabelImage", 223);
    }
    const SampledMarkers sampled(markers, reduced ? m_width : markers->width,
                                 reduced ? m_height : markers->height);
    cv::Mat marks = sampled.values();
    if (stroke::isBrush(strokeType)) {
        marks = withBrushBand(sampled, marks, strokeType);
    }
    VORNSEMarker::m_prevResult = VORNSEManageUndoRedo::shown();
    const IplImage* shown = VORNSEMarker::m_prevResult;
    ImagePtr labels = createImage(marks.cols, marks.rows, 1);
    for (int y = 0; y < marks.rows; ++y) {
        const auto* row = marks.ptr<std::uint8_t>(y);
        std::uint8_t* out = rowOf(labels.get(), y);
        const std::uint8_t* shownRow =
            shown != nullptr ? rowOf(shown, sampled.rows()[static_cast<std::size_t>(y)]) : nullptr;
        for (int x = 0; x < marks.cols; ++x) {
            out[x] = shownRow == nullptr
                         ? labelWithoutResult(row[x])
                         : labelOverResult(row[x],
                                           shownRow[sampled.columns()[static_cast<std::size_t>(x)]],
                                           strokeType);
        }
    }
    VORNSEMarker::m_labelImage = labels.release();
    addUnknownRegion();
}

void VORNSEHybrid::setLabelImage(IplImage* markers) {
    labelMarks(markers);
    const int strokeType = VORNSEMarker::currentStroke.m_strokeType;
    if (stroke::isBrush(strokeType)) {
        const SampledMarkers every(markers, markers->width, markers->height);
        withBrushBand(every, every.values(), strokeType).copyTo(cv::cvarrToMat(markers));
    }
}

void VORNSEHybrid::addUnknownRegion() {
    const std::vector<int>& points = VORNSEMarker::currentStroke.m_points;
    const auto workingPoint = [](const int* xy) {
        return cvPoint(static_cast<int>(static_cast<float>(xy[0]) / g_imageResizeFactor),
                       static_cast<int>(static_cast<float>(xy[1]) / g_imageResizeFactor));
    };
    const auto freeLine = [](CvPoint from, CvPoint to) {
        cvLine(VORNSEMarker::m_labelImage, from, to, cvScalarAll(label::kFree), kStrokeThickness,
               kEightConnected, 0);
    };
    for (std::size_t i = 0; i + 3 < points.size(); i += 2) {
        freeLine(workingPoint(&points[i]), workingPoint(&points[i + 2]));
    }
    if (points.size() > 3) {
        freeLine(workingPoint(&points[points.size() - 2]), workingPoint(points.data()));
    }
}
