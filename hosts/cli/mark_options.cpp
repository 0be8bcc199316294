#include "mark_options.h"

#include <CLI/CLI.hpp>

#include "points.h"

namespace {

using Words = std::vector<std::string>;

constexpr std::size_t kBoxNumbers = 4;

// Options whose order counts run as they are parsed.
template <typename Value, typename Action>
CLI::Option* inOrder(CLI::App& command, const std::string& name, Action action,
                     const char* description) {
    return command.add_option_function<Value>(name, action, description)
        ->trigger_on_parse()
        ->group("Marks, applied in the given order");
}

void declarePointMarks(CLI::App& command, MarkOptions& marks) {
    const auto mark = [&](Operation operation, const char* description) {
        const std::string option = std::string("--") + nameOf(operation);
        inOrder<Words>(
            command, option,
            [&marks, operation, option](const Words& words) {
                Step step;
                step.operation = operation;
                step.points = pointsOf(option, words);
                step.radius = isBrush(operation) ? marks.radius : std::nullopt;
                step.alpha = isSnappedLoop(operation) ? marks.alpha : std::nullopt;
                marks.radiusWaits = marks.radiusWaits && !isBrush(operation);
                marks.alphaWaits = marks.alphaWaits && !isSnappedLoop(operation);
                marks.steps.push_back(step);
            },
            description)
            ->option_text("X,Y X,Y ...");
    };
    mark(Operation::kLoopAdd, "Loop around what is to be added");
    mark(Operation::kLoopRemove, "Loop around what is to be removed");
    mark(Operation::kSnapLoopAdd, "Like --loop-add, snapped to the edges nearby");
    mark(Operation::kSnapLoopRemove, "Like --loop-remove, snapped to the edges nearby");
    mark(Operation::kBrushAdd, "Brush path over the object");
    mark(Operation::kBrushRemove, "Brush path over the background");
}

}  // namespace

void declareMarks(CLI::App& command, MarkOptions& marks) {
    std::vector<Step>& steps = marks.steps;
    inOrder<std::string>(
        command, "--box",
        [&steps](const std::string& text) {
            const std::vector<int> box =
                numbersOf("--box", text, kBoxNumbers, "left,top,right,bottom");
            Step step;
            step.points = {{box[0], box[1]}, {box[2], box[3]}};
            steps.push_back(step);
        },
        "Box around the object; the right and lower border belong to it")
        ->option_text("LEFT,TOP,RIGHT,BOTTOM");
    declarePointMarks(command, marks);
    inOrder<int>(
        command, "--brush-radius",
        [&marks](int radius) {
            marks.radius = radius;
            marks.radiusWaits = true;
        },
        "Radius in photograph pixels of the brushes that follow [1 % of the mean side]")
        ->option_text("R");
    inOrder<double>(
        command, "--snap-alpha",
        [&marks](double alpha) {
            marks.alpha = alpha;
            marks.alphaWaits = true;
        },
        "Share of length, 0 to 1, in the path cost of the snapped loops that follow")
        ->option_text("A");
    inOrder<std::string>(
        command, "--marks",
        [&steps](const std::string& file) {
            Step step;
            step.operation = Operation::kMarks;
            step.marksFile = file;
            steps.push_back(step);
        },
        "Scribbles painted in an image: green object, red background, blue maybe object")
        ->option_text("FILE");
    const auto move = [&](Operation operation, const char* description) {
        command
            .add_flag_function(
                std::string("--") + nameOf(operation),
                [&steps, operation](std::int64_t) {
                    Step step;
                    step.operation = operation;
                    steps.push_back(step);
                },
                description)
            ->trigger_on_parse()
            ->group("Marks, applied in the given order");
    };
    move(Operation::kUndo, "Take the last mark back");
    move(Operation::kRedo, "Apply a mark again that was taken back");
}

void requireMarksAfter(const MarkOptions& marks) {
    if (marks.radiusWaits || marks.alphaWaits) {
        throw CLI::ValidationError(
            marks.radiusWaits ? "--brush-radius" : "--snap-alpha",
            "holds for the marks after it and there is none; put it before the mark");
    }
}
