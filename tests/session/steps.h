// Steps of a session in a line.
#pragma once

#include "session/step.h"

inline Step stepOf(Operation operation, std::vector<cv::Point> points = {},
                   std::optional<int> radius = {}) {
    Step step;
    step.operation = operation;
    step.points = std::move(points);
    step.radius = radius;
    return step;
}

inline Step editOf(Step step) {
    step.edit = true;
    return step;
}
