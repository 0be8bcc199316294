#include "robot.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "core_path.h"
#include "session/strokes.h"

namespace {

constexpr double kLargestRadiusShare = 0.01;  // of the photograph's mean side
constexpr double kCoreShare = 0.5;            // of the largest depth
constexpr double kRadiusShare = 0.5;          // of the largest depth
// A region's edge runs between pixels, half a pixel before the first one outside.
constexpr double kToEdge = 0.5;
constexpr int kSidesAlone = 4;  // how pixels hang together

struct WrongRegion {
    Operation remedy;
    cv::Mat shape;     // CV_8UC1, 255 inside; one pixel of 0 around the region's rectangle
    cv::Point corner;  // of the shape in the photograph
};

// All regions of one kind.
class Regions {
  public:
    explicit Regions(const cv::Mat& wrong) {
        cv::Mat centroids;
        cv::connectedComponentsWithStats(wrong, m_labels, m_stats, centroids, kSidesAlone, CV_32S);
    }

    int largestArea() const {
        int largest = 0;
        for (int label = 1; label < m_stats.rows; ++label) {
            largest = std::max(largest, m_stats.at<int>(label, cv::CC_STAT_AREA));
        }
        return largest;
    }

    // Of the region at the pixel, 0 for none.
    int areaAt(int x, int y) const {
        const int label = m_labels.at<int>(y, x);
        return label == 0 ? 0 : m_stats.at<int>(label, cv::CC_STAT_AREA);
    }

    WrongRegion regionAt(int x, int y, Operation remedy) const {
        const int label = m_labels.at<int>(y, x);
        const int* const stats = m_stats.ptr<int>(label);
        const cv::Rect bounds(stats[cv::CC_STAT_LEFT], stats[cv::CC_STAT_TOP],
                              stats[cv::CC_STAT_WIDTH], stats[cv::CC_STAT_HEIGHT]);
        cv::Mat shape;
        cv::copyMakeBorder(m_labels(bounds) == label, shape, 1, 1, 1, 1,
                           cv::BORDER_CONSTANT | cv::BORDER_ISOLATED, cv::Scalar(0));
        return {remedy, shape, bounds.tl() - cv::Point(1, 1)};
    }

  private:
    cv::Mat m_labels;
    cv::Mat m_stats;
};

std::optional<WrongRegion> largestWrongRegion(const cv::Mat& mask, const cv::Mat& truth) {
    const cv::Mat object = mask == 255;
    const Regions missing(~object & (truth == 255));
    const Regions surplus(object & (truth == 0));
    const int largest = std::max(missing.largestArea(), surplus.largestArea());
    for (int y = 0; largest > 0 && y < mask.rows; ++y) {
        for (int x = 0; x < mask.cols; ++x) {
            if (missing.areaAt(x, y) == largest) {
                return missing.regionAt(x, y, Operation::kBrushAdd);
            }
            if (surplus.areaAt(x, y) == largest) {
                return surplus.regionAt(x, y, Operation::kBrushRemove);
            }
        }
    }
    return std::nullopt;
}

bool staysInside(const cv::Mat& shape, const std::vector<cv::Point>& path, int radius) {
    cv::Mat painted = cv::Mat::zeros(shape.size(), CV_8UC1);
    drawBrush(painted, path, radius, 255);
    return cv::countNonZero(painted & ~shape) == 0;
}

}  // namespace

std::optional<Step> robotStroke(const cv::Mat& mask, const cv::Mat& truth) {
    CV_Assert(mask.size() == truth.size());
    const std::optional<WrongRegion> region = largestWrongRegion(mask, truth);
    if (!region) {
        return std::nullopt;
    }
    cv::Mat depths;  // to the nearest pixel outside
    cv::distanceTransform(region->shape, depths, cv::DIST_L2, cv::DIST_MASK_PRECISE, CV_32F);
    const auto deepest = std::max_element(depths.begin<float>(), depths.end<float>());
    const double depth = static_cast<double>(*deepest) - kToEdge;
    std::vector<cv::Point> path =
        pathAlongCore(depths >= kCoreShare * depth + kToEdge, deepest.pos());

    const double meanSide = std::sqrt(static_cast<double>(mask.total()));
    int radius = static_cast<int>(std::min(kLargestRadiusShare * meanSide, kRadiusShare * depth));
    while (radius > 0 && !staysInside(region->shape, path, radius)) {
        --radius;
    }
    Step stroke;
    stroke.operation = region->remedy;
    stroke.radius = radius;
    for (cv::Point& point : path) {
        point += region->corner;
    }
    stroke.points = std::move(path);
    return stroke;
}
