// Sessions as JSON texts:
//
//   {"version": 3,
//    "photo": "coffee.png", "width": 600, "height": 400,
//    "digest": "32 hexadecimal digits",
//    "colours": "srgb",
//    "output": {"edges": "soft", "edgeWidth": 0, "feather": 0.5, "smooth": 2, "fillHoles": 50,
//               "dropIslands": 50, "keepLargest": true},
//    "steps": [
//      {"op": "box", "box": [left, top, right, bottom], "correction": "whole-object",
//       "passes": 2, "start": "upright"},
//      {"op": "loop-add", "points": [[x, y], ...]},
//      {"op": "snap-loop-remove", "points": [[x, y], ...], "alpha": 0.9},
//      {"op": "brush-add", "points": [[x, y], ...], "radius": 6},
//      {"op": "brush-add", "points": [[x, y], ...], "correction": "touch-up", "toBorder": true},
//      {"op": "brush-remove", "points": [[x, y], ...], "edit": true},
//      {"op": "marks", "file": "scribbles.png"},
//      {"op": "undo"}, {"op": "redo"}]}
//
// Operations: box, loop-add, loop-remove, snap-loop-add, snap-loop-remove, brush-add, brush-remove,
// marks, undo, redo. "radius" (brushes), "alpha" (snapped loops) and "edit" (brushes and plain
// loops: change the mask directly, without segmenting) may be left out. Numbers of pixels are whole.
//
// "correction" says the kind of a mark (step.h). Marks without one make the requests that they made
// before there were kinds, so that older files give the same masks as ever. "passes" (1 to kMostPasses)
// and "start" (a RegionStart's name, on boxes and on loops that add) belong to whole-object marks,
// which have no "edit". All three need version 2, and are written as the session made the step.
//
// "toBorder": true on a touch-up without "edit" carries what it changes on to the photograph's border
// (photo_border.h). "colours": "srgb" says that the engine was given the photograph's colours converted
// to sRGB, where its file has a profile of others; without it they are used as stored, as they were
// before there was a choice. "output" is how the result is delivered (output_choice.h), each field as
// far as it has been chosen; what made a cut-out before there was a choice had hard edges, so these are
// meant where "edges" is left out. All three need version 3.
//
// "version" (1 when left out), "width" with "height", and "digest" may be left out; a file with the
// photograph's size or digest (digestOf in photo.h) fits that photograph only.
//
// How files are named is the host's affair: texts hold what `nameInFile` makes of a name, and
// sessions what `nameForHost` makes of a text's.
#pragma once

#include <functional>
#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <vector>

#include "session/output_choice.h"
#include "session/photo.h"
#include "session/step.h"

struct SessionFile {
    std::string photo;
    std::optional<cv::Size> size;  // of the photograph
    std::string digest;            // of the photograph, empty when not known
    bool inSrgb = false;           // converted for the engine; else as stored
    OutputChoice output;
    std::vector<Step> steps;
};

using FileNaming = std::function<std::string(const std::string&)>;

// Throws UserError naming the step and the field; `name` is the text's own for messages.
SessionFile parseSessionFile(const std::string& text, const std::string& name,
                             const FileNaming& nameForHost);

// In the oldest form that says everything, down to a text of before sizes, digests and versions.
std::string formatSessionFile(const SessionFile& session, const FileNaming& nameInFile);

// Notes the photograph's size and digest; `stored` has its colours as stored (CV_8UC3, or CV_8UC4 with
// anything as the fourth), since a conversion to sRGB may differ by a level from one machine to another.
void notePhoto(SessionFile& session, const cv::Mat& stored);

// Throws UserError for a photograph of another size or with other pixels than noted; `name` is the
// session's for the message.
void requireSamePhoto(const SessionFile& session, const cv::Mat& stored, const std::string& name);
