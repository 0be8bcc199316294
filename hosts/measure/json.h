// Results as JSON on standard output. Error rates are shares of the photograph's pixels.
#pragma once

#include <vector>

#include "cases.h"
#include "measure/robot_summary.h"

void printJson(const std::vector<CaseResult>& results);
void printJson(const std::vector<RobotResult>& results, const std::vector<MethodSummary>& summaries,
               const RobotOptions& options);
