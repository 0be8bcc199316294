// Owning handle for the block views of a graph. A view shares the arrays of its graph, and the
// graph's destructor would release them: so a view lives in storage that is given back without
// running it. That loses nothing, a view owns nothing.
#pragma once

#include <memory>

#include "graph/graph.h"

// Views are written by one thread each, so no two may share a cache line.
constexpr std::size_t kCacheLineBytes = 64;

union alignas(kCacheLineBytes) BlockViewStorage {
    VORNSEGraph view;

    BlockViewStorage(VORNSEGraph* graph, int row, int col, int width, int height)
        : view(graph, row, col, width, height) {}
    // Empty, not defaulted: that would be deleted, for the view has a destructor.
    ~BlockViewStorage() {}  // NOLINT(modernize-use-equals-default)
};

struct BlockViewRelease {
    void operator()(VORNSEGraph* view) const { delete reinterpret_cast<BlockViewStorage*>(view); }
};
using BlockViewPtr = std::unique_ptr<VORNSEGraph, BlockViewRelease>;

inline BlockViewPtr createBlockView(VORNSEGraph* graph, int row, int col, int width, int height) {
    return BlockViewPtr(&(new BlockViewStorage(graph, row, col, width, height))->view);
}
