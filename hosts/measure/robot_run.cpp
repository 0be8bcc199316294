#include "robot_run.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <utility>

#include "measure/grab_cut.h"
#include "measure/mark_case.h"
#include "measure/photo_choice.h"
#include "measure/robot.h"
#include "measure/session_method.h"
#include "session/errors.h"

namespace {

std::unique_ptr<Method> makeWholeObject(const cv::Mat& image, const std::string& name,
                                        double timeLimit) {
    return std::make_unique<SessionMethod>(
        image, name, timeLimit, [](Step& step) { step.correction = Correction::kWholeObject; });
}

std::unique_ptr<Method> makeTouchUp(const cv::Mat& image, const std::string& name,
                                    double timeLimit) {
    return std::make_unique<SessionMethod>(
        image, name, timeLimit, [](Step& step) { step.correction = Correction::kTouchUp; });
}

std::unique_ptr<Method> makeGrabCut(const cv::Mat& image, const std::string& /*name*/,
                                    double /*timeLimit*/) {
    return std::make_unique<GrabCut>(image, reducedSize(image.size(), kGrabCutPixels),
                                     kGrabCutIterations);
}

void tell(const std::string& photo, const std::string& line) {
    std::fprintf(stderr, "segcore-measure: %s: %s\n", photo.c_str(), line.c_str());
}

struct Task {
    std::string photo;
    cv::Mat image;
    cv::Mat truth;
    std::optional<Step> start;
};

// None, and the reason is told, for a photograph that the robot cannot work on.
std::optional<Task> taskOf(const DataPhoto& photo, const RobotOptions& options) {
    Task task{photo.name(), photo.image(), photo.truth(), std::nullopt};
    if (task.truth.size() != task.image.size()) {
        tell(task.photo, task.truth.empty() ? "skipped, as it has no true mask"
                                            : "skipped, as its true mask has another size");
        return std::nullopt;
    }
    if (options.start == RobotStart::kBox) {
        task.start = boxStepOf(photo, task.image.size(), options.boxShift);
    } else if (options.start == RobotStart::kLoop) {
        task.start = loopStepOf(photo);
    }
    if (!task.start && options.start != RobotStart::kNothing) {
        tell(task.photo, std::string("skipped, as it has no ") + nameOf(options.start));
        return std::nullopt;
    }
    return task;
}

// In milliseconds. A mark that is refused takes the person's time, too.
double timeOf(Method& method, const Step& mark, const RobotResult& result) {
    const auto start = std::chrono::steady_clock::now();
    try {
        method.apply(mark);
    } catch (const UserError& error) {
        tell(result.photo, result.method + ": " + error.what());
    }
    const std::chrono::duration<double, std::milli> elapsed =
        std::chrono::steady_clock::now() - start;
    return elapsed.count();
}

std::vector<RobotResult> correct(Method& method, const Task& task, RobotResult result, int strokes,
                                 const RobotWatcher& watch) {
    std::vector<RobotResult> results;
    std::optional<Step> mark = task.start;
    for (result.strokes = 0; result.strokes <= strokes; ++result.strokes) {
        if (result.strokes > 0) {
            mark = robotStroke(method.mask(), task.truth);
        }
        result.milliseconds.reset();
        if (mark) {
            result.milliseconds = timeOf(method, *mark, result);
        }
        const cv::Mat mask = method.mask();
        result.score = scoreOf(mask, task.truth);
        watch({result, task.image, mask, mark});
        results.push_back(result);
    }
    return results;
}

}  // namespace

const char* nameOf(RobotStart start) {
    const auto* const found =
        std::find_if(kRobotStartNames.begin(), kRobotStartNames.end(),
                     [start](const RobotStartName& entry) { return entry.start == start; });
    return found->name;
}

const std::vector<RobotMethod>& robotMethods() {
    static const std::vector<RobotMethod> methods{
        {"whole-object", makeWholeObject}, {"touch-up", makeTouchUp}, {"grab-cut", makeGrabCut}};
    return methods;
}

std::vector<RobotResult> runRobot(const DataPhoto& photo, const RobotOptions& options,
                                  const RobotWatcher& watch) {
    std::vector<RobotResult> results;
    const std::optional<Task> task = taskOf(photo, options);
    if (!task) {
        return results;
    }
    for (const RobotMethod& kind : robotMethods()) {
        if (std::find(options.methods.begin(), options.methods.end(), kind.name) !=
            options.methods.end()) {
            RobotResult result;
            result.photo = task->photo;
            result.method = kind.name;
            result.large = isLarge(task->image);
            const std::unique_ptr<Method> method =
                kind.make(task->image, task->photo, options.timeLimit);
            const std::vector<RobotResult> some =
                correct(*method, *task, result, options.strokes, watch);
            results.insert(results.end(), some.begin(), some.end());
        }
    }
    return results;
}
