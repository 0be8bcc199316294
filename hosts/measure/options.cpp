#include "options.h"

#include <CLI/CLI.hpp>
#include <map>

#include "measure/mark_case.h"
#include "pictures/picture_error.h"
#include "pictures/picture_format.h"
#include "terminal/common_options.h"

namespace {

const char* const kCases = "Marks that the folder holds";
const char* const kRobot = "A robot that corrects";
// A person gives up long before; it bounds the time that a mistyped number takes.
constexpr int kMostStrokes = 100;

std::string notAnSvg(const std::string& file) {
    const std::string ending = ".svg";
    return file.size() > ending.size() &&
                   file.compare(file.size() - ending.size(), ending.size(), ending) == 0
               ? ""
               : "'" + file + "' is no SVG picture; end its name in .svg";
}

std::string notAPicture(const std::string& file) {
    try {
        formatFor(file, PictureContent::kPicture);
        return "";
    } catch (const PictureError& error) {
        return error.what();
    }
}

void declareCases(CLI::App& app, Options& options, CLI::Option* robot) {
    const auto declare = [&](CLI::Option* option) { option->excludes(robot)->group(kCases); };
    declare(app.add_option("--case", options.cases.cases, "Marks of a session, e.g. box+s1")
                ->delimiter(',')
                ->check(CLI::Validator(faultOf, "MARK[+MARK...]"))
                ->capture_default_str());
    declare(app.add_option("--contact-sheet", options.contactSheet, "Picture of all results")
                ->check(CLI::Validator(notAPicture, "FILE")));
    declare(app.add_option("--masks", options.cases.maskFolder, "Folder to write the masks to")
                ->check(CLI::ExistingDirectory));
}

void declareRobot(CLI::App& app, Options& options, CLI::Option* robot) {
    const auto declare = [&](CLI::Option* option) {
        option->needs(robot)->group(kRobot);
        return option;
    };
    declare(app.add_option("--strokes", options.robot.strokes, "How many strokes it paints")
                ->check(CLI::Range(0, kMostStrokes))
                ->capture_default_str());

    std::map<std::string, RobotStart> starts;
    for (const RobotStartName& entry : kRobotStartNames) {
        starts[entry.name] = entry.start;
    }
    declare(app.add_option("--from", options.robot.start,
                           "What it starts from: box, the default, loop or nothing")
                ->transform(CLI::CheckedTransformer(starts).description(""))
                ->option_text("START"));

    std::vector<std::string> methods;
    for (const RobotMethod& method : robotMethods()) {
        methods.emplace_back(method.name);
    }
    options.robot.methods = methods;
    declare(app.add_option("--method", options.robot.methods, "Who answers its strokes")
                ->delimiter(',')
                ->check(CLI::IsMember(methods))
                ->capture_default_str());

    declare(app.add_option_function<std::vector<int>>(
                   "--box-shift",
                   [&options](const std::vector<int>& shift) {
                       options.robot.boxShift = {shift[0], shift[1]};
                   },
                   "Pixels to move all boxes by, to see how much a figure depends on them")
                ->delimiter(',')
                ->expected(2)
                ->option_text("DX,DY"));
    app.callback([&options, &app] {
        options.robot.timeLimit = options.cases.timeLimit;
        if (app.count("--box-shift") > 0 && options.robot.start != RobotStart::kBox) {
            throw CLI::ValidationError("--box-shift",
                                       "moves boxes; leave it out or use --from box");
        }
    });

    declare(app.add_option("--csv", options.csv,
                           "Table of all results: photograph, method, start, strokes, error and "
                           "iou as shares, milliseconds")
                ->option_text("FILE"));
    declare(app.add_option("--curves", options.curves,
                           "Picture of error, IoU and time by number of strokes")
                ->check(CLI::Validator(notAnSvg, "FILE.svg")));
}

}  // namespace

void declareOptions(CLI::App& app, Options& options) {
    app.add_option("folder", options.folder, "Photographs with true masks and marks")
        ->required()
        ->check(CLI::ExistingDirectory);
    app.add_option("--only", options.only, "Names of the photographs to measure")->delimiter(',');
    declareTimeLimit(app, options.cases.timeLimit);
    app.add_flag("--json", options.json, "Print JSON instead of a table");
    declareVerbose(app);
    CLI::Option* const robot =
        app.add_flag("--robot", options.useRobot,
                     "Let a robot paint strokes over the largest mistakes, and measure after each")
            ->group(kRobot);
    declareCases(app, options, robot);
    declareRobot(app, options, robot);
}
