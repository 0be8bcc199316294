// What the robot's results say about a method: means over the photographs.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "measure/robot_run.h"

// Intersections over union for which the interactions are counted.
constexpr std::array<double, 3> kIouTargets{0.85, 0.90, 0.95};

struct StrokeMeans {
    double errorRate = 0.0;
    double iou = 0.0;
    std::optional<double> milliseconds;  // of the marks that were made; none without one
};

// Until the mask first was that good. A box or loop is one interaction, and so is each stroke.
struct Interactions {
    double mean = 0.0;
    int failures = 0;  // photographs where it never was
};

struct MethodSummary {
    std::string method;
    bool large = false;  // of the large photographs, or of the others
    int photos = 0;
    std::vector<StrokeMeans> byStrokes;                           // from 0 on
    std::array<Interactions, kIouTargets.size()> interactions{};  // one a target
};

// What a failure counts as: 10 interactions, or one more than there were when that is more.
int failureCountsAs(const RobotOptions& options);

// In the order of robotMethods(), the large photographs last.
std::vector<MethodSummary> summariesOf(const std::vector<RobotResult>& results,
                                       const RobotOptions& options);
