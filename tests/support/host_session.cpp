#include "support/host_session.h"

#include <opencv2/core.hpp>

#include "session/strokes.h"

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

int HostSession::request(std::vector<int> points, const std::vector<int>& markers, int strokeType) {
    blended = photo;
    setCurrentMarkerVector(static_cast<int>(points.size()), points.data());
    setMarkerImage(width, height, markers.data(), strokeType);
    return processSegment(0, 0, 0, blended.data(), mask.data());
}

void HostSession::step(decltype(::undo) call) {
    blended = photo;
    call(blended.data(), mask.data());
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

std::vector<int> HostSession::loopMarkers(const std::vector<int>& points) const {
    std::vector<int> markers = noMarkers();
    cv::Mat canvas(height, width, CV_32SC1, markers.data());
    std::vector<cv::Point> corners;
    for (std::size_t i = 0; i + 1 < points.size(); i += 2) {
        corners.emplace_back(points[i], points[i + 1]);
    }
    fillLoop(canvas, corners, SEGCORE_MARK_CANDIDATE);
    return markers;
}

std::vector<int> HostSession::rectangle(int x, int y, int columns, int rows, int code) const {
    std::vector<int> markers = noMarkers();
    cv::Mat(height, width, CV_32SC1, markers.data())(cv::Rect(x, y, columns, rows)) = code;
    return markers;
}
