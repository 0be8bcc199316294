// The robot's results as comma-separated values (RFC 4180, with lines that end as on Unix).
#pragma once

#include <string>
#include <vector>

#include "measure/robot_run.h"

// The columns' names: photograph,method,start,strokes,error,iou,milliseconds.
std::string csvHeading();
// A line each. The error is a share of the photograph's pixels, and the time is empty where no mark
// was made.
std::string csvOf(const std::vector<RobotResult>& results, RobotStart start);
