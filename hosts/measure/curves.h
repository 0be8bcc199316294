// The robot's results as a picture: error, intersection over union and time by number of strokes.
#pragma once

#include <string>
#include <vector>

#include "measure/robot_summary.h"

// An SVG picture with a line for each method, of the photographs that are not large, or of the
// large ones when there are no others. Not for no summary at all.
std::string curvesOf(const std::vector<MethodSummary>& summaries, const RobotOptions& options);
