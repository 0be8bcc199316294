// A cut-out of a photograph and a mask from elsewhere.
#include <opencv2/imgproc.hpp>

#include "commands.h"
#include "errors.h"
#include "ground.h"
#include "memory_peak.h"
#include "photo.h"
#include "session/stats.h"
#include "targets.h"

namespace {

constexpr int kObjectFrom = 128;  // of 255

// A channel that is wide open everywhere says nothing.
bool saysSomething(const cv::Mat& alpha) {
    const double opaque = alpha.depth() == CV_16U ? 65535.0 : 255.0;
    return !alpha.empty() && cv::countNonZero(alpha != opaque) > 0;
}

bool isGrey(const cv::Mat& pixels) {
    if (pixels.channels() == 1) {
        return true;
    }
    std::vector<cv::Mat> channels;
    cv::split(pixels, channels);
    return cv::norm(channels[0], channels[1], cv::NORM_INF) == 0.0 &&
           cv::norm(channels[0], channels[2], cv::NORM_INF) == 0.0;
}

std::string asText(cv::Size size) {
    return std::to_string(size.width) + " x " + std::to_string(size.height);
}

// CV_8UC1, 255 object.
cv::Mat maskIn(const Picture& picture, const std::string& name, cv::Size photo) {
    if (picture.pixels.size() != photo) {
        throw UserError("the mask " + name + " has " + asText(picture.pixels.size()) +
                        " pixels and the photograph " + asText(photo) +
                        "; give a mask of the photograph's size");
    }
    Picture mask = picture;
    if (saysSomething(picture.alpha)) {
        mask.pixels = picture.alpha;
    } else if (!isGrey(picture.pixels)) {
        throw UserError(
            name +
            " is no mask, it has colours and no transparency; give a black and white or "
            "grey picture, or one with an alpha channel");
    }
    cv::Mat object = greyPixels(mask) >= kObjectFrom;
    if (cv::countNonZero(object) == 0) {
        throw UserError("the mask " + name +
                        " is empty; give one that is 128 or more where the object is");
    }
    return object;
}

}  // namespace

void runMatte(const MatteRequest& request) {
    const ResultOutputs& outputs = request.outputs;
    const std::vector<std::string> targets = pathsOf(outputs);
    if (targets.empty() && outputs.stats == StatsForm::kNone) {
        throw UserError("nothing to write; name an output, for example --cutout cutout.png");
    }
    std::vector<std::string> inputs{request.photo, request.mask};
    if (isGroundFile(outputs.pictures.background)) {
        inputs.push_back(outputs.pictures.background);
    }
    checkInputs(inputs);
    checkTargets(targets, inputs);
    checkFormats(outputs);

    MemoryPeak memory;
    Stats stats(&memory);
    const std::optional<Picture> ground =
        readGround(outputs.pictures.background, request.reading.maxPixels);
    const Picture picture =
        stats.measure("read photograph", [&] { return readPhoto(request.photo, request.reading); });
    const cv::Mat given = stats.measure("read mask", [&] {
        return maskIn(readCompanion(request.mask, request.reading.maxPixels), request.mask,
                      picture.pixels.size());
    });
    OutputChoice choice = outputs.choice;
    choice.edges = choice.edges.value_or(Edges::kSoft);
    const ObjectInPhoto object{picture, engineColours(picture, Colours::kSrgb),
                               deliveredMask(given, hygieneOf(choice), stats), choice};
    const MadeResults made = makeResults(object, ground, outputs, stats);
    OutputFiles files;
    stats.measure("write outputs", [&] {
        addResults(object, made, outputs, files);
        files.commit();
    });
    printStats(stats, outputs.stats, targets);
}
