// What a run writes of the object that it found or was given.
#pragma once

#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <vector>

#include "output_files.h"
#include "picture_options.h"
#include "pictures/picture.h"
#include "session/output_choice.h"
#include "session/stats.h"

enum class StatsForm { kNone, kText, kJson };

// Paths, empty when not wanted; "-" is standard output.
struct ResultOutputs {
    std::string mask;
    std::string cutout;
    std::string alpha;
    std::string svg;
    std::string json;
    PictureChoice pictures;
    OutputChoice choice;  // as given
    StatsForm stats = StatsForm::kNone;
};

// The paths among them.
std::vector<std::string> pathsOf(const ResultOutputs& outputs);

// Before any work: every picture's name tells a format that can hold it. Throws PictureError.
void checkFormats(const ResultOutputs& outputs);

// The photograph and what of it is the object.
struct ObjectInPhoto {
    const Picture& photograph;
    cv::Mat seen;         // as the engine is given it, CV_8UC4 or CV_8UC3
    cv::Mat mask;         // CV_8UC1, 255 object, as it is delivered
    OutputChoice choice;  // with what a session file says
};

// `mask` as hygiene makes it. Throws UserError when nothing is left of the object.
cv::Mat deliveredMask(const cv::Mat& mask, const MaskHygiene& hygiene, Stats& stats);

// What takes the work.
struct MadeResults {
    std::optional<Picture> cutout;
    cv::Mat alpha;                 // in as many bits as the photograph has
    std::optional<cv::Rect> crop;  // the part of the photograph that both show, when not all of it
};

// As far as the outputs ask for them; `ground` is what readGround gave. Throws Interrupted when the user
// stops it.
MadeResults makeResults(const ObjectInPhoto& object, const std::optional<Picture>& ground,
                        const ResultOutputs& outputs, Stats& stats);

void addResults(const ObjectInPhoto& object, const MadeResults& made, const ResultOutputs& outputs,
                OutputFiles& files);

void printStats(const Stats& stats, StatsForm form, const std::vector<std::string>& targets);
