#include "session/user_marks.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "interface/segmentation_core.h"

namespace {

constexpr int kProbableBackground = 3;  // a code that has a meaning but no name in the header

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

// The pieces of `mask`, connected through the sides of pixels, that hold a pixel of `marked`.
cv::Mat piecesWith(const cv::Mat& marked, const cv::Mat& mask) {
    cv::Mat pieces;
    const int count = cv::connectedComponents(mask, pieces, 4);
    std::vector<std::uint8_t> kept(static_cast<std::size_t>(count), 0);
    const auto forAll = [&](auto&& act) {
        for (int y = 0; y < mask.rows; ++y) {
            const auto* row = pieces.ptr<int>(y);
            for (int x = 0; x < mask.cols; ++x) {
                if (row[x] != 0) {
                    act(y, x, static_cast<std::size_t>(row[x]));
                }
            }
        }
    };
    forAll([&](int y, int x, std::size_t piece) {
        kept[piece] = marked.at<std::uint8_t>(y, x) != 0 ? 255 : kept[piece];
    });
    cv::Mat result = cv::Mat::zeros(mask.size(), CV_8UC1);
    forAll([&](int y, int x, std::size_t piece) { result.at<std::uint8_t>(y, x) = kept[piece]; });
    return result;
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
      m_hasRegion(kept.hasRegion) {
    m_codes.setTo(SEGCORE_MARK_OBJECT, kept.object.unpacked(photo));
    m_codes.setTo(SEGCORE_MARK_BACKGROUND, kept.background.unpacked(photo));
}

UserMarks::Kept UserMarks::kept() const {
    return {m_hasRegion, KeptMask(m_region), KeptMask(m_codes == SEGCORE_MARK_OBJECT),
            KeptMask(m_codes == SEGCORE_MARK_BACKGROUND)};
}

void UserMarks::addRegion(const cv::Mat& inside) {
    m_region |= inside;
    m_hasRegion = true;
}

bool UserMarks::isWithinRegion(const cv::Mat& marked) const {
    return cv::countNonZero(marked & ~m_region) == 0;
}

cv::Mat UserMarks::region() const {
    if (!m_hasRegion) {
        return {m_region.size(), CV_8UC1, cv::Scalar(255)};
    }
    return m_region | (m_codes != SEGCORE_MARK_NONE);
}

void UserMarks::mark(const cv::Mat& where, int code) {
    m_codes.setTo(code, where);
}

void UserMarks::markChanges(const cv::Mat& before, const cv::Mat& after) {
    m_codes.setTo(SEGCORE_MARK_OBJECT, after & ~before);
    m_codes.setTo(SEGCORE_MARK_BACKGROUND, before & ~after);
}

bool UserMarks::hasObjectMarks() const {
    return cv::countNonZero(m_codes == SEGCORE_MARK_OBJECT) > 0;
}

cv::Mat UserMarks::firstCandidates() const {
    if (m_hasRegion || !hasObjectMarks()) {
        return region();
    }
    return spread(m_codes == SEGCORE_MARK_OBJECT, kFirstSpread);
}

// The rectangle around the region, moved away from the marks as far as the photograph allows: its
// line is left for the engine to decide, marked or not.
cv::Rect UserMarks::around() const {
    const cv::Rect photo({0, 0}, m_codes.size());
    const cv::Rect region = m_hasRegion ? cv::boundingRect(m_region) : photo;
    const cv::Rect marks = cv::boundingRect(m_codes);
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

Request UserMarks::request(const cv::Mat& candidates) const {
    cv::Mat codes = cv::Mat::zeros(m_codes.size(), CV_8UC1);
    const cv::Mat within = region();
    codes.setTo(kProbableBackground, within);
    codes.setTo(SEGCORE_MARK_CANDIDATE, within & candidates);
    m_codes.copyTo(codes, m_codes);
    Request request;
    request.strokeType = SEGCORE_LOOP_ADD;
    codes.convertTo(request.markers, CV_32S);
    const cv::Rect line = around();
    const cv::Point last = line.br() - cv::Point(1, 1);
    request.stroke = {line.tl(), {last.x, line.y}, last, {line.x, last.y}};
    return request;
}

cv::Mat UserMarks::honouredBy(const cv::Mat& mask) const {
    cv::Mat honoured = mask & region();
    honoured.setTo(255, m_codes == SEGCORE_MARK_OBJECT);
    honoured.setTo(0, m_codes == SEGCORE_MARK_BACKGROUND);
    if (!m_hasRegion && hasObjectMarks()) {
        honoured = piecesWith(m_codes == SEGCORE_MARK_OBJECT, honoured);
    }
    return honoured;
}

cv::Mat spread(const cv::Mat& marked, double share) {
    cv::Mat distance;
    cv::distanceTransform(marked == 0, distance, cv::DIST_L2, cv::DIST_MASK_5);
    return distance <= share * std::sqrt(static_cast<double>(marked.total()));
}
