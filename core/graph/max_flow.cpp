// The serial maximum flow. Two search trees, one from the source and one from the sink, grow
// through edges that can carry flow. Where they touch, flow is pushed along the path from root
// to root. Nodes whose parent edge is full afterwards are orphans; a neighbour of their tree
// adopts them, or they are set free (Y. Boykov and V. Kolmogorov, "An Experimental Comparison
// of Min-Cut/Max-Flow Algorithms for Energy Minimization in Vision", IEEE PAMI 26(9), 2004).
// This variant keeps no distance marks: an orphan walks from each candidate parent to the root,
// and takes the nearest.
//
// This file is the plain form, on the graph's own records. Whole graphs are searched in the same
// order by dense/, which is faster; block views are searched here.
//
// Notation: a slot s of node i leads from i to headOf(s); s ^ 1 leads back. In the source tree flow
// runs from parent to child, along the sister of the child's parent edge. In the sink tree it runs
// from child to parent, along the parent edge itself.
//
// The tree labels at the end are a minimum cut, or very nearly. The exception: a node that is
// set free wakes its neighbours, but not those that are orphans themselves. If such an orphan
// then finds another parent, its edge to the free node stays open. That takes paths on which
// several edges fill at once. Grids of a few small whole capacities end up to a thousandth
// above the minimum, photographs hardly ever. The order of the queues and of every scan decides
// which cut is found and how capacities are rounded. So that order is part of the result, and
// so is this exception.
#include <cassert>
#include <limits>

#include "graph/dense/dense_solver.h"
#include "graph/graph.h"
#include "graph/parallel_gc.h"
#include "graph/time_limit.h"
#include "history/marker.h"

namespace {

constexpr int kUnreachable = std::numeric_limits<int>::max();

// Number of edges from the far end of `slot` to the terminal of its tree, counting `slot`;
// kUnreachable when the way ends in an orphan.
int distanceToRoot(const VORNSEGraph& graph, int slot) {
    int distance = 1;
    for (;;) {
        const int edge = graph.m_nodes[graph.headOf(slot)].parentEdge;
        if (edge == parent::kTerminal) {
            return distance;
        }
        if (edge == parent::kNone) {
            return kUnreachable;
        }
        slot = edge;
        ++distance;
    }
}

// The slot whose capacity an orphan of `treeLabel` needs on the way to or from a neighbour: flow
// comes in from a source parent and goes out to a sink parent.
template <int treeLabel>
int flowSlot(int slot) {
    return treeLabel == tree::kSource ? slot ^ 1 : slot;
}

template <int treeLabel>
void processOrphan(VORNSEGraph& graph, nodes* orphan) {
    const int self = static_cast<int>(orphan - graph.m_nodes);
    assert(self >= 0 && self < graph.m_nodeCount && orphan->parentEdge == parent::kNone);
    int slots[kSlotsPerNode];
    graph.outgoingSlots(self, slots);

    const auto inSameTree = [&](int slot) {
        if (slot == kOutside || graph.m_edgeCaps[slot] == kNoEdge) {
            return false;
        }
        const nodes& neighbour = graph.m_nodes[graph.headOf(slot)];
        return neighbour.parentEdge != parent::kNone && neighbour.treeLabel == treeLabel;
    };

    int bestSlot = kOutside;
    int bestDistance = kUnreachable;
    for (const int slot : slots) {
        if (inSameTree(slot) && graph.m_edgeCaps[flowSlot<treeLabel>(slot)] != 0.0F) {
            const int distance = distanceToRoot(graph, slot);
            if (distance < bestDistance) {
                bestDistance = distance;
                bestSlot = slot;
            }
        }
    }
    if (bestSlot != kOutside) {
        orphan->parentEdge = bestSlot;
        return;
    }

    orphan->parentEdge = parent::kNone;
    orphan->treeLabel = tree::kFree;
    for (const int slot : slots) {
        if (!inSameTree(slot)) {
            continue;
        }
        nodes* neighbour = graph.m_nodes + graph.headOf(slot);
        if (graph.m_edgeCaps[flowSlot<treeLabel>(slot)] != 0.0F) {
            graph.AddToActiveQueue(neighbour);
        }
        if (neighbour->parentEdge != parent::kTerminal &&
            graph.headOf(neighbour->parentEdge) == self) {
            graph.AddToOrphanQueue(neighbour);
        }
    }
}

// Grows the tree of `node` by its free neighbours. Returns the slot from the source tree to the
// sink tree as soon as one is met, kOutside when the whole neighbourhood is done.
int growFrom(VORNSEGraph& graph, const nodes* node) {
    const int treeLabel = node->treeLabel;
    if (treeLabel == tree::kFree) {
        return kOutside;
    }
    int slots[kSlotsPerNode];
    graph.outgoingSlots(static_cast<int>(node - graph.m_nodes), slots);
    for (const int slot : slots) {
        if (slot == kOutside) {
            continue;
        }
        const int forward = treeLabel == tree::kSource ? slot : slot ^ 1;
        const float capacity = graph.m_edgeCaps[forward];
        if (capacity == kNoEdge || capacity == 0.0F) {
            continue;
        }
        nodes* neighbour = graph.m_nodes + graph.headOf(slot);
        if (neighbour->treeLabel == tree::kFree) {
            neighbour->treeLabel = treeLabel;
            neighbour->parentEdge = slot ^ 1;
            graph.AddToActiveQueue(neighbour);
        } else if (neighbour->treeLabel != treeLabel) {
            return forward;
        }
    }
    return kOutside;
}

}  // namespace

float VORNSEGraph::maxFlow() {
    if (m_numThreads > 1) {
        ParallelGC solver(this, m_numThreads);
        return solver.maxFlow();
    }
    maxflowInit();
    return maxFlowSerialCall();
}

void VORNSEGraph::startFromTerminal(nodes* node) {
    if (node->residualTerminalCap > 0.0F) {
        node->parentEdge = parent::kTerminal;
        node->treeLabel = tree::kSource;
        AddToActiveQueue(node);
    } else if (node->residualTerminalCap < 0.0F) {
        node->parentEdge = parent::kTerminal;
        node->treeLabel = tree::kSink;
        AddToActiveQueue(node);
    } else {
        // Zero, or infinite minus infinite: no preference.
        node->parentEdge = parent::kNone;
        node->treeLabel = tree::kFree;
    }
}

void VORNSEGraph::maxflowInit() {
    for (const NumberRange& range : m_ranges) {
        for (int node = range.first; node < range.last; ++node) {
            startFromTerminal(m_nodes + node);
        }
    }
}

void VORNSEGraph::InitBlock() {
    m_flow = 0.0F;
    m_activeHead = m_activeTail = nullptr;
    m_orphanHead = m_orphanTail = nullptr;
    const int firstRow = m_blockRow * m_blockHeight;
    const int firstColumn = m_blockCol * m_blockWidth;
    for (int y = firstRow; y < firstRow + m_blockHeight; ++y) {
        for (int x = firstColumn; x < firstColumn + m_blockWidth && x < m_width; ++x) {
            const int node = y * m_width + x;
            if (node < m_nodeCount) {
                startFromTerminal(m_nodes + node);
            }
        }
    }
}

float VORNSEGraph::maxFlowSerialCall() {
    if (VORNSEMarker::m_exitApp) {
        return m_flow;
    }
    if (!m_isView && m_orphanHead == nullptr) {
        DenseSolver solver(*this);
        if (solver.canSolve() && solver.run()) {
            return m_flow;
        }
    }
    return searchRecords();
}

float VORNSEGraph::searchRecords() {
    TimeLimit limit;
    while (nodes* node = GetTopActiveQueueNode()) {
        node->nextActive = nullptr;
        for (;;) {
            const int path = growFrom(*this, node);
            if (path != kOutside) {
                // Linked to itself, the node cannot be queued while its orphans are adopted: it is
                // scanned again right after.
                node->nextActive = node;
                AugmentPath(path);
                while (!VORNSEMarker::m_exitApp) {
                    nodes* orphan = GetTopOrphanQueueNode();
                    if (orphan == nullptr) {
                        break;
                    }
                    if (orphan->treeLabel == tree::kSink) {
                        ProcessSinkOrphans(orphan);
                    } else {
                        ProcessSourceOrphans(orphan);
                    }
                }
                node->nextActive = nullptr;
            }
            if (limit.mustStop()) {
                return m_flow;
            }
            if (path == kOutside) {
                break;
            }
        }
    }
    return m_flow;
}

void VORNSEGraph::AugmentPath(int slot) {
    assert(slot >= 0 && slot < m_edgeCount);
    float bottleneck = m_edgeCaps[slot];
    const auto narrow = [&bottleneck](float capacity) {
        if (capacity < bottleneck) {
            bottleneck = capacity;
        }
    };
    nodes* const sinkEnd = m_nodes + headOf(slot);
    nodes* const sourceEnd = m_nodes + headOf(slot ^ 1);

    nodes* node = sinkEnd;
    for (; node->parentEdge != parent::kTerminal; node = m_nodes + headOf(node->parentEdge)) {
        narrow(m_edgeCaps[node->parentEdge]);
    }
    narrow(-node->residualTerminalCap);
    for (node = sourceEnd; node->parentEdge != parent::kTerminal;
         node = m_nodes + headOf(node->parentEdge)) {
        narrow(m_edgeCaps[node->parentEdge ^ 1]);
    }
    narrow(node->residualTerminalCap);

    m_edgeCaps[slot] -= bottleneck;
    m_edgeCaps[slot ^ 1] += bottleneck;

    // Orphans are queued from the meeting point to the root, the sink side first.
    node = sinkEnd;
    while (node->parentEdge != parent::kTerminal) {
        const int edge = node->parentEdge;
        m_edgeCaps[edge] -= bottleneck;
        m_edgeCaps[edge ^ 1] += bottleneck;
        if (m_edgeCaps[edge] == 0.0F) {
            AddToOrphanQueue(node);
        }
        node = m_nodes + headOf(edge);
    }
    node->residualTerminalCap += bottleneck;
    if (node->residualTerminalCap == 0.0F) {
        AddToOrphanQueue(node);
    }

    node = sourceEnd;
    while (node->parentEdge != parent::kTerminal) {
        const int edge = node->parentEdge;
        m_edgeCaps[edge ^ 1] -= bottleneck;
        m_edgeCaps[edge] += bottleneck;
        if (m_edgeCaps[edge ^ 1] == 0.0F) {
            AddToOrphanQueue(node);
        }
        node = m_nodes + headOf(edge);
    }
    node->residualTerminalCap -= bottleneck;
    if (node->residualTerminalCap == 0.0F) {
        AddToOrphanQueue(node);
    }
    m_flow += bottleneck;
}

void VORNSEGraph::ProcessSourceOrphans(nodes* orphan) {
    processOrphan<tree::kSource>(*this, orphan);
}

void VORNSEGraph::ProcessSinkOrphans(nodes* orphan) {
    processOrphan<tree::kSink>(*this, orphan);
}

void VORNSEGraph::AddToActiveQueue(nodes* node) {
    if (node->nextActive != nullptr) {
        return;
    }
    node->nextActive = node;
    if (m_activeTail != nullptr) {
        m_activeTail->nextActive = node;
    } else {
        m_activeHead = node;
    }
    m_activeTail = node;
}

nodes* VORNSEGraph::GetTopActiveQueueNode() {
    nodes* node = m_activeHead;
    if (node != nullptr) {
        if (node == m_activeTail) {
            m_activeHead = m_activeTail = nullptr;
        } else {
            m_activeHead = node->nextActive;
        }
    }
    return node;
}

void VORNSEGraph::AddToOrphanQueue(nodes* node) {
    node->parentEdge = parent::kNone;
    if (node->nextOrphan != nullptr) {
        return;
    }
    node->nextOrphan = node;
    if (m_orphanTail != nullptr) {
        m_orphanTail->nextOrphan = node;
    } else {
        m_orphanHead = node;
    }
    m_orphanTail = node;
}

nodes* VORNSEGraph::GetTopOrphanQueueNode() {
    nodes* node = m_orphanHead;
    if (node != nullptr) {
        if (node == m_orphanTail) {
            m_orphanHead = m_orphanTail = nullptr;
        } else {
            m_orphanHead = node->nextOrphan;
        }
        node->nextOrphan = nullptr;
    }
    return node;
}
