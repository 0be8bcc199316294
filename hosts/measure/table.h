// Results as tables on standard output.
#pragma once

#include <vector>

#include "cases.h"
#include "measure/robot_summary.h"

void printTable(const std::vector<CaseResult>& results);
void printTable(const std::vector<MethodSummary>& summaries, const RobotOptions& options);
