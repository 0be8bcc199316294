#include "snapping.h"

#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "path/edge_path.h"
#include "session/snapped_loop.h"

namespace {

constexpr double kAlpha = kDefaultAlpha;
constexpr int kPointRadius = 4;
const cv::Scalar kStraight(255, 200, 0);
const cv::Scalar kSnapped(0, 255, 255);
const cv::Scalar kPoint(40, 40, 220);

std::vector<cv::Point> cheapestPath(cv::Mat photo, cv::Point from, cv::Point to) {
    cv::Mat noLabels = cv::Mat::zeros(photo.size(), CV_8UC1);
    IplImage image = cvIplImage(photo);
    IplImage labels = cvIplImage(noLabels);
    const std::vector<int> parents = find_parent_info(&image, &labels, from.y, from.x, kAlpha);
    if (parents.empty()) {
        throw std::runtime_error("no path between the points");
    }
    std::vector<cv::Point> path{to};
    while (path.back() != from) {
        const cv::Point at = path.back();
        const int parent = parents[static_cast<std::size_t>(at.y * photo.cols + at.x)];
        path.emplace_back(parent % photo.cols, parent / photo.cols);
    }
    return path;
}

double costOf(cv::Mat photo, const std::vector<cv::Point>& path) {
    IplImage image = cvIplImage(photo);
    double cost = 0.0;
    for (std::size_t i = 1; i < path.size(); ++i) {
        cost += find_weight(&image, path[i - 1].y, path[i - 1].x, path[i].y, path[i].x, kAlpha);
    }
    return cost;
}

}  // namespace

cv::Mat paintSnapping(const cv::Mat& photo, const std::vector<cv::Point>& points) {
    cv::Mat picture = photo.clone();
    for (std::size_t i = 1; i < points.size(); ++i) {
        const std::vector<cv::Point> path = cheapestPath(photo, points[i - 1], points[i]);
        std::vector<cv::Point> straight;
        cv::LineIterator pixel(photo, points[i - 1], points[i]);
        for (int n = 0; n < pixel.count; ++n, ++pixel) {
            straight.push_back(pixel.pos());
        }
        if (costOf(photo, path) > costOf(photo, straight)) {
            throw std::runtime_error("a straight line is cheaper than the snapped path");
        }
        cv::polylines(picture, straight, false, kStraight, 1, cv::LINE_AA);
        cv::polylines(picture, path, false, kSnapped, 2, cv::LINE_AA);
    }
    for (const cv::Point& point : points) {
        cv::circle(picture, point, kPointRadius, kPoint, cv::FILLED, cv::LINE_AA);
        cv::circle(picture, point, kPointRadius, cv::Scalar::all(255), 1, cv::LINE_AA);
    }
    return picture;
}
