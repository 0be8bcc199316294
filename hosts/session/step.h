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

struct Step {
    Operation operation = Operation::kBox;
    // Photograph pixels: a box's corners (left, top) and (right, bottom), both inside it, where the
    // photograph's width and height stand for its last column and row; a loop's corners; a brush's
    // path.
    std::vector<cv::Point> points;
    std::optional<int> radius;  // of a brush, in photograph pixels; none: by the photograph's size
    std::optional<double> alpha;  // of a snapped loop: the share of length in the path's cost
    std::string marksFile;
    bool edit = false;  // changes the mask directly, without segmenting; brushes and plain loops
};

const char* nameOf(Operation operation);
std::optional<Operation> operationNamed(const std::string& name);

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
inline bool removes(Operation operation) {
    return operation == Operation::kLoopRemove || operation == Operation::kSnapLoopRemove ||
           operation == Operation::kBrushRemove;
}
