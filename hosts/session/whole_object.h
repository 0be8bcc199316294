// Finding the whole object from all marks so far.
#pragma once

#include <functional>
#include <opencv2/core.hpp>

#include "session/engine_calls.h"
#include "session/region_start.h"
#include "session/user_marks.h"

// Passes that help where nobody says how many; a further one changes next to nothing.
constexpr int kUsualPasses = 1;
// From strokes alone the first pass sees little of the object's colours.
constexpr int kPassesWithoutRegion = 3;

struct ObjectSearch {
    const UserMarks& marks;
    cv::Mat candidates;  // CV_8UC1, 255: probable object to start with
    int passes = 1;      // at most
    // Asked before each part but the first; false: no more than what gives a result.
    std::function<bool()> hasTime;
};

struct FoundObject {
    cv::Mat mask;    // CV_8UC1, 255 object, of the photograph's size
    int passes = 0;  // made
};

// Each pass is a request of its own on a fresh engine, so that the result depends on photograph, marks
// and candidates alone. It starts from the result of the one before, of which the working mask is
// enough. Throws what EngineCalls throws; the engine's history is then empty or holds the last pass.
FoundObject findObject(EngineCalls& engine, const ObjectSearch& search);

struct ChosenStart {
    const RegionStart* start = nullptr;
    cv::Mat candidates;  // what was found from it, CV_8UC1 of the photograph's size
};

// Tries the starts of a box on a small copy of the photograph; `only` is the one to take, null for
// the best. The engine holds `photo` again afterwards, with an empty history, unless this throws what
// EngineCalls throws.
ChosenStart chooseBoxStart(EngineCalls& engine, const Photo& photo, const cv::Mat& region,
                           const RegionStart* only, const std::function<bool()>& hasTime);

// A loop's start, CV_8UC1 of the photograph's size, as coarse as the small copy would show it.
cv::Mat loopStart(const Photo& photo, const cv::Mat& region);
