// The robot at work: it corrects every photograph of a folder with each method in turn.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <vector>

#include "measure/method.h"
#include "measure/score.h"
#include "session/data_set.h"

enum class RobotStart { kBox, kLoop, kNothing };

struct RobotStartName {
    RobotStart start;
    const char* name;
};
constexpr std::array<RobotStartName, 3> kRobotStartNames{{
    {RobotStart::kBox, "box"},
    {RobotStart::kLoop, "loop"},
    {RobotStart::kNothing, "nothing"},
}};
const char* nameOf(RobotStart start);

struct RobotMethod {
    const char* name;
    // For the photograph of this name. The limit is that of a request in seconds, 0 for none.
    std::unique_ptr<Method> (*make)(const cv::Mat& image, const std::string& name,
                                    double timeLimit);
};
// Every method there is, in the order in which they are shown.
const std::vector<RobotMethod>& robotMethods();

struct RobotOptions {
    RobotStart start = RobotStart::kBox;
    int strokes = 6;
    cv::Point boxShift;  // moves the box, which is then cut off at the photograph's edges
    std::vector<std::string> methods;
    double timeLimit = 0.0;
};

// The state of a photograph's mask after so many strokes.
struct RobotResult {
    std::string photo;
    std::string method;
    bool large = false;
    int strokes = 0;
    Score score{};
    // From the mark to the mask; what happens once for each photograph does not count. None where
    // no mark was made: at the start from nothing, and once the robot finds nothing wrong.
    std::optional<double> milliseconds;
};

// What there is to see after a mark.
struct RobotView {
    const RobotResult& result;
    const cv::Mat& image;
    const cv::Mat& mask;
    const std::optional<Step>& mark;  // none where none was made
};
using RobotWatcher = std::function<void(const RobotView&)>;

// One result for each count of strokes from 0 on, for each of the methods; `watch` is shown each. A
// mark that a method refuses is told on standard error and leaves the mask. Empty, with a line on
// standard error, for a photograph without a true mask or without the marks to start from.
std::vector<RobotResult> runRobot(const DataPhoto& photo, const RobotOptions& options,
                                  const RobotWatcher& watch);
