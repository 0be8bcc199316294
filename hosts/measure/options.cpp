#include "options.h"

#include <CLI/CLI.hpp>
#include <map>
#include <optional>

#include "interface/segmentation_core.h"
#include "measure/mark_case.h"
#include "pictures/picture_error.h"
#include "pictures/picture_format.h"
#include "terminal/common_options.h"

namespace {

// A person gives up long before; it bounds the time that a mistyped number takes.
constexpr int kMostStrokes = 100;
// Pixels. No photograph that the library takes has a longer side.
constexpr int kLargestShift = SEGCORE_MAX_PIXELS;

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

bool isBetween(int number, int least, int most) {
    return least <= number && number <= most;
}

std::optional<cv::Point> shiftOf(const std::string& text) {
    const std::vector<std::string> parts = CLI::detail::split(text, ',');
    cv::Point shift;
    const bool good = parts.size() == 2 && CLI::detail::lexical_cast(parts[0], shift.x) &&
                      CLI::detail::lexical_cast(parts[1], shift.y) &&
                      isBetween(shift.x, -kLargestShift, kLargestShift) &&
                      isBetween(shift.y, -kLargestShift, kLargestShift);
    return good ? std::optional(shift) : std::nullopt;
}

std::string notAShift(const std::string& text) {
    return shiftOf(text) ? ""
                         : "'" + text + "' moves no box; give two numbers of pixels, e.g. 3,-2";
}

std::map<std::string, RobotStart> startsByName() {
    std::map<std::string, RobotStart> starts;
    for (const RobotStartName& entry : kRobotStartNames) {
        starts[entry.name] = entry.start;
    }
    return starts;
}

void declarePictures(CLI::App& app, PictureOptions& pictures) {
    app.add_option("--contact-sheet", pictures.contactSheet, "Picture of all results")
        ->check(CLI::Validator(notAPicture, ""))
        ->option_text("FILE");
    app.add_option("--masks", pictures.maskFolder, "Folder to write the masks to")
        ->check(CLI::ExistingDirectory);
}

CLI::Option* declareFrom(CLI::App& app, RobotOptions& robot) {
    const std::map<std::string, RobotStart> starts = startsByName();
    return app
        .add_option_function<std::string>(
            "--from", [&robot, starts](const std::string& name) { robot.start = starts.at(name); },
            "What it starts from; the box unless given")
        ->check(CLI::IsMember(starts))
        ->option_text("box|loop|nothing");
}

CLI::Option* declareBoxShift(CLI::App& app, RobotOptions& robot) {
    return app
        .add_option_function<std::string>(
            "--box-shift", [&robot](const std::string& shift) { robot.boxShift = *shiftOf(shift); },
            "Pixels to move all boxes by, to see how much a figure depends on them")
        ->check(CLI::Validator(notAShift, ""))
        ->option_text("DX,DY");
}

// All of them, first the one that the others need.
std::vector<CLI::Option*> declareRobot(CLI::App& app, Options& options) {
    RobotOptions& robot = options.robot;
    for (const RobotMethod& method : robotMethods()) {
        robot.methods.emplace_back(method.name);
    }
    return {app.add_flag("--robot", options.useRobot,
                         "Paint strokes over the largest mistakes, and measure after each"),
            app.add_option("--strokes", robot.strokes, "How many strokes it paints, 6 unless given")
                ->check(CLI::Range(0, kMostStrokes))
                ->option_text("N"),
            declareFrom(app, robot),
            declareBoxShift(app, robot),
            app.add_option("--method", robot.methods, "Who answers its strokes")
                ->delimiter(',')
                ->check(CLI::IsMember(robot.methods))
                ->capture_default_str(),
            app.add_option("--csv", options.csv,
                           "All results: photograph, method, start, strokes, error and IoU as "
                           "shares, milliseconds")
                ->option_text("FILE"),
            app.add_option("--curves", options.curves,
                           "Picture of error, IoU and time by number of strokes")
                ->check(CLI::Validator(notAnSvg, ""))
                ->option_text("FILE.svg")};
}

// What concerns several options.
void finish(Options& options, const CLI::App& app) {
    options.robot.timeLimit = options.cases.timeLimit;
    if (app.count("--box-shift") > 0 && options.robot.start != RobotStart::kBox) {
        throw CLI::ValidationError("--box-shift", "moves boxes; leave it out or use --from box");
    }
}

}  // namespace

void declareOptions(CLI::App& app, Options& options) {
    app.add_option("folder", options.folder, "Photographs with true masks and marks")
        ->required()
        ->check(CLI::ExistingDirectory);
    app.add_option("--only", options.only, "Names of the photographs to measure")->delimiter(',');
    declareTimeLimit(app, options.cases.timeLimit);
    app.add_flag("--json", options.json, "Print JSON instead of a table");
    declarePictures(app, options.pictures);
    declareVerbose(app);
    CLI::Option* const cases =
        app.add_option("--case", options.cases.cases, "Marks of a session, e.g. box+s1")
            ->delimiter(',')
            ->check(CLI::Validator(faultOf, "MARK[+MARK...]"))
            ->capture_default_str();
    const std::vector<CLI::Option*> robot = declareRobot(app, options);
    robot.front()->excludes(cases);
    for (CLI::Option* option : robot) {
        option->group("A robot that corrects");
        if (option != robot.front()) {
            option->needs(robot.front());
        }
    }
    app.callback([&options, &app] { finish(options, app); });
}
