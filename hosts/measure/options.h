// The command line of segcore-measure.
#pragma once

#include <string>
#include <vector>

#include "cases.h"
#include "measure/robot_run.h"
#include "result_pictures.h"

namespace CLI {
class App;
}

struct Options {
    std::string folder;
    std::vector<std::string> only;  // names of photographs; all for none
    bool json = false;

    PictureOptions pictures;

    CaseOptions cases;

    bool useRobot = false;
    RobotOptions robot;
    std::string csv;     // file; empty for none
    std::string curves;  // so, too
};

// Both outlive the parsing.
void declareOptions(CLI::App& app, Options& options);
