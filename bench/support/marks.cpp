#include "support/marks.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>

#include "interface/segmentation_core.h"

namespace {

constexpr double kBrushRadius = 0.01;  // of the photograph's mean side
constexpr double kStrokeStep = 4.0;    // brush radii between two reported points, as a finger moves

cv::Mat markerImage(const Photograph& photo, Marks& marks) {
    marks.markers.assign(photo.pixels(), SEGCORE_MARK_NONE);
    return {photo.height, photo.width, CV_32SC1, marks.markers.data()};
}

cv::Point inside(const Photograph& photo, double x, double y) {
    return {std::clamp(static_cast<int>(x), 0, photo.width - 1),
            std::clamp(static_cast<int>(y), 0, photo.height - 1)};
}

// Point of the box at fractions of its width and height.
cv::Point inBox(const Photograph& photo, double u, double v) {
    const Box& box = photo.box;
    return inside(photo, box.left + u * (box.right - box.left),
                  box.top + v * (box.bottom - box.top));
}

}  // namespace

Marks boxMarks(const Photograph& photo) {
    const Box& box = photo.box;
    Marks marks{{}, {}, SEGCORE_LOOP_ADD};
    const auto add = [&marks](int x, int y) { marks.points.insert(marks.points.end(), {x, y}); };
    for (int x = box.left; x < box.right; ++x) {
        add(x, box.top);
    }
    for (int y = box.top; y < box.bottom; ++y) {
        add(box.right, y);
    }
    for (int x = box.right; x > box.left; --x) {
        add(x, box.bottom);
    }
    for (int y = box.bottom; y > box.top; --y) {
        add(box.left, y);
    }
    cv::rectangle(markerImage(photo, marks), cv::Point(box.left, box.top),
                  cv::Point(box.right, box.bottom), cv::Scalar(SEGCORE_MARK_CANDIDATE), cv::FILLED);
    return marks;
}

Marks loopMarks(const Photograph& photo) {
    Marks marks{{}, {}, SEGCORE_LOOP_ADD};
    for (const cv::Point& point : photo.loop) {
        marks.points.insert(marks.points.end(), {point.x, point.y});
    }
    cv::Mat image = markerImage(photo, marks);
    cv::fillPoly(image, std::vector<std::vector<cv::Point>>{photo.loop},
                 cv::Scalar(SEGCORE_MARK_CANDIDATE));
    return marks;
}

Marks brushMarks(const Photograph& photo, cv::Point from, cv::Point to, bool adds) {
    Marks marks{{}, {}, adds ? SEGCORE_BRUSH_ADD : SEGCORE_BRUSH_REMOVE};
    const double radius = std::max(1.0, kBrushRadius * (photo.width + photo.height) / 2.0);
    const double length = cv::norm(to - from);
    const int steps = std::max(1, static_cast<int>(length / (kStrokeStep * radius)));
    for (int i = 0; i <= steps; ++i) {
        const double t = static_cast<double>(i) / steps;
        const cv::Point point =
            inside(photo, from.x + t * (to.x - from.x), from.y + t * (to.y - from.y));
        marks.points.insert(marks.points.end(), {point.x, point.y});
    }
    const int code = adds ? SEGCORE_MARK_OBJECT : SEGCORE_MARK_BACKGROUND;
    cv::line(markerImage(photo, marks), from, to, cv::Scalar(code), static_cast<int>(2.0 * radius));
    return marks;
}

Marks firstBrush(const Photograph& photo) {
    return brushMarks(photo, inBox(photo, 0.35, 0.5), inBox(photo, 0.65, 0.5), true);
}

Marks laterBrush(const Photograph& photo, int number) {
    cv::RNG generator(static_cast<std::uint64_t>(number) + 1);
    const bool adds = number % 2 == 0;
    const double u = adds ? generator.uniform(0.2, 0.6) : generator.uniform(0.0, 0.8);
    const double v = adds ? generator.uniform(0.2, 0.8) : generator.uniform(0.0, 0.12);
    return brushMarks(photo, inBox(photo, u, v), inBox(photo, u + 0.2, v + 0.05), adds);
}

void storeMarks(const Photograph& photo, Marks& marks) {
    setCurrentMarkerVector(static_cast<int>(marks.points.size()), marks.points.data());
    setMarkerImage(photo.width, photo.height, marks.markers.data(), marks.strokeType);
}
