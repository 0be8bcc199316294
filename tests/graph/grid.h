// A grid of capacities as plain data, the graph built from it, and the weight of a cut of it. Edges
// are found by geometry here, not by slot arithmetic.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <memory>
#include <queue>
#include <random>
#include <stdexcept>
#include <vector>

#include "graph/graph.h"

struct Grid {
    Grid(int gridWidth, int gridHeight)
        : width(gridWidth),
          height(gridHeight),
          pairs(static_cast<std::size_t>(size())),
          source(static_cast<std::size_t>(size())),
          sink(static_cast<std::size_t>(size())) {}

    int size() const { return width * height; }

    // The earlier neighbour to the left, up-left, up or up-right; -1 outside.
    int earlier(int node, int direction) const {
        const int x = node % width + std::array{-1, -1, 0, 1}[static_cast<std::size_t>(direction)];
        const int y = node / width - (direction == 0 ? 0 : 1);
        return x < 0 || x >= width || y < 0 ? -1 : y * width + x;
    }

    float& capacity(int from, int to) {
        for (int d = 0; d < 4; ++d) {
            const auto slot = static_cast<std::size_t>(2 * d);
            if (earlier(from, d) == to) {
                return pairs[static_cast<std::size_t>(from)][slot];
            }
            if (earlier(to, d) == from) {
                return pairs[static_cast<std::size_t>(to)][slot + 1];
            }
        }
        throw std::invalid_argument("not neighbours");
    }

    // Calls visit(from, to) for every directed edge.
    template <typename Visit>
    void forEachEdge(Visit visit) const {
        for (int node = 0; node < size(); ++node) {
            for (int d = 0; d < 4; ++d) {
                if (const int other = earlier(node, d); other >= 0) {
                    visit(node, other);
                    visit(other, node);
                }
            }
        }
    }

    std::unique_ptr<VORNSEGraph> build(int numThreads = 0) const {
        auto graph = std::make_unique<VORNSEGraph>(size(), size() * 8, width, height, numThreads);
        graph->addNode(size());
        for (int node = 0; node < size(); ++node) {
            const auto n = static_cast<std::size_t>(node);
            for (int d = 0; d < 4; ++d) {
                const auto slot = static_cast<std::size_t>(2 * d);
                const int other = earlier(node, d);
                graph->addEdge(node, other, pairs[n][slot], pairs[n][slot + 1], other < 0);
            }
            graph->addtWeights(node, source[n], sink[n]);
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
};

// The textbook solver: shortest augmenting paths (Edmonds and Karp 1972).
inline double textbookMaxFlow(Grid& grid) {
    struct Edge {
        std::size_t to;
        double residual;
    };
    const auto s = static_cast<std::size_t>(grid.size());
    const std::size_t t = s + 1;
    constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();
    std::vector<Edge> edges;  // e ^ 1 leads back
    std::vector<std::vector<std::size_t>> leaving(t + 1);
    const auto join = [&](std::size_t from, std::size_t to, float capacity, float back) {
        leaving[from].push_back(edges.size());
        leaving[to].push_back(edges.size() + 1);
        edges.push_back({to, static_cast<double>(capacity)});
        edges.push_back({from, static_cast<double>(back)});
    };
    for (std::size_t node = 0; node < s; ++node) {
        join(s, node, grid.source[node], 0.0F);
        join(node, t, grid.sink[node], 0.0F);
    }
    grid.forEachEdge([&](int from, int to) {
        if (from < to) {
            join(static_cast<std::size_t>(from), static_cast<std::size_t>(to),
                 grid.capacity(from, to), grid.capacity(to, from));
        }
    });
    for (double flow = 0.0;;) {
        std::vector<std::size_t> via(t + 1, kNone);
        std::queue<std::size_t> reached({s});
        for (; !reached.empty() && via[t] == kNone; reached.pop()) {
            for (const std::size_t e : leaving[reached.front()]) {
                if (edges[e].to != s && via[edges[e].to] == kNone && edges[e].residual > 1e-9) {
                    via[edges[e].to] = e;
                    reached.push(edges[e].to);
                }
            }
        }
        if (via[t] == kNone) {
            return flow;
        }
        double bottleneck = HUGE_VAL;
        for (std::size_t node = t; node != s; node = edges[via[node] ^ 1].to) {
            bottleneck = std::min(bottleneck, edges[via[node]].residual);
        }
        for (std::size_t node = t; node != s; node = edges[via[node] ^ 1].to) {
            edges[via[node]].residual -= bottleneck;
            edges[via[node] ^ 1].residual += bottleneck;
        }
        flow += bottleneck;
    }
}

// A grid of 1 to `longest` nodes a side; a third of its nodes has no terminals.
template <typename Capacity>
Grid randomGrid(std::mt19937& random, unsigned longest, Capacity capacity) {
    const int width = 1 + static_cast<int>(random() % longest);
    Grid grid(width, 1 + static_cast<int>(random() % longest));
    grid.forEachEdge([&](int from, int to) { grid.capacity(from, to) = capacity(); });
    for (std::size_t node = 0; node < grid.source.size(); ++node) {
        if (random() % 3 != 0) {
            grid.source[node] = capacity() * 3.0F;
            grid.sink[node] = capacity() * 3.0F;
        }
    }
    return grid;
}
