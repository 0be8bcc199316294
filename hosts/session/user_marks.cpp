#include "session/user_marks.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "interface/segmentation_core.h"

namespace {

constexpr std::uint8_t kInside = 255;
constexpr std::uint8_t kProbableBackground =
    3;  // a code that has a meaning but no name in the header

// The engine frees a line three pixels wide at its working size of 76800 pixels. Marks two working
// pixels from its middle are clear of it; one more is for the rounding.
constexpr double kWorkingPixels = 76800.0;
constexpr double kLineReach = 3.0;

int clearanceOf(cv::Size photo) {
    const double factor = std::sqrt(static_cast<double>(photo.area()) / kWorkingPixels);
    return static_cast<int>(std::ceil(kLineReach * std::max(1.0, factor)));
}

// How far the first object marks reach, of the photograph's mean side: as far as the engine's own
// band around a brush.
constexpr double kFirstSpread = 0.05;

// Takes from `mask` the pieces, connected through the sides of pixels, in which no pixel is marked
// with `code`.
void keepPiecesWith(const cv::Mat& codes, int code, cv::Mat& mask) {
    const cv::Rect around = cv::boundingRect(mask);
    if (around.empty()) {
        return;
    }
    cv::Mat object = mask(around);
    cv::Mat pieces;
    const int count = cv::connectedComponents(object, pieces, 4);
    std::vector<std::uint8_t> kept(static_cast<std::size_t>(count), 0);
    const auto forAll = [&](auto&& act) {
        for (int y = 0; y < object.rows; ++y) {
            const auto* row = pieces.ptr<int>(y);
            for (int x = 0; x < object.cols; ++x) {
                if (row[x] != 0) {
                    act(y, x, static_cast<std::size_t>(row[x]));
                }
            }
        }
    };
    const cv::Mat marks = codes(around);
    forAll([&](int y, int x, std::size_t piece) {
        kept[piece] = marks.at<std::uint8_t>(y, x) == code ? kInside : kept[piece];
    });
    forAll([&](int y, int x, std::size_t piece) { object.at<std::uint8_t>(y, x) = kept[piece]; });
}

void clearOutside(cv::Rect kept, cv::Mat& mask) {
    mask.rowRange(0, kept.y).setTo(0);
    mask.rowRange(kept.br().y, mask.rows).setTo(0);
    cv::Mat rows = mask.rowRange(kept.y, kept.br().y);
    rows.colRange(0, kept.x).setTo(0);
    rows.colRange(kept.br().x, mask.cols).setTo(0);
}

// A side of a rectangle moves outwards where marks come close to it.
int lowSide(int side, int marks, int clearance) {
    return marks < side + clearance ? std::min(side, marks - clearance) : side;
}
int highSide(int side, int marks, int clearance) {
    return -lowSide(-side, -marks, clearance);
}

}  // namespace

UserMarks::UserMarks(cv::Size photo)
    : m_region(cv::Mat::zeros(photo, CV_8UC1)), m_codes(cv::Mat::zeros(photo, CV_8UC1)) {}

UserMarks::UserMarks(const Kept& kept, cv::Size photo)
    : m_region(kept.region.unpacked(photo)),
      m_codes(cv::Mat::zeros(photo, CV_8UC1)),
      m_regionRect(kept.regionRect),
      m_marksRect(kept.marksRect),
      m_hasRegion(kept.hasRegion),
      m_keptRegion(kept.region) {
    kept.object.writeTo(m_codes, SEGCORE_MARK_OBJECT);
    kept.background.writeTo(m_codes, SEGCORE_MARK_BACKGROUND);
}

UserMarks::Kept UserMarks::kept() const {
    return {m_hasRegion,
            m_regionRect,
            m_marksRect,
            m_keptRegion,
            KeptMask(m_codes, SEGCORE_MARK_OBJECT, m_marksRect),
            KeptMask(m_codes, SEGCORE_MARK_BACKGROUND, m_marksRect)};
}

void UserMarks::addRegion(const Drawing& drawing) {
    cv::Mat part = m_region(drawing.where);
    part |= drawing.inside;
    m_regionRect |= cv::boundingRect(drawing.inside) + drawing.where.tl();
    m_hasRegion = true;
    m_keptRegion = KeptMask(m_region);
}

bool UserMarks::isWithinRegion(const Drawing& drawing) const {
    return cv::countNonZero(drawing.inside & ~m_region(drawing.where)) == 0;
}

cv::Mat UserMarks::region() const {
    if (!m_hasRegion) {
        return {m_region.size(), CV_8UC1, cv::Scalar(kInside)};
    }
    return m_region | (m_codes != SEGCORE_MARK_NONE);
}

void UserMarks::mark(const Drawing& drawing, int code) {
    m_codes(drawing.where).setTo(code, drawing.inside);
    m_marksRect |= cv::boundingRect(drawing.inside) + drawing.where.tl();
}

void UserMarks::markChanges(const cv::Mat& before, const cv::Mat& after) {
    for (int y = 0; y < m_codes.rows; ++y) {
        const auto* from = before.ptr<std::uint8_t>(y);
        const auto* to = after.ptr<std::uint8_t>(y);
        // Most rows are as they were.
        if (std::memcmp(from, to, static_cast<std::size_t>(m_codes.cols)) == 0) {
            continue;
        }
        auto* codes = m_codes.ptr<std::uint8_t>(y);
        int first = m_codes.cols;
        int last = 0;
        for (int x = 0; x < m_codes.cols; ++x) {
            if (from[x] != to[x]) {
                codes[x] = to[x] != 0 ? SEGCORE_MARK_OBJECT : SEGCORE_MARK_BACKGROUND;
                first = std::min(first, x);
                last = x;
            }
        }
        m_marksRect |= cv::Rect(first, y, last - first + 1, 1);
    }
}

bool UserMarks::hasObjectMarks() const {
    return cv::countNonZero(m_codes(m_marksRect) == SEGCORE_MARK_OBJECT) > 0;
}

cv::Mat UserMarks::firstCandidates() const {
    if (m_hasRegion || !hasObjectMarks()) {
        return region();
    }
    return spread(m_codes == SEGCORE_MARK_OBJECT, kFirstSpread);
}

cv::Rect UserMarks::regionRect() const {
    return m_hasRegion ? m_regionRect : cv::Rect({0, 0}, m_codes.size());
}

// The rectangle around the region, moved away from the marks as far as the photograph allows: its
// line is left for the engine to decide, marked or not.
cv::Rect UserMarks::around() const {
    const cv::Rect photo({0, 0}, m_codes.size());
    const cv::Rect region = regionRect();
    const cv::Rect marks = m_marksRect;
    if (marks.empty()) {
        return region;
    }
    const int clearance = clearanceOf(photo.size());
    const cv::Point low(lowSide(region.x, marks.x, clearance),
                        lowSide(region.y, marks.y, clearance));
    const cv::Point high(highSide(region.br().x, marks.br().x, clearance),
                         highSide(region.br().y, marks.br().y, clearance));
    return cv::Rect(low, high) & photo;
}

// Calls act(y, codes, region) for each row of the rectangle that holds region and marks, with the
// row's marker codes in that rectangle and 255 where the boxes and loops are.
template <typename Act>
void UserMarks::forRows(cv::Rect within, Act&& act) const {
    const std::vector<std::uint8_t> everywhere(static_cast<std::size_t>(within.width), kInside);
    for (int y = within.y; y < within.br().y; ++y) {
        act(y, m_codes.ptr<std::uint8_t>(y) + within.x,
            m_hasRegion ? m_region.ptr<std::uint8_t>(y) + within.x : everywhere.data());
    }
}

Request UserMarks::request(const cv::Mat& candidates) const {
    Request request;
    request.strokeType = SEGCORE_LOOP_ADD;
    request.markers = cv::Mat::zeros(m_codes.size(), CV_8UC1);
    const cv::Rect within = regionRect() | m_marksRect;
    forRows(within, [&](int y, const std::uint8_t* codes, const std::uint8_t* region) {
        const auto* candidate = candidates.ptr<std::uint8_t>(y) + within.x;
        auto* out = request.markers.ptr<std::uint8_t>(y) + within.x;
        for (int x = 0; x < within.width; ++x) {
            const std::uint8_t probable =
                candidate[x] != 0 ? SEGCORE_MARK_CANDIDATE : kProbableBackground;
            out[x] = codes[x] != SEGCORE_MARK_NONE ? codes[x] : probable & region[x];
        }
    });
    const cv::Rect line = around();
    const cv::Point last = line.br() - cv::Point(1, 1);
    request.stroke = {line.tl(), {last.x, line.y}, last, {line.x, last.y}};
    return request;
}

void UserMarks::correct(cv::Mat& mask) const {
    const cv::Rect within = regionRect() | m_marksRect;
    clearOutside(within, mask);
    forRows(within, [&](int y, const std::uint8_t* codes, const std::uint8_t* region) {
        auto* out = mask.ptr<std::uint8_t>(y) + within.x;
        for (int x = 0; x < within.width; ++x) {
            const std::uint8_t found = codes[x] == SEGCORE_MARK_BACKGROUND ? 0 : out[x] & region[x];
            out[x] = codes[x] == SEGCORE_MARK_OBJECT ? kInside : found;
        }
    });
    if (!m_hasRegion && hasObjectMarks()) {
        keepPiecesWith(m_codes, SEGCORE_MARK_OBJECT, mask);
    }
}

cv::Mat spread(const cv::Mat& marked, double share) {
    cv::Mat distance;
    cv::distanceTransform(marked == 0, distance, cv::DIST_L2, cv::DIST_MASK_5);
    return distance <= share * std::sqrt(static_cast<double>(marked.total()));
}
