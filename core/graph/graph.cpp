// The grid's store: construction, filling and reading back. Invariant: records and slots that were
// not added, or were skipped, are never touched, so that the system need not find memory for them.
#include "graph/graph.h"

#include <algorithm>
#include <cassert>

#include "graph/grid_directions.h"
#include "support/tracked_memory.h"

namespace {

constexpr int kMinimumCount = 16;
constexpr int kAllocateNodesLine = 58;
constexpr int kAllocateCapsLine = 63;
constexpr int kFreeNodesLine = 96;
constexpr int kFreeCapsLine = 97;

constexpr nodes kFreeNode = {parent::kNone, tree::kFree, 0.0F, nullptr, nullptr};

bool contains(const std::vector<NumberRange>& ranges, int number) {
    const auto behind =
        std::upper_bound(ranges.begin(), ranges.end(), number,
                         [](int value, const NumberRange& range) { return value < range.first; });
    return behind != ranges.begin() && number < std::prev(behind)->last;
}

// Numbers from `first` on, which no range has yet.
void append(std::vector<NumberRange>& ranges, int first, int count) {
    if (ranges.empty() || ranges.back().last != first) {
        ranges.push_back({first, first});
    }
    ranges.back().last += count;
}

template <typename T>
T* allocateArray(int count, int factor, int line) {
    const auto entries =
        static_cast<std::size_t>(factor) * static_cast<std::size_t>(std::max(count, kMinimumCount));
    // Zeros let no flow through, so what is skipped need not be written. Large arrays come as
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
      m_height(height),
      m_isView(false) {
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
      m_height(parent->m_height),
      m_isView(true),
      m_ranges(parent->m_ranges),
      m_skippedSlots(parent->m_skippedSlots) {
    fillNeighbourOffsets();
}

VORNSEGraph::~VORNSEGraph() {
    if (m_isView) {
        return;
    }
    // Not wiped first: the system takes the memory back, and wiping would only touch every page.
    freeArray(m_nodes, kFreeNodesLine);
    freeArray(m_edgeCaps, kFreeCapsLine);
    m_nodes = m_nodeLast = m_nodeMax = nullptr;
    m_edgeCaps = m_edgeLast = m_edgeMax = nullptr;
}

void VORNSEGraph::fillNeighbourOffsets() {
    std::fill(m_neighbourOffset, m_neighbourOffset + kSlotsPerNode, 0);
    for (int d = 0; d < direction::kEarlier; ++d) {
        m_neighbourOffset[2 * d + 1] = direction::nodeStep(d, m_width);
    }
    // The last slot of a node leads to the node itself, but headOf counts it to the next one.
    m_neighbourOffset[0] = -1;
}

void VORNSEGraph::clearContents() {
    for (const NumberRange& range : m_ranges) {
        std::fill(m_nodes + range.first, m_nodes + range.last, kFreeNode);
    }
    int first = 0;
    for (const NumberRange& skipped : m_skippedSlots) {
        std::fill(m_edgeCaps + first, m_edgeCaps + skipped.first, 0.0F);
        first = skipped.last;
    }
    std::fill(m_edgeCaps + first, m_edgeCaps + m_edgeCount, 0.0F);
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
    m_skippedSlots.clear();
}

int VORNSEGraph::resetNew() {
    clearContents();
    return 0;
}

void VORNSEGraph::addNode(int count) {
    if (count < 1) {
        return;
    }
    assert(count <= m_nodeMax - m_nodeLast);
    append(m_ranges, m_nodeCount, count);
    std::fill(m_nodeLast, m_nodeLast + count, kFreeNode);
    m_nodeLast += count;
    m_nodeCount += count;
}

void VORNSEGraph::skipNodes(int count) {
    assert(count <= m_nodeMax - m_nodeLast);
    m_nodeLast += count;
    m_nodeCount += count;
}

void VORNSEGraph::skipEdges(int count) {
    const int slots = kSlotsPerNode * count;
    assert(slots <= m_edgeMax - m_edgeLast);
    append(m_skippedSlots, m_edgeCount, slots);
    m_edgeLast += slots;
    m_edgeCount += slots;
}

nodes VORNSEGraph::nodeAt(int node) const {
    return contains(m_ranges, node) ? m_nodes[node] : kFreeNode;
}

float VORNSEGraph::capacityAt(int slot) const {
    return contains(m_skippedSlots, slot) ? kNoEdge : m_edgeCaps[slot];
}

void VORNSEGraph::addToEdge(int from, int to, float cap, float revCap) {
    int slots[kSlotsPerNode];
    outgoingSlots(from, slots);
    for (const int slot : slots) {
        if (slot != kOutside && headOf(slot) == to && capacityAt(slot) != kNoEdge) {
            m_edgeCaps[slot] += cap;
            m_edgeCaps[slot ^ 1] += revCap;
            return;
        }
    }
}

void VORNSEGraph::outgoingSlots(int node, int slots[kSlotsPerNode]) const {
    using namespace direction;
    const int x = node % m_width;
    const bool hasLeft = x != 0;
    const bool hasRight = x != m_width - 1;
    const bool hasUp = node >= m_width;
    const bool hasDown = node < m_width * (m_height - 1);
    const auto slot = [this, node](bool inside, int direction) {
        return inside ? kSlotsPerNode * node + slotStep(direction, m_width) : kOutside;
    };
    slots[kLeft] = slot(hasLeft, kLeft);
    slots[kUpLeft] = slot(hasLeft && hasUp, kUpLeft);
    slots[kUp] = slot(hasUp, kUp);
    slots[kUpRight] = slot(hasUp && hasRight, kUpRight);
    slots[kRight] = slot(hasRight, kRight);
    slots[kDownRight] = slot(hasRight && hasDown, kDownRight);
    slots[kDown] = slot(hasDown, kDown);
    slots[kDownLeft] = slot(hasLeft && hasDown, kDownLeft);
}
