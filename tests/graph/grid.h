// A grid of capacities as plain data, the graph built from it, and the weight of a cut of it. Edges
// are found by geometry here, not by slot arithmetic.
#pragma once

#include <gtest/gtest.h>
#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <opencv2/core.hpp>
#include <opencv2/imgproc/detail/gcgraph.hpp>
#include <random>
#include <vector>

#include "graph/graph.h"
#include "history/marker.h"
#include "support/timers.h"

// Cancels and clocks of a test end with it.
struct FlowTest : testing::Test {
    ~FlowTest() override {
        VORNSEMarker::m_exitApp = false;
        g_cancelTimer = nullptr;
    }
};

struct Grid {
    Grid(int gridWidth, int gridHeight, float everyCapacity = 0.0F)
        : width(gridWidth),
          height(gridHeight),
          pairs(static_cast<std::size_t>(size())),
          source(static_cast<std::size_t>(size())),
          sink(static_cast<std::size_t>(size())),
          outside(static_cast<std::size_t>(size())) {
        forEachEdge([&](int from, int to) { capacity(from, to) = everyCapacity; });
    }

    int size() const { return width * height; }

    // The neighbours in scan order (left, up-left, up, up-right and on), -1 beyond the grid.
    std::array<int, 8> around(int node) const {
        constexpr int kSteps[8][2] = {{-1, 0}, {-1, -1}, {0, -1}, {1, -1},
                                      {1, 0},  {1, 1},   {0, 1},  {-1, 1}};
        std::array<int, 8> heads;
        std::transform(kSteps, kSteps + 8, heads.begin(), [&](const int* step) {
            const int x = node % width + step[0];
            const int y = node / width + step[1];
            return x >= 0 && x < width && y >= 0 && y < height ? y * width + x : -1;
        });
        return heads;
    }

    float& capacity(int from, int to) {
        const std::array<int, 8> heads = around(from);
        const auto d =
            static_cast<std::size_t>(std::find(heads.begin(), heads.end(), to) - heads.begin());
        return d < 4 ? pairs[static_cast<std::size_t>(from)][2 * d]
                     : pairs[static_cast<std::size_t>(to)].at(2 * (d - 4) + 1);
    }

    // Calls visit(from, to) for every directed edge.
    template <typename Visit>
    void forEachEdge(Visit visit) const {
        for (int node = 0; node < size(); ++node) {
            for (std::size_t d = 0; d < 4; ++d) {
                if (const int other = around(node)[d]; other >= 0) {
                    visit(node, other);
                    visit(other, node);
                }
            }
        }
    }

    // Nodes outside are skipped, or added without edges and terminals.
    std::unique_ptr<VORNSEGraph> build(int numThreads = 0, bool skipOutside = true) const {
        auto graph = std::make_unique<VORNSEGraph>(size(), size() * 8, width, height, numThreads);
        for (int node = 0; node < size(); ++node) {
            const auto n = static_cast<std::size_t>(node);
            if (outside[n] && skipOutside) {
                graph->skipNodes(1);
                graph->skipEdges(1);
                continue;
            }
            graph->addNode(1);
            for (std::size_t d = 0; d < 4; ++d) {
                const int other = around(node)[d];
                const bool absent =
                    outside[n] || other < 0 || outside[static_cast<std::size_t>(other)];
                graph->addEdge(node, other, pairs[n][2 * d], pairs[n][2 * d + 1], absent);
            }
            if (!outside[n]) {
                graph->addtWeights(node, source[n], sink[n]);
            }
        }
        return graph;
    }

    // What the cut in the graph's labels costs.
    double cutWeight(const VORNSEGraph& graph) {
        double weight = 0.0;
        for (int node = 0; node < size(); ++node) {
            const auto n = static_cast<std::size_t>(node);
            weight += static_cast<double>(graph.getTreeofNode(node) == 1 ? source[n] : sink[n]);
        }
        forEachEdge([&](int from, int to) {
            if (graph.getTreeofNode(from) == 0 && graph.getTreeofNode(to) == 1) {
                weight += static_cast<double>(capacity(from, to));
            }
        });
        return weight;
    }

    int width;
    int height;
    std::vector<std::array<float, 8>> pairs;  // to and from the four earlier neighbours
    std::vector<float> source;
    std::vector<float> sink;
    std::vector<bool> outside;  // nodes that take no part
};

// All that a graph says of its nodes and edges, bit for bit.
inline std::vector<std::int64_t> contentOf(const VORNSEGraph& graph) {
    std::vector<std::int64_t> content;
    const auto addBits = [&content](float value) {
        std::int32_t bits;
        std::memcpy(&bits, &value, sizeof bits);
        content.push_back(bits);
    };
    for (int i = 0; i < graph.m_nodeCount; ++i) {
        const nodes node = graph.nodeAt(i);
        content.insert(content.end(), {node.parentEdge, node.treeLabel});
        addBits(node.residualTerminalCap);
        for (const nodes* next : {node.nextActive, node.nextOrphan}) {
            content.push_back(next == nullptr ? -1 : next - graph.m_nodes);
        }
    }
    for (int slot = 0; slot < graph.m_edgeCount; ++slot) {
        addBits(graph.capacityAt(slot));
    }
    addBits(graph.m_flow);
    return content;
}

inline std::vector<int> labelsOf(const VORNSEGraph& graph) {
    std::vector<int> labels;
    for (const nodes* node = graph.m_nodes; node < graph.m_nodeLast; ++node) {
        labels.push_back(node->treeLabel);
    }
    return labels;
}

// What the imaging library's own solver says, in double precision.
inline double libraryMaxFlow(Grid grid) {
    cv::detail::GCGraph<double> twin;
    twin.create(0, 0);
    for (std::size_t node = 0; node < grid.source.size(); ++node) {
        twin.addVtx();
        twin.addTermWeights(static_cast<int>(node), static_cast<double>(grid.source[node]),
                            static_cast<double>(grid.sink[node]));
    }
    grid.forEachEdge([&](int from, int to) {
        if (from < to) {
            twin.addEdges(from, to, static_cast<double>(grid.capacity(from, to)),
                          static_cast<double>(grid.capacity(to, from)));
        }
    });
    twin.addEdges(0, twin.addVtx(), 0.0, 0.0);  // it refuses graphs without edges
    return twin.maxFlow();
}

// A third of the nodes has no terminals.
template <typename Capacity>
Grid randomGrid(std::mt19937& random, int width, int height, Capacity capacity) {
    Grid grid(width, height);
    grid.forEachEdge([&](int from, int to) { grid.capacity(from, to) = capacity(); });
    for (std::size_t node = 0; node < grid.source.size(); ++node) {
        if (random() % 3 != 0) {
            grid.source[node] = capacity() * 3.0F;
            grid.sink[node] = capacity() * 3.0F;
        }
    }
    return grid;
}
