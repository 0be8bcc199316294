// The same maximum-flow problem for another library: a graph of the engine in a neutral form, and
// Boost's solver on two of its graph types.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "graph/graph.h"
#include "support/measurements.h"

struct FlowProblem {
    struct Link {
        int from;
        int to;
        float forward;   // capacity from -> to
        float backward;  // capacity to -> from
    };
    std::vector<float> terminal;  // a node each: above 0 from the source, below 0 to the sink
    std::vector<Link> links;

    // Weight of the cut that keeps the nodes with `sinkSide` 0 with the source.
    double cutWeight(const std::vector<char>& sinkSide) const;
};

// What the engine's graph, built but not solved, asks for. With a trimap only the nodes inside the
// band (codes other than 7) are taken, renumbered in order: the others have neither links nor
// terminal capacities, and a general graph would carry them for nothing.
FlowProblem exportGraph(const VORNSEGraph& graph, const cv::Mat& trimap = cv::Mat());

// The engine's cut of a solved graph, for the nodes that exportGraph took.
std::vector<char> sinkSideOf(const VORNSEGraph& graph, const cv::Mat& trimap = cv::Mat());

struct PeerFlow {
    double build;  // milliseconds to make the library's graph
    double solve;  // milliseconds of boykov_kolmogorov_max_flow
    std::vector<char> sinkSide;
};

PeerFlow solveOnAdjacencyList(const FlowProblem& problem);
PeerFlow solveOnCompressedRows(const FlowProblem& problem);
