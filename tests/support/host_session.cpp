#include "support/host_session.h"

#include <opencv2/imgproc.hpp>

#include "interface/segmentation_core.h"

namespace {

std::vector<cv::Point> pairsOf(const std::vector<int>& points) {
    std::vector<cv::Point> pairs;
    for (std::size_t i = 0; i + 1 < points.size(); i += 2) {
        pairs.emplace_back(points[i], points[i + 1]);
    }
    return pairs;
}

}  // namespace

HostSession::HostSession(const Scene& scene)
    : width(scene.width),
      height(scene.height),
      photo(scene.pixels),
      blended(photo),
      mask(photo.size(), 255) {
    setSourceImage(width, height, photo.data());
    initSegmentationEngine(0);
}

HostSession::~HostSession() {
    deinitSegmentation();
    freeLocalBuffers();
}

int HostSession::box(int left, int top, int right, int bottom) {
    return loop({left, top, right, top, right, bottom, left, bottom}, SEGCORE_LOOP_ADD);
}

int HostSession::loop(const std::vector<int>& points, int strokeType) {
    return request(points, loopMarkers(points), strokeType);
}

int HostSession::brush(const std::vector<int>& points, int radius, int strokeType) {
    const int code =
        strokeType == SEGCORE_BRUSH_ADD ? SEGCORE_MARK_OBJECT : SEGCORE_MARK_BACKGROUND;
    return request(points, brushMarkers(points, radius, code), strokeType);
}

int HostSession::request(std::vector<int> points, const std::vector<int>& markers, int strokeType) {
    blended = photo;
    setCurrentMarkerVector(static_cast<int>(points.size()), points.data());
    setMarkerImage(width, height, markers.data(), strokeType);
    return processSegment(0, 0, 0, blended.data(), mask.data());
}

void HostSession::undo() {
    blended = photo;
    ::undo(blended.data(), mask.data());
}

void HostSession::redo() {
    blended = photo;
    ::redo(blended.data(), mask.data());
}

void HostSession::cutOut(const std::vector<int>& markers) {
    blended = photo;
    setMarkerImage(width, height, markers.data(), SEGCORE_BRUSH_ADD);
    cutOutImage(0, 0, 0, blended.data(), mask.data());
}

std::vector<int> HostSession::fetchOutline() {
    int* array = nullptr;
    int count = 0;
    fetch_path_array(&array, &count);
    std::vector<int> outline(array, array + count);
    release_path_array(array);
    return outline;
}

std::vector<int> HostSession::noMarkers() const {
    return std::vector<int>(photo.size(), SEGCORE_MARK_NONE);
}

std::vector<int> HostSession::loopMarkers(const std::vector<int>& points) const {
    std::vector<int> markers = noMarkers();
    cv::Mat canvas(height, width, CV_32SC1, markers.data());
    cv::fillPoly(canvas, std::vector<std::vector<cv::Point>>{pairsOf(points)},
                 cv::Scalar(SEGCORE_MARK_CANDIDATE));
    return markers;
}

std::vector<int> HostSession::brushMarkers(const std::vector<int>& points, int radius,
                                           int code) const {
    std::vector<int> markers = noMarkers();
    cv::Mat canvas(height, width, CV_32SC1, markers.data());
    const std::vector<cv::Point> path = pairsOf(points);
    for (std::size_t i = 0; i < path.size(); ++i) {
        cv::circle(canvas, path[i], radius, cv::Scalar(code), cv::FILLED);
        if (i > 0) {
            cv::line(canvas, path[i - 1], path[i], cv::Scalar(code), 2 * radius + 1);
        }
    }
    return markers;
}
