#include "commands.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <opencv2/imgproc.hpp>

#include "errors.h"
#include "ground.h"
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
#include "targets.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* kPng = ".png";

Bytes bytesOf(const std::string& text) {
    return {text.begin(), text.end()};
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

std::vector<std::string> inputsOf(const CutInput& input, const std::string& background) {
    std::vector<std::string> inputs{input.session.photo};
    if (isGroundFile(background)) {
        inputs.push_back(background);
    }
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
    const std::vector<std::string> inputs = inputsOf(input, outputs.pictures.background);
    std::vector<std::string> withSession = inputs;
    withSession.push_back(input.sessionName);  // may be replaced by what it becomes
    checkInputs(withSession);
    checkTargets(outputs.stepFolder.empty() ? targets : withStepFiles(targets, outputs, steps),
                 inputs);
    checkFormats(outputs);
    if (!outputs.preview.empty()) {
        endingFor(outputs.preview, PictureContent::kPicture);
    }
}

void addPreview(Session& session, const cv::Mat& mask, const CutOutputs& outputs,
                OutputFiles& files) {
    if (!outputs.preview.empty()) {
        files.add(outputs.preview,
                  encodePicture(session.previewOf(mask),
                                endingFor(outputs.preview, PictureContent::kPicture),
                                outputs.pictures.writing));
    }
}

}  // namespace

void runCut(const CutInput& input, const CutOutputs& outputs) {
    const SessionFile& file = input.session;
    std::vector<std::string> targets = pathsOf(outputs);
    for (const std::string& path : wantedPaths({outputs.preview, outputs.session})) {
        targets.push_back(path);
    }
    checkRequest(input, outputs, targets);

    MemoryPeak memory;
    Stats stats(&memory);
    ProgramHost host(input.reading.maxPixels);
    const std::optional<Picture> ground =
        readGround(outputs.pictures.background, input.reading.maxPixels);
    Picture picture;
    const Photo photo = stats.measure("read photograph", [&] {
        picture = readPhoto(file.photo, input.reading);
        return photoOf(picture, file.inSrgb ? Colours::kSrgb : Colours::kAsStored, file.photo);
    });
    if (file.size || !file.digest.empty()) {
        requireSamePhoto(file, engineColours(picture, Colours::kAsStored), input.sessionName);
    }
    Session session(photo, host, stats);
    session.setTimeLimit(input.timeLimit);
    session.setTimeBudget(input.timeBudget);
    OutputFiles files;
    SessionFile made = file;
    made.steps = applySteps(session, input, outputs.stepFolder, files);
    OutputChoice usual;
    usual.edges = input.usualEdges;
    made.output = chosenOver(usual, chosenOver(file.output, outputs.choice));
    requireObject(session);
    const ObjectInPhoto object{picture, asImage(photo.words, photo.size()),
                               deliveredMask(session.result(), hygieneOf(made.output), stats),
                               made.output};
    const MadeResults results = makeResults(object, ground, outputs, stats);
    stats.measure("write outputs", [&] {
        addResults(object, results, outputs, files);
        addPreview(session, object.mask, outputs, files);
        if (!outputs.session.empty()) {
            notePhoto(made, engineColours(picture, Colours::kAsStored));
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
    ProgramHost host(request.reading.maxPixels);
    const Photo photo = stats.measure("read photograph", [&] {
        return photoOf(readPhoto(request.photo, request.reading), Colours::kSrgb, request.photo);
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
