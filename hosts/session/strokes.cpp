#include "session/strokes.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "interface/segmentation_core.h"
#include "session/errors.h"

namespace {

// A brush as thick as a finger on a photograph shown on a phone.
constexpr double kDefaultRadiusShare = 0.01;  // of the photograph's mean side
constexpr int kSmallestDefaultRadius = 2;
// The imaging library draws lines of up to 32767 pixels.
constexpr int kLargestRadius = 16383;
// The imaging library's thick slanted lines reach a little further than told.
constexpr int kBeyondRadius = 4;
constexpr int kDrawn = 255;

int radiusOf(const Step& step, cv::Size photo) {
    const double meanSide = std::sqrt(static_cast<double>(photo.area()));
    const int radius = step.radius.value_or(std::max(
        kSmallestDefaultRadius, static_cast<int>(std::lround(meanSide * kDefaultRadiusShare))));
    if (radius < 0 || radius > kLargestRadius) {
        throw UserError("brush radius " + std::to_string(radius) + " is not usable; give 0 to " +
                        std::to_string(kLargestRadius) + " pixels");
    }
    return radius;
}

std::vector<cv::Point> outlineOf(const std::vector<cv::Point>& corners) {
    const cv::Point& first = corners.front();
    const cv::Point& last = corners.back();
    return {first, {last.x, first.y}, last, {first.x, last.y}};
}

void requireShape(const Step& step) {
    const std::string name = nameOf(step.operation);
    if (step.operation == Operation::kBox) {
        const bool upright = step.points.size() == 2 && step.points[0].x <= step.points[1].x &&
                             step.points[0].y <= step.points[1].y;
        if (!upright) {
            throw UserError(
                "the box is empty; give left,top,right,bottom with left <= right and "
                "top <= bottom");
        }
    } else if (isLoop(step.operation) && step.points.size() < kLoopCorners) {
        throw UserError(name + " needs at least three points; add corners around the object");
    } else if (step.points.empty()) {
        throw UserError(name + " needs at least one point; give x,y in photograph pixels");
    }
}

// Every pixel of the path there and back again, the turning point and the start not repeated.
std::vector<cv::Point> pathThereAndBack(const std::vector<cv::Point>& path) {
    std::vector<cv::Point> stroke{path.front()};
    for (std::size_t i = 1; i < path.size(); ++i) {
        cv::LineIterator line(path[i - 1], path[i]);
        for (int k = 1; k < line.count; ++k) {
            ++line;
            stroke.push_back(line.pos());
        }
    }
    for (std::size_t i = stroke.size() - 1; i-- > 1;) {
        stroke.push_back(stroke[i]);
    }
    return stroke;
}

void requireUpTo(cv::Point last, const std::vector<cv::Point>& points, cv::Size photo) {
    for (const cv::Point& point : points) {
        if (point.x < 0 || point.y < 0 || point.x > last.x || point.y > last.y) {
            throw UserError("point " + std::to_string(point.x) + "," + std::to_string(point.y) +
                            " lies outside the photograph of " + std::to_string(photo.width) +
                            " x " + std::to_string(photo.height) + " pixels; x must be 0 to " +
                            std::to_string(last.x) + " and y 0 to " + std::to_string(last.y));
        }
    }
}

std::vector<cv::Point> pointsOf(const Step& step, cv::Size photo) {
    std::vector<cv::Point> points = step.points;
    if (step.operation != Operation::kBox) {
        requireInside(points, photo);
        return points;
    }
    // Who gives a box by where it starts and its size names the photograph's size for its far border.
    requireUpTo({photo.width, photo.height}, points, photo);
    for (cv::Point& corner : points) {
        corner = {std::min(corner.x, photo.width - 1), std::min(corner.y, photo.height - 1)};
    }
    return points;
}

std::vector<cv::Point> cornersOf(Operation operation, const std::vector<cv::Point>& points) {
    return operation == Operation::kBox ? outlineOf(points) : points;
}

Drawing drawn(const Step& step, const std::vector<cv::Point>& points, cv::Size photo, int code,
              int wider) {
    const bool isPath = isBrush(step.operation);
    const int radius = isPath ? std::min(radiusOf(step, photo) + wider, kLargestRadius) : 0;
    const int margin = radius + kBeyondRadius;
    const cv::Rect tight = cv::boundingRect(points);
    Drawing drawing;
    drawing.where = cv::Rect(tight.x - margin, tight.y - margin, tight.width + 2 * margin,
                             tight.height + 2 * margin) &
                    cv::Rect({0, 0}, photo);
    drawing.inside = cv::Mat::zeros(drawing.where.size(), CV_8UC1);
    std::vector<cv::Point> moved = isPath ? points : cornersOf(step.operation, points);
    for (cv::Point& point : moved) {
        point -= drawing.where.tl();
    }
    isPath ? drawBrush(drawing.inside, moved, radius, code) : fillLoop(drawing.inside, moved, code);
    return drawing;
}

int strokeTypeOf(Operation operation) {
    if (isBrush(operation)) {
        return removes(operation) ? SEGCORE_BRUSH_REMOVE : SEGCORE_BRUSH_ADD;
    }
    return removes(operation) ? SEGCORE_LOOP_REMOVE : SEGCORE_LOOP_ADD;
}

}  // namespace

void drawBrush(cv::Mat& markers, const std::vector<cv::Point>& path, int radius, int code) {
    for (std::size_t i = 0; i < path.size(); ++i) {
        cv::circle(markers, path[i], radius, cv::Scalar(code), cv::FILLED);
        if (i > 0) {
            cv::line(markers, path[i - 1], path[i], cv::Scalar(code), 2 * radius + 1);
        }
    }
}

void fillLoop(cv::Mat& markers, const std::vector<cv::Point>& corners, int code) {
    cv::fillPoly(markers, std::vector<std::vector<cv::Point>>{corners}, cv::Scalar(code));
}

void requireInside(const std::vector<cv::Point>& points, cv::Size photo) {
    requireUpTo({photo.width - 1, photo.height - 1}, points, photo);
}

int spreadReach(cv::Size photo) {
    return static_cast<int>(std::sqrt(static_cast<double>(photo.area())) * kMarkSpread);
}

Drawing drawingOf(const Step& step, cv::Size photo, int wider) {
    requireShape(step);
    return drawn(step, pointsOf(step, photo), photo, kDrawn, wider);
}

Request requestFor(const Step& step, cv::Size photo) {
    requireShape(step);
    const std::vector<cv::Point> points = pointsOf(step, photo);
    Request request;
    request.strokeType = strokeTypeOf(step.operation);
    const bool isCertain = isBrush(step.operation) || step.edit;
    const int certain = removes(step.operation) ? SEGCORE_MARK_BACKGROUND : SEGCORE_MARK_OBJECT;
    const Drawing part =
        drawn(step, points, photo, isCertain ? certain : SEGCORE_MARK_CANDIDATE, 0);
    request.markers = cv::Mat::zeros(photo, CV_8UC1);
    part.inside.copyTo(request.markers(part.where));
    request.stroke =
        isBrush(step.operation) ? pathThereAndBack(points) : cornersOf(step.operation, points);
    if (step.edit) {
        request.stroke.clear();
    }
    return request;
}
