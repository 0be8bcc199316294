// The grid's store: construction, filling and reading back. Invariant: the records from m_nodes to
// m_nodeLast and the slots from m_edgeCaps to m_edgeLast are initialised, nothing beyond them is
// touched, so memory that a graph does not use is not committed, but for what shares a page with it.
#include "graph/graph.h"

#include <algorithm>

#include "support/tracked_memory.h"

namespace {

constexpr int kMinimumCount = 16;
constexpr int kAllocateNodesLine = 58;
constexpr int kAllocateCapsLine = 63;
constexpr int kFreeNodesLine = 96;
constexpr int kFreeCapsLine = 97;

void initialiseNodes(nodes* first, nodes* last) {
    std::fill(first, last, nodes{parent::kNone, tree::kFree, 0.0F, nullptr, nullptr});
}

template <typename T>
T* allocateArray(int count, int factor, int line) {
    const auto entries =
        static_cast<std::size_t>(factor) * static_cast<std::size_t>(std::max(count, kMinimumCount));
    // Zeroed, so that skipped nodes and slots read as free and saturated; large arrays come as
    // untouched pages of the system.
    return static_cast<T*>(VORN_Calloc_Msg(entries, sizeof(T), "VORNSEGraph", line));
}

void freeArray(void* array, int line) {
    if (array != nullptr) {
        VORN_Free_Msg(array, "~VORNSEGraph", line);
    }
}

}  // namespace

VORNSEGraph::VORNSEGraph(int nodeCount, int edgeCount, int width, int height, int numThreads)
    : m_nodeCount(0),
      m_edgeCount(0),
      m_nodes(allocateArray<nodes>(nodeCount, 1, kAllocateNodesLine)),
      m_nodeLast(m_nodes),
      m_nodeMax(m_nodes == nullptr ? nullptr : m_nodes + std::max(nodeCount, kMinimumCount)),
      m_edgeCaps(allocateArray<float>(edgeCount, 2, kAllocateCapsLine)),
      m_edgeLast(m_edgeCaps),
      m_edgeMax(m_edgeCaps == nullptr
                    ? nullptr
                    : m_edgeCaps + std::size_t{2} * static_cast<std::size_t>(
                                                        std::max(edgeCount, kMinimumCount))),
      m_flow(0.0F),
      m_activeHead(nullptr),
      m_activeTail(nullptr),
      m_orphanHead(nullptr),
      m_orphanTail(nullptr),
      m_numThreads(numThreads),
      m_blockWidth(0),
      m_blockHeight(0),
      m_blockRow(0),
      m_blockCol(0),
      m_width(width),
      m_height(height) {
    fillNeighbourOffsets();
}

VORNSEGraph::VORNSEGraph(VORNSEGraph* parent, int blockRow, int blockCol, int blockWidth,
                         int blockHeight)
    : m_nodeCount(parent->m_nodeCount),
      m_edgeCount(parent->m_edgeCount),
      m_nodes(parent->m_nodes),
      m_nodeLast(parent->m_nodeLast),
      m_nodeMax(parent->m_nodeMax),
      m_edgeCaps(parent->m_edgeCaps),
      m_edgeLast(parent->m_edgeLast),
      m_edgeMax(parent->m_edgeMax),
      m_flow(parent->m_flow),
      m_activeHead(nullptr),
      m_activeTail(nullptr),
      m_orphanHead(nullptr),
      m_orphanTail(nullptr),
      m_numThreads(0),
      m_blockWidth(blockWidth),
      m_blockHeight(blockHeight),
      m_blockRow(blockRow),
      m_blockCol(blockCol),
      m_width(parent->m_width),
      m_height(parent->m_height) {
    fillNeighbourOffsets();
}

VORNSEGraph::~VORNSEGraph() {
    // The arrays go back to the system below, so wiping them first would only fault in pages.
    freeArray(m_nodes, kFreeNodesLine);
    freeArray(m_edgeCaps, kFreeCapsLine);
    m_nodes = m_nodeLast = m_nodeMax = nullptr;
    m_edgeCaps = m_edgeLast = m_edgeMax = nullptr;
}

void VORNSEGraph::fillNeighbourOffsets() {
    const int offsets[kSlotsPerNode] = {-1, -1, 0, -m_width - 1, 0, -m_width, 0, -m_width + 1};
    std::copy(offsets, offsets + kSlotsPerNode, m_neighbourOffset);
}

void VORNSEGraph::clearContents() {
    const std::ptrdiff_t written = m_edgeCount;
    for (const NodeRange& range : m_ranges) {
        initialiseNodes(m_nodes + range.first, m_nodes + range.last);
        const auto slots = [written](int node) {
            return std::min(written, static_cast<std::ptrdiff_t>(kSlotsPerNode) * node);
        };
        std::fill(m_edgeCaps + slots(range.first), m_edgeCaps + slots(range.last), 0.0F);
    }
    m_flow = 0.0F;
    m_activeHead = m_activeTail = nullptr;
    m_orphanHead = m_orphanTail = nullptr;
}

void VORNSEGraph::reset() {
    clearContents();
    m_nodeCount = 0;
    m_edgeCount = 0;
    m_nodeLast = m_nodes;
    m_edgeLast = m_edgeCaps;
    m_ranges.clear();
}

int VORNSEGraph::resetNew() {
    clearContents();
    return 0;
}

void VORNSEGraph::addNode(int count) {
    if (count < 1) {
        return;
    }
    if (m_ranges.empty() || m_ranges.back().last != m_nodeCount) {
        m_ranges.push_back({m_nodeCount, m_nodeCount});
    }
    m_ranges.back().last += count;
    initialiseNodes(m_nodeLast, m_nodeLast + count);
    m_nodeLast += count;
    m_nodeCount += count;
}

void VORNSEGraph::skipNodes(int count) {
    m_nodeLast += count;
    m_nodeCount += count;
}

void VORNSEGraph::skipEdges(int count) {
    m_edgeLast += static_cast<std::ptrdiff_t>(kSlotsPerNode) * count;
    m_edgeCount = static_cast<int>(m_edgeLast - m_edgeCaps);
}

void VORNSEGraph::addToEdge(int from, int to, float cap, float revCap) {
    int slots[kSlotsPerNode];
    outgoingSlots(from, slots);
    for (const int slot : slots) {
        if (slot != kOutside && m_edgeCaps[slot] != kNoEdge && headOf(slot) == to) {
            m_edgeCaps[slot] += cap;
            m_edgeCaps[slot ^ 1] += revCap;
            return;
        }
    }
}

void VORNSEGraph::outgoingSlots(int node, int slots[kSlotsPerNode]) const {
    const int x = node % m_width;
    const bool hasLeft = x != 0;
    const bool hasRight = x != m_width - 1;
    const bool hasUp = node >= m_width;
    const bool hasDown = node < m_width * (m_height - 1);
    const int own = kSlotsPerNode * node;
    const int below = own + kSlotsPerNode * m_width;
    slots[0] = hasLeft ? own : kOutside;
    slots[1] = hasLeft && hasUp ? own + 2 : kOutside;
    slots[2] = hasUp ? own + 4 : kOutside;
    slots[3] = hasUp && hasRight ? own + 6 : kOutside;
    slots[4] = hasRight ? own + 9 : kOutside;
    slots[5] = hasRight && hasDown ? below + 11 : kOutside;
    slots[6] = hasDown ? below + 5 : kOutside;
    slots[7] = hasLeft && hasDown ? below - 1 : kOutside;
}
