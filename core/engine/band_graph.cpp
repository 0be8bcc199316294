// The graph of the band along the outline, at photo resolution. It covers the band's bounding
// rectangle, but for a large photograph nearly all of that lies outside the band. Long stretches
// outside are skipped: numbered, but never written (see VORNSEGraph::nodeAt).
//
// Notation: the trimap codes of trimap.h. Source = object.
#include <algorithm>
#include <cmath>

#include "engine/hybrid.h"
#include "engine/neighbour_links.h"
#include "engine/terminal_weights.h"
#include "engine/trimap.h"
#include "graph/graph.h"
#include "history/marker.h"
#include "support/image.h"
#include "support/large_pages.h"

namespace {

constexpr int kTableLine = 1905;
constexpr int kTableFreeLine = 2011;

// Shorter stretches outside the band are built like the band, because they share its pages of
// memory: a page holds the records, or the slots, of 128 nodes.
constexpr int kPageOfNodes = 128;

// Large pages halve the page faults, but skipped nodes then cost memory, too. A band that fills a
// third of its rectangle is worth that: it costs three times the memory at most.
constexpr int kDenseDivisor = 3;

// Calls inside(x0, x1) and outside(x0, x1) for the row's alternating stretches, left to right.
template <typename Inside, typename Outside>
void forEachStretch(const std::uint8_t* codes, int width, Inside inside, Outside outside) {
    for (int x = 0; x < width;) {
        const int start = x;
        const bool inBand = codes[x] != trimap::kOutside;
        while (x < width && (codes[x] != trimap::kOutside) == inBand) {
            ++x;
        }
        if (inBand) {
            inside(start, x);
        } else {
            outside(start, x);
        }
    }
}

bool isDense(const IplImage* trimap) {
    std::ptrdiff_t inBand = 0;
    for (int y = 0; y < trimap->height; ++y) {
        const std::uint8_t* codes = rowOf(trimap, y);
        inBand += trimap->width - std::count(codes, codes + trimap->width, trimap::kOutside);
    }
    const std::ptrdiff_t pixels = static_cast<std::ptrdiff_t>(trimap->width) * trimap->height;
    return kDenseDivisor * inBand >= pixels;
}

template <typename T>
void preferLargePagesFor(T* first, T* last) {
    preferLargePages(first, static_cast<std::size_t>(last - first) * sizeof(T));
}

// Adds the nodes of the band's rectangle, row by row, with their terminal capacities.
template <typename WeightsOf>
void addNodes(VORNSEGraph& graph, WeightsOf& weightsOf, const IplImage* image,
              const IplImage* trimap, const IplImage* texHor, const IplImage* texVer) {
    const int width = graph.m_width;
    const int height = graph.m_height;
    for (int y = 0; y < height; ++y) {
        const std::uint8_t* row = rowOf(image, y);
        const std::uint8_t* codes = rowOf(trimap, y);
        const std::uint8_t* horizontal = VORNSEMarker::m_isGreyScale ? rowOf(texHor, y) : nullptr;
        const std::uint8_t* vertical = VORNSEMarker::m_isGreyScale ? rowOf(texVer, y) : nullptr;
        const auto addStretch = [&](int start, int end) {
            int node = graph.m_nodeCount;
            graph.addNode(end - start);
            for (int x = start; x < end; ++x, ++node) {
                if (codes[x] == trimap::kOuterRing) {
                    graph.addtWeights(node, 0.0F, kHardWeight);
                } else if (codes[x] == trimap::kInnerRing) {
                    graph.addtWeights(node, kHardWeight, 0.0F);
                } else {
                    const TerminalCapacities capacities =
                        weightsOf(sampleBytes(row, horizontal, vertical, x));
                    graph.addtWeights(node, capacities.source, capacities.sink);
                }
            }
        };
        forEachStretch(codes, width, addStretch, [&](int start, int end) {
            if (end - start <= kPageOfNodes) {
                graph.addNode(end - start);
            } else {
                graph.skipNodes(end - start);
            }
        });
    }
}

// Adds the band's neighbour links, row by row.
void addEdges(VORNSEGraph& graph, const ContrastTable& table, double lambda, const IplImage* image,
              const IplImage* trimap) {
    const int width = graph.m_width;
    const int height = graph.m_height;
    const auto straight = static_cast<float>(lambda);
    const auto diagonal = static_cast<float>(lambda * kDiagonal);
    const auto link = [&graph](bool present, float weight) {
        graph.addEdge(0, 0, weight, weight, !present);
    };
    for (int y = 0; y < height; ++y) {
        const std::uint8_t* codes = rowOf(trimap, y);
        const std::uint8_t* codesAbove = y > 0 ? rowOf(trimap, y - 1) : nullptr;
        const std::uint8_t* row = rowOf(image, y);
        const std::uint8_t* above = y > 0 ? rowOf(image, y - 1) : nullptr;
        const auto bandAbove = [&](int column) {
            return above != nullptr && column >= 0 && column < width &&
                   codesAbove[column] != trimap::kOutside;
        };
        const auto contrast = [&](int x, int column) {
            return table.product(row + kChannels * x, above + kChannels * column);
        };
        const auto linkStretch = [&](int start, int end) {
            for (int x = start; x < end; ++x) {
                // Horizontal links do not depend on colour; results rely on it.
                link(x > start, straight);
                const bool upLeft = bandAbove(x - 1);
                link(upLeft, upLeft ? contrast(x, x - 1) * diagonal : 0.0F);
                const bool up = bandAbove(x);
                link(up,
                     up ? static_cast<float>(lambda * static_cast<double>(contrast(x, x))) : 0.0F);
                const bool upRight = bandAbove(x + 1);
                link(upRight, upRight ? contrast(x, x + 1) * diagonal : 0.0F);
            }
        };
        forEachStretch(codes, width, linkStretch, [&](int start, int end) {
            if (end - start > kPageOfNodes) {
                graph.skipEdges(end - start);
                return;
            }
            for (int slot = 0; slot < kSlotsPerNode / 2 * (end - start); ++slot) {
                link(false, 0.0F);
            }
        });
    }
}

}  // namespace

int VORNSEHybrid::constructGraphTrimapVORN(IplImage* image, IplImage* /*texA*/, IplImage* trimap,
                                           IplImage* texHor, IplImage* texVer) {
    const int width = m_boundWidthTrimap;
    const int height = m_boundHeightTrimap;
    const int pixels = width * height;
    m_trimapGraph = new VORNSEGraph(pixels, pixels * kSlotsPerNode, width, height, 0);
    VORNSEGraph& graph = *m_trimapGraph;
    if (graph.m_nodes == nullptr || graph.m_edgeCaps == nullptr) {
        return kGraphFailed;
    }
    if (isDense(trimap)) {
        preferLargePagesFor(graph.m_nodes, graph.m_nodeMax);
        preferLargePagesFor(graph.m_edgeCaps, graph.m_edgeMax);
    }
    graph.reset();
    TerminalWeightCache weightsOf(m_fgModel, m_bgModel, modelWeights);
    addNodes(graph, weightsOf, image, trimap, texHor, texVer);
    const ContrastTable table(m_beta, "constructGraphTrimapVORN", kTableLine, kTableFreeLine);
    if (!table.valid()) {
        return kGraphFailed;
    }
    addEdges(graph, table, m_lambda, image, trimap);
    return kGraphBuilt;
}
