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
// so the sister of slot s is s XOR 1, and head and sister need no pointers: an edge costs four
// bytes. A slot that holds -2.0 has no edge.
//
// Building: addNode(width * height) once, then addEdge exactly four times per node in node order
// for the left, up-left, up and up-right neighbours, addtWeights per node, then maxFlow, then
// getTreeofNode per node. No argument is checked: node numbers beyond the grid and negative
// capacities are the caller's fault. Only addEdge's `absent` makes a slot without an edge.
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

// Consecutive node numbers, `last` excluded.
struct NodeRange {
    int first;
    int last;
};

class SEGCORE_API VORNSEGraph {
  public:
    // Allocates nodeCount node records and 2 * edgeCount capacities (at least 16 of each count).
    // Without memory m_nodes or m_edgeCaps is null, which the owner must test. numThreads above 1
    // selects the block solver.
    VORNSEGraph(int nodeCount, int edgeCount, int width, int height, int numThreads);
    // A block of `parent` for the block solver: shares the parent's arrays and owns nothing. Block
    // position and size are in blocks and nodes.
    VORNSEGraph(VORNSEGraph* parent, int blockRow, int blockCol, int blockWidth, int blockHeight);
    // Releases the arrays; only ever run on graphs of the first constructor.
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
    // Numbers `count` nodes that take no part, and passes over the slots of `count` nodes. Neither
    // is written, so a graph that covers little of its grid costs memory for that little only; such
    // nodes read as cut to the source side.
    void skipNodes(int count);
    void skipEdges(int count);
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

    // First-in-first-out queues through the node records. The active pop leaves the node's link as
    // it was (the caller clears it), the orphan pop clears it; adding an orphan takes its parent.
    void AddToActiveQueue(nodes* node);
    nodes* GetTopActiveQueueNode();
    void AddToOrphanQueue(nodes* node);
    nodes* GetTopOrphanQueueNode();

    // The node ranges that take part, in ascending order.
    const std::vector<NodeRange>& ranges() const { return m_ranges; }

    // The node that a slot leads to.
    int headOf(int slot) const {
        const auto next = static_cast<unsigned>(slot + 1);  // unsigned division is a shift
        return m_neighbourOffset[next % kSlotsPerNode] + static_cast<int>(next / kSlotsPerNode);
    }
    // The node's outgoing slots in scan order (left, up-left, up, up-right, right, down-right,
    // down, down-left), kOutside where the direction leaves the image.
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

    std::vector<NodeRange> m_ranges;
};
