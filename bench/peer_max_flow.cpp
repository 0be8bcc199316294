#include "peer_max_flow.h"

#include <boost/graph/adjacency_list.hpp>
#include <boost/graph/boykov_kolmogorov_max_flow.hpp>
#include <boost/graph/compressed_sparse_row_graph.hpp>
#include <cmath>

namespace {

constexpr std::uint8_t kOutsideBand = 7;
constexpr int kNotTaken = -1;

// Position of every node among those taken, or kNotTaken.
std::vector<int> takenNodes(const VORNSEGraph& graph, const cv::Mat& trimap) {
    std::vector<int> number(static_cast<std::size_t>(graph.m_width * graph.m_height), kNotTaken);
    int next = 0;
    for (int y = 0; y < graph.m_height; ++y) {
        for (int x = 0; x < graph.m_width; ++x) {
            if (trimap.empty() || trimap.at<std::uint8_t>(y, x) != kOutsideBand) {
                number[static_cast<std::size_t>(y * graph.m_width + x)] = next++;
            }
        }
    }
    return number;
}

// ---- Adjacency list, set up as the library's documentation does ----

using ListTraits = boost::adjacency_list_traits<boost::vecS, boost::vecS, boost::directedS>;
using ListVertex =
    boost::property<boost::vertex_index_t, long,
                    boost::property<boost::vertex_color_t, boost::default_color_type,
                                    boost::property<boost::vertex_distance_t, long,
                                                    boost::property<boost::vertex_predecessor_t,
                                                                    ListTraits::edge_descriptor>>>>;
using ListEdge = boost::property<
    boost::edge_capacity_t, float,
    boost::property<boost::edge_residual_capacity_t, float,
                    boost::property<boost::edge_reverse_t, ListTraits::edge_descriptor>>>;
using ListGraph =
    boost::adjacency_list<boost::vecS, boost::vecS, boost::directedS, ListVertex, ListEdge>;

void addPair(ListGraph& graph, std::size_t from, std::size_t to, float forward, float backward) {
    const auto there = boost::add_edge(from, to, graph).first;
    const auto back = boost::add_edge(to, from, graph).first;
    boost::put(boost::edge_capacity, graph, there, forward);
    boost::put(boost::edge_capacity, graph, back, backward);
    boost::put(boost::edge_reverse, graph, there, back);
    boost::put(boost::edge_reverse, graph, back, there);
}

// ---- Compressed rows ----

using RowGraph =
    boost::compressed_sparse_row_graph<boost::directedS, boost::no_property, boost::no_property,
                                       boost::no_property, int, int>;

struct DirectedEdge {
    int from;
    int to;
    float capacity;
};

// Every link as two directed edges, a pair at 2k and 2k + 1, the terminals last.
std::vector<DirectedEdge> directedEdges(const FlowProblem& problem) {
    const auto count = static_cast<int>(problem.terminal.size());
    const int source = count;
    const int sink = count + 1;
    std::vector<DirectedEdge> edges;
    edges.reserve(2 * (problem.links.size() + problem.terminal.size()));
    for (const FlowProblem::Link& link : problem.links) {
        edges.push_back({link.from, link.to, link.forward});
        edges.push_back({link.to, link.from, link.backward});
    }
    for (int node = 0; node < count; ++node) {
        const float terminal = problem.terminal[static_cast<std::size_t>(node)];
        if (terminal > 0.0F) {
            edges.push_back({source, node, terminal});
            edges.push_back({node, source, 0.0F});
        } else if (terminal < 0.0F) {
            edges.push_back({node, sink, -terminal});
            edges.push_back({sink, node, 0.0F});
        }
    }
    return edges;
}

// Place of every edge in an order sorted by source node.
std::vector<std::size_t> placesBySource(const std::vector<DirectedEdge>& edges, std::size_t nodes) {
    std::vector<std::size_t> first(nodes + 1, 0);
    for (const DirectedEdge& edge : edges) {
        ++first[static_cast<std::size_t>(edge.from) + 1];
    }
    for (std::size_t i = 0; i < nodes; ++i) {
        first[i + 1] += first[i];
    }
    std::vector<std::size_t> places;
    places.reserve(edges.size());
    for (const DirectedEdge& edge : edges) {
        places.push_back(first[static_cast<std::size_t>(edge.from)]++);
    }
    return places;
}

struct CompressedRows {
    RowGraph graph;
    std::vector<float> capacities;  // these three by place
    std::vector<float> residuals;
    std::vector<RowGraph::edge_descriptor> reverse;

    explicit CompressedRows(const FlowProblem& problem) {
        const std::size_t nodes = problem.terminal.size() + 2;
        const std::vector<DirectedEdge> edges = directedEdges(problem);
        const std::vector<std::size_t> places = placesBySource(edges, nodes);
        std::vector<std::pair<int, int>> ends(edges.size());
        capacities.resize(edges.size());
        residuals.resize(edges.size());
        for (std::size_t i = 0; i < edges.size(); ++i) {
            ends[places[i]] = {edges[i].from, edges[i].to};
            capacities[places[i]] = edges[i].capacity;
        }
        graph = RowGraph(boost::edges_are_sorted, ends.begin(), ends.end(), static_cast<int>(nodes),
                         static_cast<int>(edges.size()));
        const auto range = boost::edges(graph);
        const std::vector<RowGraph::edge_descriptor> descriptors(range.first, range.second);
        reverse.resize(edges.size());
        for (std::size_t i = 0; i < edges.size(); ++i) {
            reverse[places[i]] = descriptors[places[i ^ 1U]];
        }
    }
};

std::vector<char> sinkSides(const boost::default_color_type* colours, std::size_t count) {
    // The solver paints the source's tree black, the sink's white, and the rest grey.
    std::vector<char> sides(count);
    for (std::size_t i = 0; i < count; ++i) {
        sides[i] = colours[i] == boost::white_color ? 1 : 0;
    }
    return sides;
}

}  // namespace

double FlowProblem::cutWeight(const std::vector<char>& sinkSide) const {
    double weight = 0.0;
    for (std::size_t i = 0; i < terminal.size(); ++i) {
        const auto capacity = static_cast<double>(terminal[i]);
        if (sinkSide[i] != 0 ? capacity > 0.0 : capacity < 0.0) {
            weight += std::fabs(capacity);
        }
    }
    for (const Link& link : links) {
        const bool from = sinkSide[static_cast<std::size_t>(link.from)] != 0;
        const bool to = sinkSide[static_cast<std::size_t>(link.to)] != 0;
        if (from != to) {
            weight += static_cast<double>(from ? link.backward : link.forward);
        }
    }
    return weight;
}

FlowProblem exportGraph(const VORNSEGraph& graph, const cv::Mat& trimap) {
    constexpr int kEarlierNeighbours = 4;
    const std::vector<int> number = takenNodes(graph, trimap);
    FlowProblem problem;
    for (std::size_t node = 0; node < number.size(); ++node) {
        if (number[node] == kNotTaken) {
            continue;
        }
        // Infinity minus infinity prefers neither side.
        const float residual = graph.m_nodes[node].residualTerminalCap;
        problem.terminal.push_back(std::isnan(residual) ? 0.0F : residual);
        for (int i = 0; i < kEarlierNeighbours; ++i) {
            const int slot = static_cast<int>(node) * kSlotsPerNode + 2 * i;
            if (graph.m_edgeCaps[slot] != kNoEdge) {
                const auto head = static_cast<std::size_t>(graph.headOf(slot));
                problem.links.push_back({number[node], number[head], graph.m_edgeCaps[slot],
                                         graph.m_edgeCaps[slot + 1]});
            }
        }
    }
    return problem;
}

std::vector<char> sinkSideOf(const VORNSEGraph& graph, const cv::Mat& trimap) {
    const std::vector<int> number = takenNodes(graph, trimap);
    std::vector<char> sides;
    for (std::size_t node = 0; node < number.size(); ++node) {
        if (number[node] != kNotTaken) {
            sides.push_back(static_cast<char>(graph.getTreeofNode(static_cast<int>(node))));
        }
    }
    return sides;
}

PeerFlow solveOnAdjacencyList(const FlowProblem& problem) {
    PeerFlow result;
    const std::size_t count = problem.terminal.size();
    const std::size_t source = count;
    const std::size_t sink = count + 1;
    ListGraph graph(count + 2);
    result.build = durationOf([&] {
                       for (const FlowProblem::Link& link : problem.links) {
                           addPair(graph, static_cast<std::size_t>(link.from),
                                   static_cast<std::size_t>(link.to), link.forward, link.backward);
                       }
                       for (std::size_t node = 0; node < count; ++node) {
                           const float terminal = problem.terminal[node];
                           if (terminal > 0.0F) {
                               addPair(graph, source, node, terminal, 0.0F);
                           } else if (terminal < 0.0F) {
                               addPair(graph, node, sink, -terminal, 0.0F);
                           }
                       }
                   }).wall;
    result.solve = durationOf([&] { boost::boykov_kolmogorov_max_flow(graph, source, sink); }).wall;
    std::vector<boost::default_color_type> colours(count);
    for (std::size_t node = 0; node < count; ++node) {
        colours[node] = boost::get(boost::vertex_color, graph, node);
    }
    result.sinkSide = sinkSides(colours.data(), count);
    return result;
}

PeerFlow solveOnCompressedRows(const FlowProblem& problem) {
    PeerFlow result;
    const std::size_t count = problem.terminal.size();
    std::unique_ptr<CompressedRows> rows;
    result.build = durationOf([&] { rows = std::make_unique<CompressedRows>(problem); }).wall;

    const auto byEdge = boost::get(boost::edge_index, rows->graph);
    const auto byVertex = boost::get(boost::vertex_index, rows->graph);
    std::vector<RowGraph::edge_descriptor> predecessors(count + 2);
    std::vector<boost::default_color_type> colours(count + 2);
    std::vector<int> distances(count + 2);
    result.solve =
        durationOf([&] {
            boost::boykov_kolmogorov_max_flow(
                rows->graph, boost::make_iterator_property_map(rows->capacities.begin(), byEdge),
                boost::make_iterator_property_map(rows->residuals.begin(), byEdge),
                boost::make_iterator_property_map(rows->reverse.begin(), byEdge),
                boost::make_iterator_property_map(predecessors.begin(), byVertex),
                boost::make_iterator_property_map(colours.begin(), byVertex),
                boost::make_iterator_property_map(distances.begin(), byVertex), byVertex,
                static_cast<int>(count), static_cast<int>(count) + 1);
        }).wall;
    result.sinkSide = sinkSides(colours.data(), count);
    return result;
}
