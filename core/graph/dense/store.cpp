// The dense store: made from the graph's records and capacities, and written back to the records.
// Capacities stay in the graph, but for those of the laid paths.
#include <algorithm>
#include <cstdlib>

#include "graph/dense/dense_solver.h"

using namespace node_state;

namespace {

// Tiled numbers per node that a large graph may cost; a very narrow one would cost eight.
constexpr std::size_t kMostNumbersPerNode = 2;
constexpr std::size_t kSmallGrid = 1U << 16;

template <typename T>
T* allocateZeroed(std::size_t count) {
    return static_cast<T*>(std::calloc(count, sizeof(T)));
}

}  // namespace

void DenseSolver::Free::operator()(void* block) const {
    std::free(block);
}

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
      m_grid(graph.m_width, graph.m_height),
      m_cellOffset{-1, -graph.m_width - 1, -graph.m_width, -graph.m_width + 1,
                   1,  graph.m_width + 1,  graph.m_width,  graph.m_width - 1},
      m_slotOffset{0,
                   2,
                   4,
                   6,
                   9,
                   kSlotsPerNode * graph.m_width + 11,
                   kSlotsPerNode * graph.m_width + 5,
                   kSlotsPerNode * graph.m_width - 1} {
    if (fits()) {
        m_state.reset(allocateZeroed<std::uint8_t>(m_grid.size()));
        m_open.reset(allocateZeroed<Directions>(m_grid.size()));
        m_parent.reset(allocateZeroed<int>(m_grid.size()));
        m_step.reset(allocateZeroed<int>(m_grid.size()));
    }
}

bool DenseSolver::fits() const {
    return m_graph.m_nodeCount == m_graph.m_width * m_graph.m_height &&
           m_graph.m_edgeCount == kSlotsPerNode * m_graph.m_nodeCount &&
           m_grid.size() <=
               kSmallGrid + kMostNumbersPerNode * static_cast<std::size_t>(m_graph.m_nodeCount);
}

bool DenseSolver::canSolve() const {
    return m_state != nullptr && m_open != nullptr && m_parent != nullptr && m_step != nullptr;
}

template <typename Visit>
void DenseSolver::forEachNode(Visit visit) const {
    const int width = m_graph.m_width;
    for (const NodeRange& range : m_graph.ranges()) {
        int x = range.first % width;
        int y = range.first / width;
        for (int cell = range.first; cell < range.last; ++cell) {
            visit(cell, m_grid.at(x, y), x, y);
            if (++x == width) {
                x = 0;
                ++y;
            }
        }
    }
}

int DenseSolver::directionOf(int cell, int slot) const {
    const int* const end = m_slotOffset + kSlotsPerNode;
    return static_cast<int>(std::find(m_slotOffset, end, slot - kSlotsPerNode * cell) -
                            m_slotOffset);
}

// Every edge belongs to the later of its nodes in row order, whose directions 0 .. 3 it takes. False for
// a capacity below 0.
bool DenseSolver::importEdges(int cell, int node, int x, int y) {
    constexpr unsigned kLeft = 1U;
    constexpr unsigned kUpLeft = 2U;
    constexpr unsigned kUp = 4U;
    constexpr unsigned kUpRight = 8U;
    const unsigned outside = (x > 0 ? 0U : kLeft | kUpLeft) |
                             (y > 0 ? 0U : kUpLeft | kUp | kUpRight) |
                             (x < m_graph.m_width - 1 ? 0U : kUpRight);
    const flow_lanes::OpenEdges open =
        flow_lanes::openEdges(m_caps + static_cast<std::ptrdiff_t>(kSlotsPerNode) * cell);
    const unsigned out = open.out & ~outside;
    const unsigned in = open.in & ~outside;
    Directions* const here = &m_open[static_cast<std::size_t>(node)];
    here->out = static_cast<std::uint8_t>(here->out | out);
    here->in = static_cast<std::uint8_t>(here->in | in);
    const int* const steps = m_grid.steps(node);
    for (int direction = 0; direction < kSlotsPerNode / 2; ++direction) {
        Directions& there = here[steps[direction]];
        there.in =
            static_cast<std::uint8_t>(there.in | (out >> direction & 1U) << opposite(direction));
        there.out =
            static_cast<std::uint8_t>(there.out | (in >> direction & 1U) << opposite(direction));
    }
    return (open.negative & ~outside) == 0;
}

bool DenseSolver::importRecords() {
    bool nonNegative = true;
    forEachNode([this, &nonNegative](int cell, int node, int x, int y) {
        const nodes& record = m_records[cell];
        std::uint8_t& state = m_state[static_cast<std::size_t>(node)];
        if (record.treeLabel != tree::kFree) {
            state = record.treeLabel == tree::kSink ? kInSink : kInSource;
        }
        if (record.parentEdge == parent::kTerminal) {
            state = static_cast<std::uint8_t>(state | kTerminalParent);
        } else if (record.parentEdge != parent::kNone) {
            setParent(node, directionOf(cell, record.parentEdge));
        }
        nonNegative &= importEdges(cell, node, x, y);
    });
    if (!nonNegative) {
        return false;
    }
    while (nodes* record = m_graph.GetTopActiveQueueNode()) {
        record->nextActive = nullptr;
        const auto cell = static_cast<int>(record - m_records);
        activate(m_grid.at(cell % m_graph.m_width, cell / m_graph.m_width));
    }
    return true;
}

void DenseSolver::exportRecords() {
    forEachNode([this](int cell, int node, int /*x*/, int /*y*/) {
        const std::uint8_t state = m_state[static_cast<std::size_t>(node)];
        const int code = state & kParentMask;
        nodes& record = m_records[cell];
        if ((code & kParentIsNeighbour) != 0) {
            record.parentEdge = kSlotsPerNode * cell + m_slotOffset[code - kFirstDirection];
        } else {
            record.parentEdge = code == kTerminalParent ? parent::kTerminal : parent::kNone;
        }
        const int treeBits = state & kTreeMask;
        record.treeLabel = treeBits == kInSink     ? tree::kSink
                           : treeBits == kInSource ? tree::kSource
                                                   : tree::kFree;
    });
    while (!m_active.empty()) {
        m_graph.AddToActiveQueue(m_records + m_grid.rowMajor(m_active.pop()));
    }
    while (!m_orphans.empty()) {
        m_graph.AddToOrphanQueue(m_records + m_grid.rowMajor(m_orphans.pop()));
    }
}
