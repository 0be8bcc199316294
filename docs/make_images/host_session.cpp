#include "host_session.h"

#include <opencv2/imgproc.hpp>

#include "segmentation_core.h"

HostSession::HostSession(const cv::Mat& photo) : m_mask(photo.size(), CV_8U, cv::Scalar(255)) {
    cv::cvtColor(photo, m_words, cv::COLOR_BGR2BGRA);
    setSourceImage(m_words.cols, m_words.rows, m_words.ptr<std::uint32_t>());
    initSegmentationEngine(0);
}

HostSession::~HostSession() {
    deinitSegmentation();
}

cv::Mat HostSession::box(const cv::Rect& box) {
    cv::Mat marks(m_words.size(), CV_32S, cv::Scalar(SEGCORE_MARK_NONE));
    marks(box) = cv::Scalar(SEGCORE_MARK_CANDIDATE);
    const cv::Point last = box.br() - cv::Point(1, 1);
    return request({box.tl(), {last.x, box.y}, last, {box.x, last.y}}, marks, SEGCORE_LOOP_ADD);
}

cv::Mat HostSession::brush(const BrushStroke& stroke) {
    cv::Mat marks(m_words.size(), CV_32S, cv::Scalar(SEGCORE_MARK_NONE));
    const int code = stroke.adds ? SEGCORE_MARK_OBJECT : SEGCORE_MARK_BACKGROUND;
    cv::polylines(marks, stroke.corners, false, cv::Scalar(code), 2 * stroke.radius);
    // A point for every pixel: the engine keeps the changes that a point lies in. And back again,
    // since it also frees the line from the last point to the first.
    std::vector<cv::Point> path;
    for (std::size_t i = 1; i < stroke.corners.size(); ++i) {
        cv::LineIterator pixel(m_words, stroke.corners[i - 1], stroke.corners[i]);
        for (int n = 0; n < pixel.count; ++n, ++pixel) {
            path.push_back(pixel.pos());
        }
    }
    path.insert(path.end(), path.rbegin(), path.rend());
    return request(path, marks, stroke.adds ? SEGCORE_BRUSH_ADD : SEGCORE_BRUSH_REMOVE);
}

cv::Mat HostSession::request(std::vector<cv::Point> stroke, const cv::Mat& marks, int strokeType) {
    std::vector<int> points;
    for (const cv::Point& point : stroke) {
        points.insert(points.end(), {point.x, point.y});
    }
    cv::Mat outlined = m_words.clone();
    setCurrentMarkerVector(static_cast<int>(points.size()), points.data());
    setMarkerImage(marks.cols, marks.rows, marks.ptr<int>(), strokeType);
    processSegment(0, 0, 0, outlined.ptr<std::uint32_t>(), m_mask.ptr());
    return 255 - m_mask;
}
