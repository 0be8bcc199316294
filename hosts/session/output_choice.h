// How a person wants the result delivered, beside the marks that find it. None of it reaches the engine.
#pragma once

#include <array>
#include <optional>
#include <string>

#include "session/mask_hygiene.h"

enum class Edges {
    kHard,  // every pixel is object or not
    kSoft,  // partly object along the outline, as the photograph shows it
};

struct EdgesName {
    Edges edges;
    const char* name;
};

constexpr std::array<EdgesName, 2> kEdgesNames{{{Edges::kSoft, "soft"}, {Edges::kHard, "hard"}}};

const char* nameOf(Edges edges);
std::optional<Edges> edgesNamed(const std::string& name);

// Pixels. What is wider is no edge any more.
constexpr double kLargestEdgeWidth = 100.0;
constexpr double kLargestFeather = 100.0;

// What is not set has not been chosen.
struct OutputChoice {
    std::optional<Edges> edges;
    std::optional<double> edgeWidth;  // pixels to either side of the outline, 0: as measured
    std::optional<double> feather;    // pixels, the sigma of a further blur
    std::optional<int> smooth;        // this one and those below as in MaskHygiene
    std::optional<int> fillHoles;
    std::optional<int> dropIslands;
    std::optional<bool> keepLargest;

    bool isMade() const {
        return edges || edgeWidth || feather || smooth || fillHoles || dropIslands || keepLargest;
    }
};

// What `later` leaves open is as in `earlier`.
OutputChoice chosenOver(const OutputChoice& earlier, const OutputChoice& later);

MaskHygiene hygieneOf(const OutputChoice& choice);
