#include "grab_cut.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "session/errors.h"
#include "session/strokes.h"

namespace {

constexpr int kSeed = 2004;

cv::Mat objectOf(const cv::Mat& labels) {
    return (labels & 1) == 1;  // certain and probable object have the low bit
}

}  // namespace

cv::Size reducedSize(cv::Size photo, int pixels) {
    const double scale = std::min(1.0, std::sqrt(pixels / static_cast<double>(photo.area())));
    return {std::max(1, static_cast<int>(photo.width * scale)),
            std::max(1, static_cast<int>(photo.height * scale))};
}

GrabCut::GrabCut(const cv::Mat& image, cv::Size working, int iterations)
    : m_size(image.size()),
      m_image(image),
      m_labels(working, CV_8UC1, cv::Scalar(cv::GC_PR_BGD)),
      m_iterations(iterations),
      m_scaleX(static_cast<double>(working.width) / m_size.width),
      m_scaleY(static_cast<double>(working.height) / m_size.height) {
    if (working != m_size) {
        cv::resize(image, m_image, working, 0.0, 0.0, cv::INTER_AREA);
    }
}

cv::Point GrabCut::reduced(cv::Point point) const {
    return {static_cast<int>(point.x * m_scaleX), static_cast<int>(point.y * m_scaleY)};
}

void GrabCut::draw(const Step& mark) {
    std::vector<cv::Point> points;
    for (const cv::Point& point : mark.points) {
        points.push_back(reduced(point));
    }
    if (isBrush(mark.operation)) {
        const auto radius = static_cast<int>(std::lround(*mark.radius * m_scaleX));
        drawBrush(m_labels, points, radius, removes(mark.operation) ? cv::GC_BGD : cv::GC_FGD);
        return;
    }
    m_labels.setTo(cv::GC_BGD);
    if (mark.operation == Operation::kBox) {
        const cv::Point end = reduced(mark.points[1] + cv::Point(1, 1));
        const cv::Size size(std::max(1, end.x - points[0].x), std::max(1, end.y - points[0].y));
        m_labels(cv::Rect(points[0], size)).setTo(cv::GC_PR_FGD);
    } else {
        fillLoop(m_labels, points, cv::GC_PR_FGD);
    }
}

void GrabCut::cut() {
    const int object = cv::countNonZero(objectOf(m_labels));
    if (object == 0 || object == static_cast<int>(m_labels.total())) {
        return;  // no cut between one kind of pixels: they stay what they were marked as
    }
    const bool first = m_object.empty();
    cv::setRNGSeed(kSeed);
    cv::grabCut(m_image, m_labels, cv::Rect(), m_background, m_object, m_iterations,
                first ? cv::GC_INIT_WITH_MASK : cv::GC_EVAL);
}

void GrabCut::apply(const Step& mark) {
    requireInside(mark.points, m_size);
    draw(mark);
    cut();
}

cv::Mat GrabCut::mask() const {
    cv::Mat object = objectOf(m_labels);
    if (object.size() == m_size) {
        return object;
    }
    cv::Mat enlarged;
    cv::resize(object, enlarged, m_size, 0.0, 0.0, cv::INTER_LINEAR);
    return enlarged >= 128;
}
