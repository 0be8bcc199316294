// One operation of an editing session, as the command line and session files give it.
#pragma once

#include <array>
#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <vector>

enum class Operation {
    kBox,
    kLoopAdd,
    kLoopRemove,
    kSnapLoopAdd,
    kSnapLoopRemove,
    kBrushAdd,
    kBrushRemove,
    kMarks,
    kUndo,
    kRedo,
};

struct OperationName {
    Operation operation;
    const char* name;
};

// The names in session files; options are the same after "--".
constexpr std::array<OperationName, 10> kOperationNames{{
    {Operation::kBox, "box"},
    {Operation::kLoopAdd, "loop-add"},
    {Operation::kLoopRemove, "loop-remove"},
    {Operation::kSnapLoopAdd, "snap-loop-add"},
    {Operation::kSnapLoopRemove, "snap-loop-remove"},
    {Operation::kBrushAdd, "brush-add"},
    {Operation::kBrushRemove, "brush-remove"},
    {Operation::kMarks, "marks"},
    {Operation::kUndo, "undo"},
    {Operation::kRedo, "redo"},
}};

// What a mark asks for. Without a kind, a step makes the requests that it always made: brushes and
// loops on what the engine itself has on display, with what it remembers of earlier requests.
enum class Correction {
    // Changes nothing away from the mark. Depends on photograph, mask and mark alone.
    kTouchUp,
    // The mark joins all earlier ones, and the object is found anew from them, starting from the last
    // result. Depends on photograph, marks and last result alone.
    kWholeObject,
};

struct CorrectionName {
    Correction correction;
    const char* name;
};

constexpr std::array<CorrectionName, 2> kCorrectionNames{{
    {Correction::kTouchUp, "touch-up"},
    {Correction::kWholeObject, "whole-object"},
}};

constexpr int kMostPasses = 10;

struct Step {
    Operation operation = Operation::kBox;
    // Photograph pixels: a box's corners (left, top) and (right, bottom), both inside it, where the
    // photograph's width and height stand for its last column and row; a loop's corners; a brush's
    // path.
    std::vector<cv::Point> points;
    std::optional<int> radius;  // of a brush, in photograph pixels; none: by the photograph's size
    std::optional<double> alpha;  // of a snapped loop: the share of length in the path's cost
    std::string marksFile;
    std::optional<Correction> correction;
    // Of a whole object: the requests made one after the other, each from the result of the one
    // before, 1 to kMostPasses; none: the usual number. One on a photograph without a result is the
    // box or loop and nothing more.
    std::optional<int> passes;
    // Of a whole object's first box or loop: the name of a RegionStart; empty: the best of them, or
    // none when passes is 1.
    std::string start;
    // Of a touch-up: goes on to the photograph's right and bottom border, where the engine ends a little
    // earlier (photo_border.h). Steps from before there was a choice do not.
    bool toBorder = false;
    bool edit = false;  // changes the mask directly, without segmenting; brushes and plain loops
};

const char* nameOf(Operation operation);
std::optional<Operation> operationNamed(const std::string& name);
const char* nameOf(Correction correction);
std::optional<Correction> correctionNamed(const std::string& name);

// The kind that serves the operation best where a person does not choose: what a stroke says of the
// object's colours holds for all of the object, while a loop points to a place. `isFirst` on a
// photograph without a result. None for undo and redo.
std::optional<Correction> usualCorrection(Operation operation, bool isFirst);

inline bool isBrush(Operation operation) {
    return operation == Operation::kBrushAdd || operation == Operation::kBrushRemove;
}
inline bool isPlainLoop(Operation operation) {
    return operation == Operation::kLoopAdd || operation == Operation::kLoopRemove;
}
inline bool isSnappedLoop(Operation operation) {
    return operation == Operation::kSnapLoopAdd || operation == Operation::kSnapLoopRemove;
}
inline bool isLoop(Operation operation) {
    return isPlainLoop(operation) || isSnappedLoop(operation);
}
inline bool isRegion(Operation operation) {
    return operation == Operation::kBox || isLoop(operation);
}
inline bool removes(Operation operation) {
    return operation == Operation::kLoopRemove || operation == Operation::kSnapLoopRemove ||
           operation == Operation::kBrushRemove;
}
