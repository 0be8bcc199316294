// A block's view of a graph. Each view is written by one thread, so no two may share a cache line.
#pragma once

#include <memory>

#include "graph/graph.h"

constexpr std::size_t kCacheLineBytes = 64;

struct alignas(kCacheLineBytes) BlockView : VORNSEGraph {
    using VORNSEGraph::VORNSEGraph;
};
using BlockViewPtr = std::unique_ptr<BlockView>;

inline BlockViewPtr createBlockView(VORNSEGraph* graph, int row, int col, int width, int height) {
    return std::make_unique<BlockView>(graph, row, col, width, height);
}
