// ParallelGC: the maximum flow of one VORNSEGraph on several threads. The grid is cut into one
// block for each thread, and the edges between blocks are taken out. Every block is solved by
// itself. Then blocks are merged in pairs, by putting their edges back and going on with the
// search, until one remains. All trees live in the graph's own node array, so the cut is read from
// the graph. ComputeGMMProbsParallely sets terminal weights over the same blocks.
//
// Conventions: blocks are numbered row by row, block = row * m_blocksX + column. Blocks at the
// right and at the bottom may reach over the edge of the grid or lie outside it altogether.
//
// Threads: construction, maxFlow and ComputeGMMProbsParallely belong to one thread, which waits for
// the workers that it starts. The other members are the workers' steps. No node or edge array is
// copied.
#pragma once

#include <semaphore.h>

#include <atomic>
#include <vector>

#include "graph/block_view.h"
#include "graph/graph.h"
#include "support/export.h"

class ParallelGC;
class ThreadBatch;
class VORNSEColorModel;
namespace cv {
class Mat;
}

// An edge pair that is taken out of the graph: its slots and what they held.
struct cutEdge {
    int slot;
    int sisterSlot;
    float cap;
    float sisterCap;
    cutEdge* next;
};

// The edges between two blocks, the newest first.
struct blockEdges {
    int blockA;  // the block that registered the pair
    int blockB;
    cutEdge* head;
};

// What a numbering, partition or merge thread works on.
struct blockThread {
    ParallelGC* solver;
    int thread;
    int first;  // row and column, or the two blocks of a merge
    int second;
};

struct blockSolveThread {
    ParallelGC* solver;
    int block;
};

class SEGCORE_API ParallelGC {
  public:
    // Plans `count` blocks (1 to 1024, values outside are brought inside) over the graph, whose
    // nodes and edges have been added and which must outlive the solver. Throws std::bad_alloc.
    ParallelGC(VORNSEGraph* graph, int count);
    ~ParallelGC();
    ParallelGC(const ParallelGC&) = delete;
    ParallelGC& operator=(const ParallelGC&) = delete;

    // Leaves a minimum cut in the graph's tree labels; run once. Returns 0, not the flow. A cancel
    // or the time limit ends it early, as in the serial solver. Equal graphs and counts give equal
    // labels: nothing depends on how the threads are scheduled. Throws std::bad_alloc, with every
    // edge back in the graph.
    float maxFlow();

    // Writes the block's number into the tree labels along its boundary.
    void AssignIDs(int row, int col);
    // Takes out the edges between the block and those to its right and below. All blocks have been
    // numbered.
    void PartitionGraph(int row, int col);
    // Takes out the edges from `node` into the other block of its pair and returns their number.
    int RemoveAndStoreEdges(nodes* node, blockEdges* pair);
    // Puts the edges between two blocks back and queues their ends on the view of the lower
    // numbered block, which is returned and whose search now covers both.
    int MergeBlocks(int a, int b);
    // After a merge: the pairs of the higher numbered block become those of the lower. Where both
    // had a pair with the same block, the lower block's pair takes the edges of both; if it has no
    // edges of its own, the others are lost.
    void MakeNeighbourChanges(int a, int b);

    // Terminal weights of every pixel of `graph` from two colour models, one thread per block.
    // `image`: 8-bit, 3 channels, contiguous; `labels`: 8-bit, 1 channel; both of the graph's size.
    // A pixel labelled `sourceCode` is tied to the source with `hardWeight`, one labelled
    // `sinkCode` to the sink, the others get -ln of the second model's density as source capacity
    // and -ln of the first's as sink capacity. A density of 0 gives an infinite capacity. The
    // models are prepared (setInverseCovariance). Unfitting arguments change nothing and log one
    // line. Throws std::bad_alloc.
    void ComputeGMMProbsParallely(cv::Mat* image, cv::Mat* labels, double hardWeight, int sinkCode,
                                  int sourceCode, VORNSEColorModel* first, VORNSEColorModel* second,
                                  VORNSEGraph* graph);
    // The same for one block; the arguments are not checked.
    void ComputeGMMProbs(int row, int col, cv::Mat* image, cv::Mat* labels, double hardWeight,
                         int sinkCode, int sourceCode, VORNSEColorModel* first,
                         VORNSEColorModel* second, VORNSEGraph* graph);

    VORNSEGraph* m_wholeGraph;  // not owned
    int m_numBlocks;
    std::vector<BlockViewPtr> m_blockGraphs;
    // Symmetric, the record of both blocks' common edges or null.
    std::vector<std::vector<blockEdges*>> m_pairMatrix;
    std::vector<unsigned char> m_blockBusy;  // 1 = taken by a merge of the current pass
    nodes* m_nodes;
    float* m_edgeCaps;
    int m_nodeCount;
    int m_edgeCount;
    int m_width;
    int m_height;
    int m_blocksX;
    int m_blocksY;
    int m_blockWidth;  // in nodes
    int m_blockHeight;
    sem_t m_pairLock;                     // guards m_pairList while blocks are partitioned
    std::vector<blockEdges*> m_pairList;  // the live records, owned

  private:
    void chooseBlockGrid();
    blockEdges*& pairOf(int a, int b);
    void registerPair(int block, int other, int firstX, int firstY, int lastX, int lastY);
    void forgetPair(blockEdges* pair);
    void putBackAllEdges();
    bool blocksAreApart() const;
    void mergeAllBlocks(std::vector<blockThread>& tasks, ThreadBatch& threads);
    void closeSinkTree();

    std::atomic<bool> m_storeFailed{false};  // a worker had no memory to take out an edge
};

struct GMMProbsThread {
    ParallelGC* solver;
    int thread;
    int row;
    int col;
    cv::Mat* image;
    cv::Mat* labels;
    double hardWeight;
    int sinkCode;
    int sourceCode;
    VORNSEColorModel* first;
    VORNSEColorModel* second;
    VORNSEGraph* graph;
};

// Thread bodies; each takes the address of its record above and ends its thread, so none may be
// called on a thread that is to live on.
SEGCORE_API void* ThreadAssignBlockIDs(void* argument);
SEGCORE_API void* ThreadPartition(void* argument);
SEGCORE_API void* ThreadMaxFlow(void* argument);
SEGCORE_API void* ThreadMerge(void* argument);
SEGCORE_API void* ThreadComputeGMMProbs(void* argument);
