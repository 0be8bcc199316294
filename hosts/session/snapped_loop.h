// Loops and paths that follow the edges of a photograph between a few given points.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "session/photo.h"
#include "session/session_host.h"
#include "session/stats.h"
#include "session/step.h"

// Share of a path's length in its cost when the user names none; the rest is colour difference.
constexpr double kDefaultAlpha = 0.5;

// The path from the first point through the others in their order, as the pixels where it bends.
// Points outside the photograph and an alpha outside 0 to 1 are errors.
std::vector<cv::Point> snappedPath(const Photo& photo, const std::vector<cv::Point>& points,
                                   double alpha, SessionHost& host, Stats& stats);

// The plain loop whose sides are snapped, with the operation that adds or removes as `step` does.
Step snapLoop(const Step& step, const Photo& photo, SessionHost& host, Stats& stats);
