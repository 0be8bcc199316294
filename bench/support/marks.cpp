#include "support/marks.h"

#include <algorithm>
#include <utility>

#include "interface/segmentation_core.h"
#include "session/strokes.h"

namespace {

Marks marksOf(const Photograph& photo, Operation operation, std::vector<cv::Point> points) {
    Step step;
    step.operation = operation;
    step.points = std::move(points);
    const Request request = requestFor(step, {photo.width, photo.height});
    Marks marks{{},
                {request.markers.begin<std::uint8_t>(), request.markers.end<std::uint8_t>()},
                request.strokeType};
    for (const cv::Point& point : request.stroke) {
        marks.points.insert(marks.points.end(), {point.x, point.y});
    }
    return marks;
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
    return marksOf(photo, Operation::kBox, {{box.left, box.top}, {box.right, box.bottom}});
}

Marks loopMarks(const Photograph& photo) {
    return marksOf(photo, Operation::kLoopAdd, photo.loop);
}

Marks brushMarks(const Photograph& photo, cv::Point from, cv::Point to, bool adds) {
    return marksOf(photo, adds ? Operation::kBrushAdd : Operation::kBrushRemove, {from, to});
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
