// The options that mark: each is a step, in the order in which they are given.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "session/step.h"

namespace CLI {
class App;
}

struct MarkOptions {
    std::vector<Step> steps;
    std::optional<int> radius;             // of the brushes that follow
    std::optional<double> alpha;           // of the snapped loops that follow
    std::optional<Correction> correction;  // of the marks that follow; none: the usual kind of each
    std::optional<int> passes;             // of the whole-object marks that follow
    std::set<std::string> waiting;         // options that no mark has come after yet
};

// `marks` is filled while the command is parsed.
void declareMarks(CLI::App& command, MarkOptions& marks);

// Throws CLI::ValidationError when an option for the marks that follow is the last one.
void requireMarksAfter(const MarkOptions& marks);
