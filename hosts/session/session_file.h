// Sessions as JSON files:
//
//   {"photo": "coffee.png",
//    "steps": [
//      {"op": "box", "box": [left, top, right, bottom]},
//      {"op": "loop-add", "points": [[x, y], ...]},
//      {"op": "snap-loop-remove", "points": [[x, y], ...], "alpha": 0.9},
//      {"op": "brush-add", "points": [[x, y], ...], "radius": 6},
//      {"op": "brush-remove", "points": [[x, y], ...], "edit": true},
//      {"op": "marks", "file": "scribbles.png"},
//      {"op": "undo"}, {"op": "redo"}]}
//
// Operations: box, loop-add, loop-remove, snap-loop-add, snap-loop-remove, brush-add, brush-remove,
// marks, undo, redo. "radius" (brushes), "alpha" (snapped loops) and "edit" (brushes and plain
// loops: change the mask directly, without segmenting) may be left out. Numbers of pixels are whole.
// Files are named relative to the session file's folder; "-" as photograph is standard input.
#pragma once

#include <string>
#include <vector>

#include "byte_stream.h"
#include "session/step.h"

struct SessionFile {
    std::string photo;
    std::vector<Step> steps;
};

// Errors name the step and the field. Reads standard input for "-".
SessionFile readSessionFile(const std::string& path);

// The document to be stored at `path`, with file names made relative to it.
Bytes encodeSessionFile(const SessionFile& session, const std::string& path);
