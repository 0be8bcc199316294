#include "commands.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <opencv2/imgproc.hpp>

#include "errors.h"
#include "memory_peak.h"
#include "output_files.h"
#include "pictures/picture_format.h"
#include "pictures/write_picture.h"
#include "program_host.h"
#include "session/outline.h"
#include "session/session.h"
#include "session/snapped_loop.h"
#include "session/stats.h"
#include "session_on_disk.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* kPng = ".png";

Bytes bytesOf(const std::string& text) {
    return {text.begin(), text.end()};
}

std::vector<std::string> wantedPaths(std::vector<std::string> paths) {
    paths.erase(std::remove(paths.begin(), paths.end(), std::string()), paths.end());
    return paths;
}

bool isSameFile(const std::string& a, const std::string& b) {
    std::error_code ignored;
    return a == b ||
           (a != kStandardStream && b != kStandardStream && fs::equivalent(a, b, ignored));
}

// Before any work: every output can be written, none over another or over an input.
void checkTargets(const std::vector<std::string>& targets, const std::vector<std::string>& inputs) {
    for (std::size_t i = 0; i < targets.size(); ++i) {
        OutputFiles::checkTarget(targets[i]);
        for (std::size_t k = 0; k < i; ++k) {
            if (isSameFile(targets[i], targets[k]) && targets[i] != "/dev/null") {
                throw UserError("two outputs go to " + targets[i] +
                                "; give each output a place of its own");
            }
        }
        for (const std::string& input : inputs) {
            if (targets[i] != kStandardStream && isSameFile(targets[i], input)) {
                throw UserError("output " + targets[i] +
                                " would replace an input; choose another name for the output");
            }
        }
    }
}

void printStats(const Stats& stats, StatsForm form, const std::vector<std::string>& targets) {
    if (form == StatsForm::kNone) {
        return;
    }
    const bool taken = std::count(targets.begin(), targets.end(), kStandardStream) > 0;
    writeAll(taken ? STDERR_FILENO : STDOUT_FILENO,
             bytesOf(form == StatsForm::kJson ? stats.json() : stats.text()),
             taken ? "standard error" : "standard output");
}

// What tells a picture's format: its name's ending. What goes to a stream is PNG.
std::string endingFor(const std::string& path, PictureContent content) {
    return OutputFiles::isStream(path) ? kPng : formatFor(path, content);
}

// The object on transparent black, so that nothing of the rest hides under full transparency. What was
// transparent in the photograph stays so.
Picture cutOut(const Picture& picture, const cv::Mat& mask) {
    const auto inMask = [&mask](const cv::Mat& image) {
        cv::Mat part(image.size(), image.type(), cv::Scalar::all(0));
        image.copyTo(part, mask);
        return part;
    };
    Picture result = picture;
    result.pixels = inMask(picture.pixels);
    result.alpha = picture.alpha.empty() ? mask : inMask(picture.alpha);
    return result;
}

std::string stepFileName(std::size_t number) {
    char name[32];
    std::snprintf(name, sizeof name, "step-%03zu.png", number);
    return name;
}

// Only now is it known whether there is an object, on which the usual kind depends.
Step withKind(Step mark, bool isFirst) {
    if (!mark.correction) {
        mark.correction = usualCorrection(mark.operation, isFirst);
    }
    if (mark.correction != Correction::kWholeObject) {
        mark.passes.reset();
    }
    mark.toBorder = mark.correction == Correction::kTouchUp;
    return mark;
}

// Returns the steps as they were made.
std::vector<Step> applySteps(Session& session, const CutInput& input, const std::string& stepFolder,
                             OutputFiles& files) {
    if (!stepFolder.empty()) {
        files.addFolder(stepFolder);
    }
    std::vector<Step> made;
    const auto apply = [&](const Step& step) {
        made.push_back(session.apply(step));
        if (!stepFolder.empty()) {
            files.add((fs::path(stepFolder) / stepFileName(made.size())).string(),
                      encodePicture(session.result(), kPng));
        }
    };
    for (const Step& step : input.session.steps) {
        apply(step);
    }
    for (const Step& mark : input.marks) {
        apply(withKind(mark, cv::countNonZero(session.result()) == 0));
    }
    return made;
}

void requireObject(const Session& session) {
    if (!session.hasResult()) {
        throw UserError("there is no result to write; mark the object, for example by --box");
    }
    if (cv::countNonZero(session.result()) == 0) {
        throw UserError(
            "the marks found no object, the mask is empty; draw the box or loop around "
            "the object or brush over it");
    }
}

// The mask as it is written.
cv::Mat deliveredMask(const Session& session, const MaskHygiene& hygiene, Stats& stats) {
    requireObject(session);
    if (!hygiene.isWanted()) {
        return session.result();
    }
    const cv::Mat mask = stats.measure(
        "tidy mask", [&] { return tidied(session.result(), hygiene, throwIfInterrupted); });
    if (cv::countNonZero(mask) == 0) {
        throw UserError(
            "nothing of the object is left of what --smooth and --drop-islands take away; give "
            "smaller numbers");
    }
    return mask;
}

void addResults(Session& session, const cv::Mat& mask, const Picture& picture,
                const CutOutputs& outputs, OutputFiles& files) {
    const auto add = [&files](const std::string& path, const auto& image, PictureContent content) {
        files.add(path, encodePicture(image, endingFor(path, content)));
    };
    if (!outputs.mask.empty()) {
        add(outputs.mask, mask, PictureContent::kMask);
    }
    if (!outputs.cutout.empty()) {
        add(outputs.cutout, cutOut(picture, mask), PictureContent::kCutOut);
    }
    if (!outputs.preview.empty()) {
        add(outputs.preview, session.previewOf(mask), PictureContent::kPicture);
    }
    if (!outputs.svg.empty() || !outputs.json.empty()) {
        const std::vector<Contour> outline = contoursOf(mask);
        if (!outputs.svg.empty()) {
            files.add(outputs.svg, bytesOf(asSvg(outline, picture.pixels.size())));
        }
        if (!outputs.json.empty()) {
            files.add(outputs.json, bytesOf(asJson(outline, picture.pixels.size())));
        }
    }
}

// Before any work: every picture's name tells a format that can hold it.
void checkFormats(const CutOutputs& outputs) {
    for (const auto& [path, content] : {std::pair{outputs.mask, PictureContent::kMask},
                                        {outputs.cutout, PictureContent::kCutOut},
                                        {outputs.preview, PictureContent::kPicture}}) {
        if (!path.empty()) {
            endingFor(path, content);
        }
    }
}

// A folder that is not there yet holds nothing that a step's mask could replace.
std::vector<std::string> withStepFiles(std::vector<std::string> targets, const CutOutputs& outputs,
                                       std::size_t steps) {
    const std::string& folder = outputs.stepFolder;
    OutputFiles::checkFolder(folder, outputs.force);
    for (std::size_t number = 1; fs::is_directory(folder) && number <= steps; ++number) {
        targets.push_back((fs::path(folder) / stepFileName(number)).string());
    }
    return targets;
}

std::vector<std::string> inputsOf(const CutInput& input) {
    std::vector<std::string> inputs{input.session.photo};
    for (const std::vector<Step>& steps : {input.session.steps, input.marks}) {
        for (const Step& step : steps) {
            inputs.push_back(step.marksFile);
        }
    }
    return wantedPaths(inputs);
}

// Before any work: there is something to do, and a place for what comes of it.
void checkRequest(const CutInput& input, const CutOutputs& outputs,
                  const std::vector<std::string>& targets) {
    const std::size_t steps = input.session.steps.size() + input.marks.size();
    if (targets.empty() && outputs.stepFolder.empty() && outputs.stats == StatsForm::kNone) {
        throw UserError("nothing to write; name an output, for example --cutout cutout.png");
    }
    if (steps == 0) {
        throw UserError("no marks; mark the object, for example by --box left,top,right,bottom");
    }
    checkTargets(outputs.stepFolder.empty() ? targets : withStepFiles(targets, outputs, steps),
                 inputsOf(input));
    checkFormats(outputs);
}

}  // namespace

void runCut(const CutInput& input, const CutOutputs& outputs) {
    const SessionFile& file = input.session;
    const std::vector<std::string> targets =
        wantedPaths({outputs.mask, outputs.cutout, outputs.preview, outputs.svg, outputs.json,
                     outputs.session});
    checkRequest(input, outputs, targets);

    MemoryPeak memory;
    Stats stats(&memory);
    ProgramHost host;
    Picture picture;
    const Photo photo = stats.measure("read photograph", [&] {
        picture = readPhoto(file.photo, {input.damaged});
        return photoOf(picture, Colours::kAsStored, file.photo);
    });
    requireSamePhoto(file, photo, input.sessionName);
    Session session(photo, host, stats);
    session.setTimeLimit(input.timeLimit);
    session.setTimeBudget(input.timeBudget);
    OutputFiles files;
    SessionFile made = file;
    made.steps = applySteps(session, input, outputs.stepFolder, files);
    made.output = chosenOver(file.output, outputs.choice);
    const cv::Mat mask = deliveredMask(session, hygieneOf(made.output), stats);
    stats.measure("write outputs", [&] {
        addResults(session, mask, picture, outputs, files);
        if (!outputs.session.empty()) {
            notePhoto(made, photo);
            files.add(outputs.session, encodeSessionFile(made, outputs.session));
        }
        files.commit();
    });
    printStats(stats, outputs.stats, targets);
}

void runSnap(const SnapRequest& request) {
    // Without a place named, the path goes to standard output in both forms.
    const bool toTerminal = request.svg.empty() && request.json.empty();
    const std::vector<std::string> targets = toTerminal ? std::vector<std::string>{kStandardStream}
                                                        : wantedPaths({request.svg, request.json});
    checkTargets(targets, {request.photo});
    MemoryPeak memory;
    Stats stats(&memory);
    ProgramHost host;
    const Photo photo = stats.measure("read photograph", [&] {
        return photoOf(readPhoto(request.photo, {request.damaged}), Colours::kAsStored,
                       request.photo);
    });
    const std::vector<cv::Point> path =
        snappedPath(photo, request.points, request.alpha, host, stats);
    OutputFiles files;
    if (toTerminal) {
        files.add(kStandardStream,
                  bytesOf(pathAsJson(path, photo.size()) + pathAsSvg(path, photo.size())));
    }
    if (!request.json.empty()) {
        files.add(request.json, bytesOf(pathAsJson(path, photo.size())));
    }
    if (!request.svg.empty()) {
        files.add(request.svg, bytesOf(pathAsSvg(path, photo.size())));
    }
    stats.measure("write outputs", [&] { files.commit(); });
    printStats(stats, request.stats, targets);
}
