#include "session/output_choice.h"

#include <algorithm>

namespace {

template <typename Value>
std::optional<Value> firstOf(const std::optional<Value>& one, const std::optional<Value>& other) {
    return one ? one : other;
}

}  // namespace

const char* nameOf(Edges edges) {
    const auto* found =
        std::find_if(kEdgesNames.begin(), kEdgesNames.end(),
                     [edges](const EdgesName& entry) { return entry.edges == edges; });
    return found->name;
}

std::optional<Edges> edgesNamed(const std::string& name) {
    const auto* found =
        std::find_if(kEdgesNames.begin(), kEdgesNames.end(),
                     [&name](const EdgesName& entry) { return name == entry.name; });
    if (found == kEdgesNames.end()) {
        return std::nullopt;
    }
    return found->edges;
}

OutputChoice chosenOver(const OutputChoice& earlier, const OutputChoice& later) {
    return {firstOf(later.edges, earlier.edges),
            firstOf(later.edgeWidth, earlier.edgeWidth),
            firstOf(later.feather, earlier.feather),
            firstOf(later.smooth, earlier.smooth),
            firstOf(later.fillHoles, earlier.fillHoles),
            firstOf(later.dropIslands, earlier.dropIslands),
            firstOf(later.keepLargest, earlier.keepLargest)};
}

MaskHygiene hygieneOf(const OutputChoice& choice) {
    return {choice.smooth.value_or(0), choice.fillHoles.value_or(0), choice.dropIslands.value_or(0),
            choice.keepLargest.value_or(false)};
}
