// The store: made from the graph's records and capacities, and written back to the records at the
// end. Capacities stay in the graph, except those of the kept paths.
#include <algorithm>

#include "graph/dense/dense_solver.h"

using namespace node_state;

namespace {

// How many tiled numbers a large graph may cost for each node. A very narrow one would cost eight.
constexpr std::size_t kMostNumbersPerNode = 2;
constexpr std::size_t kSmallGrid = 1U << 16;

}  // namespace

void DenseSolver::Queue::grow() {
    std::vector<int> larger(std::max<std::size_t>(2 * m_ring.size(), 1024));
    for (std::size_t i = 0; i < m_count; ++i) {
        larger[i] = m_ring[(m_head + i) & m_mask];
    }
    m_ring.swap(larger);
    m_mask = m_ring.size() - 1;
    m_head = 0;
}

DenseSolver::DenseSolver(VORNSEGraph& graph)
    : m_graph(graph),
      m_caps(graph.m_edgeCaps),
      m_records(graph.m_nodes),
      m_grid(graph.m_width, graph.m_height) {
    for (int d = 0; d < direction::kCount; ++d) {
        m_nodeStep[d] = direction::nodeStep(d, graph.m_width);
        m_slotStep[d] = direction::slotStep(d, graph.m_width);
    }
    if (fits()) {
        m_state.allocate(m_grid.size());
        m_open.allocate(m_grid.size());
        m_parent.allocate(m_grid.size());
        m_step.allocate(m_grid.size());
    }
}

bool DenseSolver::fits() const {
    return m_graph.m_nodeCount == m_graph.m_width * m_graph.m_height &&
           m_graph.m_edgeCount == kSlotsPerNode * m_graph.m_nodeCount &&
           m_grid.size() <=
               kSmallGrid + kMostNumbersPerNode * static_cast<std::size_t>(m_graph.m_nodeCount);
}

bool DenseSolver::canSolve() const {
    return m_state.allocated() && m_open.allocated() && m_parent.allocated() && m_step.allocated();
}

int DenseSolver::directionOf(int node, int slot) const {
    const int* const found =
        std::find(m_slotStep, m_slotStep + direction::kCount, slot - kSlotsPerNode * node);
    assert(found != m_slotStep + direction::kCount);
    return static_cast<int>(found - m_slotStep);
}

// Writes the open bits of the edges that the node owns, at both of their ends. False for a capacity
// below 0.
bool DenseSolver::importEdges(int node, int tiled, int x, int y) {
    constexpr unsigned kLeft = 1U << direction::kLeft;
    constexpr unsigned kUpLeft = 1U << direction::kUpLeft;
    constexpr unsigned kUp = 1U << direction::kUp;
    constexpr unsigned kUpRight = 1U << direction::kUpRight;
    const unsigned outside = (x > 0 ? 0U : kLeft | kUpLeft) |
                             (y > 0 ? 0U : kUpLeft | kUp | kUpRight) |
                             (x < m_graph.m_width - 1 ? 0U : kUpRight);
    const flow_lanes::OpenEdges edges =
        flow_lanes::openEdges(m_caps + static_cast<std::ptrdiff_t>(kSlotsPerNode) * node);
    const unsigned out = edges.out & ~outside;
    const unsigned in = edges.in & ~outside;
    OpenEdges* const here = &m_open[tiled];
    here->out = static_cast<std::uint8_t>(here->out | out);
    here->in = static_cast<std::uint8_t>(here->in | in);
    const int* const steps = m_grid.steps(tiled);
    for (int d = 0; d < direction::kEarlier; ++d) {
        OpenEdges& there = here[steps[d]];
        const int back = direction::opposite(d);
        there.in = static_cast<std::uint8_t>(there.in | (out >> d & 1U) << back);
        there.out = static_cast<std::uint8_t>(there.out | (in >> d & 1U) << back);
    }
    return (edges.negative & ~outside) == 0;
}

bool DenseSolver::importRecords() {
    bool nonNegative = true;
    forEachNode([this, &nonNegative](int node, int tiled, int x, int y) {
        const nodes& record = m_records[node];
        std::uint8_t& state = m_state[tiled];
        if (record.treeLabel != tree::kFree) {
            state = record.treeLabel == tree::kSink ? kInSink : kInSource;
        }
        if (record.parentEdge == parent::kTerminal) {
            set(state, kTerminalParent);
        } else if (record.parentEdge != parent::kNone) {
            setParent(tiled, directionOf(node, record.parentEdge));
        }
        nonNegative &= importEdges(node, tiled, x, y);
    });
    if (!nonNegative) {
        return false;
    }
    while (nodes* record = m_graph.GetTopActiveQueueNode()) {
        record->nextActive = nullptr;
        const auto node = static_cast<int>(record - m_records);
        activate(m_grid.tiledAt(node % m_graph.m_width, node / m_graph.m_width));
    }
    return true;
}

void DenseSolver::exportRecords() {
    forEachNode([this](int node, int tiled, int /*x*/, int /*y*/) {
        const std::uint8_t state = m_state[tiled];
        nodes& record = m_records[node];
        if ((state & kParentIsNeighbour) != 0) {
            record.parentEdge = kSlotsPerNode * node + m_slotStep[directionOfParent(state)];
        } else {
            record.parentEdge =
                (state & kParentMask) == kTerminalParent ? parent::kTerminal : parent::kNone;
        }
        const int treeBits = state & kTreeMask;
        record.treeLabel = treeBits == kInSink     ? tree::kSink
                           : treeBits == kInSource ? tree::kSource
                                                   : tree::kFree;
    });
    while (!m_active.empty()) {
        m_graph.AddToActiveQueue(m_records + m_grid.nodeOf(m_active.pop()));
    }
    while (!m_orphans.empty()) {
        m_graph.AddToOrphanQueue(m_records + m_grid.nodeOf(m_orphans.pop()));
    }
}
