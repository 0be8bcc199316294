#include "mark_options.h"

#include <CLI/CLI.hpp>

#include "points.h"

namespace {

using Words = std::vector<std::string>;

constexpr std::size_t kBoxNumbers = 4;
constexpr const char* kGroup = "Marks, applied in the given order";

constexpr const char* kBrushRadius = "--brush-radius";
constexpr const char* kSnapAlpha = "--snap-alpha";
constexpr const char* kTouchUp = "--touch-up";
constexpr const char* kWholeObject = "--whole-object";
constexpr const char* kUsual = "--usual";
constexpr const char* kPasses = "--passes";

// Options whose order counts run as they are parsed.
template <typename Value, typename Action>
CLI::Option* inOrder(CLI::App& command, const std::string& name, Action action,
                     const char* description) {
    return command.add_option_function<Value>(name, action, description)
        ->trigger_on_parse()
        ->group(kGroup);
}

template <typename Action>
void inOrder(CLI::App& command, const std::string& name, const char* description, Action action) {
    command
        .add_flag_function(
            name, [action](std::int64_t) { action(); }, description)
        ->trigger_on_parse()
        ->group(kGroup);
}

std::string notPasses(const std::string& text) {
    int passes = 0;
    return CLI::detail::lexical_cast(text, passes) && passes >= 1 && passes <= kMostPasses
               ? ""
               : "'" + text + "' is no number of passes; give 1 to " + std::to_string(kMostPasses);
}

// What the options before a mark say of it.
void addMark(MarkOptions& marks, Step step) {
    const auto use = [&marks](const char* option) { marks.waiting.erase(option); };
    if (isBrush(step.operation)) {
        step.radius = marks.radius;
        use(kBrushRadius);
    }
    if (isSnappedLoop(step.operation)) {
        step.alpha = marks.alpha;
        use(kSnapAlpha);
    }
    step.correction = marks.correction;
    for (const char* const option : {kTouchUp, kWholeObject, kUsual}) {
        use(option);
    }
    if (step.correction != Correction::kTouchUp) {
        step.passes = marks.passes;
        use(kPasses);
    }
    marks.steps.push_back(std::move(step));
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
                addMark(marks, std::move(step));
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

void declareMoves(CLI::App& command, MarkOptions& marks) {
    const auto move = [&](Operation operation, const char* description) {
        inOrder(command, std::string("--") + nameOf(operation), description, [&marks, operation] {
            Step step;
            step.operation = operation;
            marks.steps.push_back(step);
        });
    };
    move(Operation::kUndo, "Take the last mark back");
    move(Operation::kRedo, "Apply a mark again that was taken back");
}

void declareCorrections(CLI::App& command, MarkOptions& marks) {
    inOrder(command, kWholeObject,
            "The marks that follow find the whole object anew, together with all marks before",
            [&marks] {
                marks.correction = Correction::kWholeObject;
                marks.waiting.insert(kWholeObject);
            });
    inOrder(command, kTouchUp, "The marks that follow change nothing away from themselves",
            [&marks] {
                marks.correction = Correction::kTouchUp;
                marks.waiting.insert(kTouchUp);
            });
    inOrder(command, kUsual,
            "Back to the default: brushes, painted marks and the first box or loop find the whole "
            "object, later boxes and loops touch up; as many passes as help",
            [&marks] {
                marks.correction.reset();
                marks.passes.reset();
                marks.waiting.erase(kPasses);
                marks.waiting.insert(kUsual);
            });
    inOrder<int>(
        command, kPasses,
        [&marks](int passes) {
            marks.passes = passes;
            marks.waiting.insert(kPasses);
        },
        "Requests of each whole-object mark that follows, 1 to 10 [1; 3 from strokes alone]")
        ->check(CLI::Validator(notPasses, ""))
        ->option_text("N");
}

}  // namespace

void declareMarks(CLI::App& command, MarkOptions& marks) {
    inOrder<std::string>(
        command, "--box",
        [&marks](const std::string& text) {
            const std::vector<int> box =
                numbersOf("--box", text, kBoxNumbers, "left,top,right,bottom");
            Step step;
            step.points = {{box[0], box[1]}, {box[2], box[3]}};
            addMark(marks, std::move(step));
        },
        "Box around the object; the right and lower border belong to it")
        ->option_text("LEFT,TOP,RIGHT,BOTTOM");
    declarePointMarks(command, marks);
    inOrder<int>(
        command, kBrushRadius,
        [&marks](int radius) {
            marks.radius = radius;
            marks.waiting.insert(kBrushRadius);
        },
        "Radius in photograph pixels of the brushes that follow [1 % of the mean side]")
        ->option_text("R");
    inOrder<double>(
        command, kSnapAlpha,
        [&marks](double alpha) {
            marks.alpha = alpha;
            marks.waiting.insert(kSnapAlpha);
        },
        "Share of length, 0 to 1, in the path cost of the snapped loops that follow")
        ->option_text("A");
    inOrder<std::string>(
        command, "--marks",
        [&marks](const std::string& file) {
            Step step;
            step.operation = Operation::kMarks;
            step.marksFile = file;
            addMark(marks, std::move(step));
        },
        "Scribbles painted in an image: green object, red background, blue maybe object")
        ->option_text("FILE");
    declareMoves(command, marks);
    declareCorrections(command, marks);
}

void requireMarksAfter(const MarkOptions& marks) {
    if (!marks.waiting.empty()) {
        const std::string option = *marks.waiting.begin();
        const bool ofWholeObjects = option == kPasses;
        throw CLI::ValidationError(
            option, std::string("holds for the ") + (ofWholeObjects ? "whole-object " : "") +
                        "marks after it and there is none; put it before the mark" +
                        (ofWholeObjects ? ", and no --touch-up between them" : ""));
    }
}
