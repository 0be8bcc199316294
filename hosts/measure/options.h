// The command line of segcore-measure.
#pragma once

#include <string>
#include <vector>

#include "cases.h"
#include "measure/robot_run.h"

namespace CLI {
class App;
}

struct Options {
    std::string folder;
    std::vector<std::string> only;  // names of photographs; all for none
    bool json = false;

    CaseOptions cases;
    std::string contactSheet;  // no file for an empty name; so below

    bool useRobot = false;
    RobotOptions robot;
    std::string csv;
    std::string curves;
};

// Both outlive the parsing.
void declareOptions(CLI::App& app, Options& options);
