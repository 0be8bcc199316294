#include "scribble_strokes.h"

#include <deque>
#include <opencv2/imgproc.hpp>

namespace {

// Breadth-first search through the component from `start`: the last pixel it reaches, and for every
// pixel the one it was reached from.
cv::Point farthest(const cv::Mat& component, cv::Point start, cv::Mat_<cv::Point>& from) {
    static const cv::Point kSteps[] = {{1, 0}, {-1, 0}, {0, 1},  {0, -1},
                                       {1, 1}, {-1, 1}, {1, -1}, {-1, -1}};
    const cv::Rect inside({0, 0}, component.size());
    from = cv::Mat_<cv::Point>(component.size(), cv::Point(-1, -1));
    from(start) = start;
    std::deque<cv::Point> queue{start};
    cv::Point last = start;
    while (!queue.empty()) {
        last = queue.front();
        queue.pop_front();
        for (const cv::Point& step : kSteps) {
            const cv::Point next = last + step;
            if (inside.contains(next) && component.at<std::uint8_t>(next) != 0 &&
                from(next).x < 0) {
                from(next) = last;
                queue.push_back(next);
            }
        }
    }
    return last;
}

std::vector<cv::Point> brushWay(const cv::Mat& component) {
    std::vector<cv::Point> pixels;
    cv::findNonZero(component, pixels);
    cv::Mat_<cv::Point> from;
    const cv::Point begin = farthest(component, pixels.front(), from);
    cv::Point pixel = farthest(component, begin, from);
    std::vector<cv::Point> way{pixel};
    while (pixel != begin) {
        pixel = from(pixel);
        way.push_back(pixel);
    }
    return way;
}

}  // namespace

std::vector<BrushStroke> strokesOf(const cv::Mat& scribbles, int code) {
    const cv::Mat painted = scribbles == code;
    cv::Mat components;
    cv::Mat boxes;
    cv::Mat centres;
    const int count = cv::connectedComponentsWithStats(painted, components, boxes, centres);
    std::vector<BrushStroke> strokes;
    for (int number = 1; number < count; ++number) {
        const cv::Rect box(
            boxes.at<int>(number, cv::CC_STAT_LEFT), boxes.at<int>(number, cv::CC_STAT_TOP),
            boxes.at<int>(number, cv::CC_STAT_WIDTH), boxes.at<int>(number, cv::CC_STAT_HEIGHT));
        const cv::Mat component = components(box) == number;
        BrushStroke stroke;
        stroke.painted = cv::Mat::zeros(scribbles.size(), CV_8UC1);
        component.copyTo(stroke.painted(box));
        for (const cv::Point& point : brushWay(component)) {
            stroke.points.push_back(point + box.tl());
        }
        strokes.push_back(std::move(stroke));
    }
    return strokes;
}
