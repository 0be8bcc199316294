// VORNSEGraph: the s-t graph of a pixel grid and its maximum flow. The source is the object, the
// sink the background.
//
// Nodes are numbered row by row, node = y * width + x. Node j owns eight capacity slots, the pairs
// between it and its four earlier neighbours:
//
//     8j+0 left     j -> j-1          8j+1  and back
//     8j+2 up-left  j -> j-width-1    8j+3  and back
//     8j+4 up       j -> j-width      8j+5  and back
//     8j+6 up-right j -> j-width+1    8j+7  and back
//
// The sister of slot s, which leads back, is s XOR 1. Heads and sisters are computed, so an edge
// costs only the four bytes of its capacity. A slot that holds -2.0 has no edge.
//
// Building: addNode(width * height) once, then addEdge exactly four times for each node in
// node order, for its left, up-left, up and up-right neighbours, and addtWeights for each
// node. Then maxFlow, and getTreeofNode for each node. No argument is checked: node numbers
// beyond the grid and negative capacities are the caller's fault. Only addEdge's `absent`
// makes a slot without an edge.
//
// Threads: one graph is built and solved by one thread; VORNSEMarker::m_exitApp may stop a running
// maxFlow from another.
#pragma once

#include <vector>

#include "support/export.h"

// A pixel of the grid. Queue links are intrusive: null = not queued, and the last node of a queue
// points to itself.
struct nodes {
    int parentEdge;  // slot towards the parent in the search tree, or one of the values below
    int treeLabel;   // tree::kSource, kSink or kFree
    float residualTerminalCap;  // > 0 from the source, < 0 (negated) to the sink
    nodes* nextActive;
    nodes* nextOrphan;
};

namespace parent {
constexpr int kTerminal = -1;
constexpr int kNone = -3;
}  // namespace parent

namespace tree {
constexpr int kSource = 0;
constexpr int kSink = 1;
constexpr int kFree = 2;
}  // namespace tree

constexpr float kNoEdge = -2.0F;
constexpr int kSlotsPerNode = 8;
// Marks a direction that leaves the image in a node's list of outgoing slots.
constexpr int kOutside = -2;

// Consecutive numbers, `last` excluded.
struct NumberRange {
    int first;
    int last;
};

class SEGCORE_API VORNSEGraph {
  public:
    // Allocates nodeCount node records and 2 * edgeCount capacities (at least 16 of each count).
    // Without memory m_nodes or m_edgeCaps is null, which the owner must test. numThreads above 1
    // selects the block solver.
    VORNSEGraph(int nodeCount, int edgeCount, int width, int height, int numThreads);
    // A view of one block of `parent`, for the block solver. It shares the parent's arrays and has
    // counts, flow and queues of its own; only InitBlock looks at the block. The position is in
    // blocks, the size in nodes.
    VORNSEGraph(VORNSEGraph* parent, int blockRow, int blockCol, int blockWidth, int blockHeight);
    // Releases the arrays, which a view leaves to its parent.
    ~VORNSEGraph();
    VORNSEGraph(const VORNSEGraph&) = delete;
    VORNSEGraph& operator=(const VORNSEGraph&) = delete;

    // Back to an empty graph of the same capacity.
    void reset();
    // Clears nodes, capacities, flow and queues but keeps the counts, so that the graph can be
    // refilled with addToEdge and addtWeights. Returns 0.
    int resetNew();

    // Adds `count` free nodes; below 1 does nothing.
    void addNode(int count);
    // Writes the next pair of slots; the node numbers are not used, the position is the edge.
    SEGCORE_INLINE_API void addEdge(int from, int to, float cap, float revCap, bool absent) {
        static_cast<void>(from);
        static_cast<void>(to);
        m_edgeLast[0] = absent ? kNoEdge : cap;
        m_edgeLast[1] = absent ? kNoEdge : revCap;
        m_edgeLast += 2;
        m_edgeCount = static_cast<int>(m_edgeLast - m_edgeCaps);
    }
    // In the place of addNode and addEdge for `count` nodes that take no part. Their records and
    // slots are not written, so that a graph which covers little of its grid costs little memory.
    void skipNodes(int count);
    void skipEdges(int count);
    // A node's record, and a slot's capacity. What was skipped holds zeros in the arrays; here it
    // reads as what it means: a free node, and kNoEdge.
    nodes nodeAt(int node) const;
    float capacityAt(int slot) const;
    // Adds to an existing edge between two neighbours; anything else changes nothing.
    void addToEdge(int from, int to, float cap, float revCap);
    // Adds terminal capacities; what source and sink have in common flows at once.
    SEGCORE_INLINE_API void addtWeights(int node, float capSource, float capSink) {
        float& residual = m_nodes[node].residualTerminalCap;
        if (residual > 0.0F) {
            capSource += residual;
        } else {
            capSink -= residual;
        }
        m_flow += capSource < capSink ? capSource : capSink;
        residual = capSource - capSink;
    }
    // 1 when the node is cut to the sink side, else 0 (free nodes included).
    SEGCORE_INLINE_API int getTreeofNode(int node) const {
        return m_nodes[node].treeLabel == tree::kSink ? 1 : 0;
    }

    // Computes the maximum flow and leaves the cut in the tree labels. Ends early, with a partial
    // flow, when VORNSEMarker::m_exitApp is set or g_cancelTimer passes 10000 ms (which sets the
    // flag). The serial solver returns the flow, the block solver 0. Throws std::bad_alloc without
    // memory; capacities then may not add up, and the graph has to be built anew.
    float maxFlow();

    // The serial solver's steps, public for the block solver.
    void maxflowInit();
    float maxFlowSerialCall();
    // Pushes the bottleneck of the path through `slot`, which runs from a source-tree node to a
    // sink-tree node, and queues the nodes that lose their parent.
    void AugmentPath(int slot);
    void ProcessSourceOrphans(nodes* orphan);
    void ProcessSinkOrphans(nodes* orphan);
    // maxflowInit for the nodes of this block view.
    void InitBlock();

    // First-in-first-out queues through the node records. Taking a node from the active queue
    // leaves its link as it was, for the caller to clear; taking an orphan clears it. A node that
    // is added to the orphans loses its parent.
    void AddToActiveQueue(nodes* node);
    nodes* GetTopActiveQueueNode();
    void AddToOrphanQueue(nodes* node);
    nodes* GetTopOrphanQueueNode();

    // The nodes that take part, in ascending order.
    const std::vector<NumberRange>& ranges() const { return m_ranges; }

    // The node that a slot leads to.
    int headOf(int slot) const {
        const auto next = static_cast<unsigned>(slot + 1);  // unsigned division is a shift
        return m_neighbourOffset[next % kSlotsPerNode] + static_cast<int>(next / kSlotsPerNode);
    }
    // The node's outgoing slots by direction (grid_directions.h), kOutside where the direction
    // leaves the image.
    void outgoingSlots(int node, int slots[kSlotsPerNode]) const;

    int m_nodeCount;  // nodes added so far
    int m_edgeCount;  // slots written so far
    nodes* m_nodes;
    nodes* m_nodeLast;  // next to hand out
    nodes* m_nodeMax;
    float* m_edgeCaps;
    float* m_edgeLast;  // next to write
    float* m_edgeMax;
    float m_flow;
    nodes* m_activeHead;
    nodes* m_activeTail;
    nodes* m_orphanHead;
    nodes* m_orphanTail;
    int m_neighbourOffset[kSlotsPerNode];
    int m_numThreads;
    int m_blockWidth;  // these four in block views only
    int m_blockHeight;
    int m_blockRow;
    int m_blockCol;
    int m_width;
    int m_height;

  private:
    void clearContents();
    void fillNeighbourOffsets();
    void startFromTerminal(nodes* node);
    float searchRecords();

    const bool m_isView;
    std::vector<NumberRange> m_ranges;
    std::vector<NumberRange> m_skippedSlots;
};
