// Block-parallel maximum flow: blocks are solved by themselves and then merged, each merge going on
// from the search trees of its two blocks (J. Liu and J. Sun, "Parallel Graph-cuts by Adaptive
// Bottom-up Merging", CVPR 2010).
//
// Notation: a pair is two blocks that had edges between them. Its record keeps those edges while
// the blocks are apart. A merged block goes under the lower of the two numbers.
//
// From the partition to the last merge, unless a step is called by itself:
//
//  1. An edge between two unmerged blocks is out of the graph and in exactly one listed record. So
//     a search never leaves its block, and threads never meet.
//  2. A listed record has at least one edge, until its blocks are merged.
//  3. After a block's search no active node is left, unless it was cancelled. So the edges that a
//     merge puts back disturb the trees at their own ends only.
#include "graph/parallel_gc.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <iterator>
#include <new>

#include "history/marker.h"
#include "support/thread_batch.h"

namespace {

// The pair matrix is quadratic in the blocks, and no device runs more threads to an advantage.
constexpr int kMostBlocks = 1024;
// A block registers itself with its neighbours up-right, right, down-right and below.
constexpr std::size_t kPairsPerBlock = 4;

int ceilDiv(int a, int b) {
    return (a + b - 1) / b;
}

void putBack(const cutEdge& edge, float* capacities) {
    capacities[edge.slot] = edge.cap;
    capacities[edge.sisterSlot] = edge.sisterCap;
}

void deleteEdges(blockEdges* pair) {
    while (pair->head != nullptr) {
        const cutEdge* edge = pair->head;
        pair->head = edge->next;
        delete edge;
    }
}

// Whether flow could still enter the sink tree at `node` from outside the tree.
bool isOpenSinkEnd(const VORNSEGraph& graph, int node) {
    if (graph.m_nodes[node].treeLabel != tree::kSink) {
        return false;
    }
    int slots[kSlotsPerNode];
    graph.outgoingSlots(node, slots);
    return std::any_of(std::begin(slots), std::end(slots), [&graph](int slot) {
        return slot != kOutside && graph.m_edgeCaps[slot ^ 1] != 0.0F &&
               graph.m_edgeCaps[slot ^ 1] != kNoEdge &&
               graph.m_nodes[graph.headOf(slot)].treeLabel != tree::kSink;
    });
}

void assignBlockIDs(void* argument) {
    const auto& task = *static_cast<blockThread*>(argument);
    task.solver->AssignIDs(task.first, task.second);
}

void partitionBlock(void* argument) {
    const auto& task = *static_cast<blockThread*>(argument);
    task.solver->PartitionGraph(task.first, task.second);
}

void solveBlock(void* argument) {
    const auto& task = *static_cast<blockSolveThread*>(argument);
    task.solver->m_blockGraphs[static_cast<std::size_t>(task.block)]->maxFlowSerialCall();
}

void mergeAndSolve(void* argument) {
    const auto& task = *static_cast<blockThread*>(argument);
    const int merged = task.solver->MergeBlocks(task.first, task.second);
    task.solver->m_blockGraphs[static_cast<std::size_t>(merged)]->maxFlowSerialCall();
}

}  // namespace

void* ThreadAssignBlockIDs(void* argument) {
    assignBlockIDs(argument);
    pthread_exit(nullptr);
}

void* ThreadPartition(void* argument) {
    partitionBlock(argument);
    pthread_exit(nullptr);
}

void* ThreadMaxFlow(void* argument) {
    solveBlock(argument);
    pthread_exit(nullptr);
}

void* ThreadMerge(void* argument) {
    mergeAndSolve(argument);
    pthread_exit(nullptr);
}

ParallelGC::ParallelGC(VORNSEGraph* graph, int count)
    : m_wholeGraph(graph),
      m_numBlocks(std::clamp(count, 1, kMostBlocks)),
      m_pairMatrix(static_cast<std::size_t>(m_numBlocks),
                   std::vector<blockEdges*>(static_cast<std::size_t>(m_numBlocks))),
      m_blockBusy(static_cast<std::size_t>(m_numBlocks)),
      m_nodes(graph->m_nodes),
      m_edgeCaps(graph->m_edgeCaps),
      m_nodeCount(graph->m_nodeCount),
      m_edgeCount(graph->m_edgeCount),
      m_width(graph->m_width),
      m_height(graph->m_height) {
    chooseBlockGrid();
    m_blockWidth = ceilDiv(m_width, m_blocksX);
    m_blockHeight = ceilDiv(m_height, m_blocksY);
    for (int row = 0; row < m_blocksY; ++row) {
        for (int col = 0; col < m_blocksX; ++col) {
            m_blockGraphs.push_back(createBlockView(graph, row, col, m_blockWidth, m_blockHeight));
        }
    }
    // Workers append to the list and must not run out of memory there.
    m_pairList.reserve(kPairsPerBlock * static_cast<std::size_t>(m_numBlocks));
    sem_init(&m_pairLock, 0, 1);
}

ParallelGC::~ParallelGC() {
    sem_destroy(&m_pairLock);
    for (blockEdges* pair : m_pairList) {
        deleteEdges(pair);
        delete pair;
    }
}

// The number of columns is a divisor of the count near its root. So the grid is about square and
// not taller than wide, except that a prime above three makes one column.
void ParallelGC::chooseBlockGrid() {
    int columns = static_cast<int>(std::ceil(std::sqrt(static_cast<float>(m_numBlocks)))) + 1;
    while (columns < m_numBlocks && m_numBlocks % columns == 0) {
        ++columns;
    }
    while (m_numBlocks % columns != 0) {
        --columns;
    }
    m_blocksX = columns;
    m_blocksY = m_numBlocks / columns;
}

float ParallelGC::maxFlow() {
    const auto blocks = static_cast<std::size_t>(m_numBlocks);
    std::vector<blockThread> tasks(blocks);
    std::vector<blockSolveThread> solves(blocks);
    ThreadBatch threads(m_numBlocks);
    const auto runOnBlocks = [&](void* (*entry)(void*), void (*work)(void*)) {
        for (int block = 0; block < m_numBlocks; ++block) {
            blockThread& task = tasks[static_cast<std::size_t>(block)];
            task = {this, block, block / m_blocksX, block % m_blocksX};
            threads.start(entry, work, &task);
        }
        threads.join();
    };

    putBackAllEdges();
    runOnBlocks(ThreadAssignBlockIDs, assignBlockIDs);
    runOnBlocks(ThreadPartition, partitionBlock);
    if (m_storeFailed) {
        putBackAllEdges();
        throw std::bad_alloc();
    }
    assert(blocksAreApart());
    // Threads register their pairs as they come. Sorted as if they had run one after another, the
    // pairs are merged in the same order every time, and the cut is the same.
    std::stable_sort(
        m_pairList.begin(), m_pairList.end(),
        [](const blockEdges* a, const blockEdges* b) { return a->blockA < b->blockA; });

    for (int block = 0; block < m_numBlocks; ++block) {
        const auto b = static_cast<std::size_t>(block);
        m_blockGraphs[b]->InitBlock();
        solves[b] = {this, block};
        threads.start(ThreadMaxFlow, solveBlock, &solves[b]);
    }
    threads.join();
    mergeAllBlocks(tasks, threads);
    closeSinkTree();
    return 0.0F;
}

void ParallelGC::mergeAllBlocks(std::vector<blockThread>& tasks, ThreadBatch& threads) {
    int remaining = m_numBlocks;
    while (remaining > 1) {
        int merges = 0;
        for (const blockEdges* pair : m_pairList) {
            unsigned char& busyA = m_blockBusy[static_cast<std::size_t>(pair->blockA)];
            unsigned char& busyB = m_blockBusy[static_cast<std::size_t>(pair->blockB)];
            if (busyA != 0 || busyB != 0) {
                continue;
            }
            busyA = busyB = 1;
            blockThread& task = tasks[static_cast<std::size_t>(merges)];
            task = {this, merges, pair->blockA, pair->blockB};
            threads.start(ThreadMerge, mergeAndSolve, &task);
            ++merges;
        }
        threads.join();
        if (merges == 0) {
            // The blocks that remain lie beyond the grid, or nothing connects them.
            break;
        }
        for (int i = 0; i < merges; ++i) {
            const blockThread& task = tasks[static_cast<std::size_t>(i)];
            MakeNeighbourChanges(task.first, task.second);
        }
        remaining -= merges;
        std::fill(m_blockBusy.begin(), m_blockBusy.end(), static_cast<unsigned char>(0));
    }
    assert(m_pairList.empty());
}

// Invariant 1, for an assertion.
bool ParallelGC::blocksAreApart() const {
    const auto blockOf = [this](int node) {
        return node / m_width / m_blockHeight * m_blocksX + node % m_width / m_blockWidth;
    };
    for (const NumberRange& range : m_wholeGraph->ranges()) {
        for (int node = range.first; node < range.last; ++node) {
            int slots[kSlotsPerNode];
            m_wholeGraph->outgoingSlots(node, slots);
            for (const int slot : slots) {
                if (slot != kOutside && m_edgeCaps[slot] != kNoEdge &&
                    blockOf(m_wholeGraph->headOf(slot)) != blockOf(node)) {
                    return false;
                }
            }
        }
    }
    return true;
}

// The search may leave an edge into the sink tree open (see max_flow.cpp), more often so when it
// goes on from merged trees. It is continued from the sink ends of such edges until there are none;
// then the cut is a minimum one.
void ParallelGC::closeSinkTree() {
    VORNSEGraph& view = *m_blockGraphs.front();
    while (!VORNSEMarker::m_exitApp) {
        for (const NumberRange& range : m_wholeGraph->ranges()) {
            for (int node = range.first; node < range.last; ++node) {
                if (isOpenSinkEnd(*m_wholeGraph, node)) {
                    view.AddToActiveQueue(m_nodes + node);
                }
            }
        }
        if (view.m_activeHead == nullptr) {
            return;
        }
        view.maxFlowSerialCall();
    }
}

void ParallelGC::AssignIDs(int row, int col) {
    const int id = col + m_blocksX * row;
    const int left = col * m_blockWidth;
    const int top = row * m_blockHeight;
    const int right = left + m_blockWidth - 1;
    const int bottom = top + m_blockHeight - 1;
    const auto mark = [&](int x, int y) {
        if (x < m_width && y < m_height && y * m_width + x < m_nodeCount) {
            m_nodes[y * m_width + x].treeLabel = id;
        }
    };
    for (int x = left; x <= right; ++x) {
        mark(x, top);
        mark(x, bottom);
    }
    for (int y = top; y <= bottom; ++y) {
        mark(left, y);
        mark(right, y);
    }
}

void ParallelGC::PartitionGraph(int row, int col) {
    const int block = col + m_blocksX * row;
    const int left = col * m_blockWidth;
    const int top = row * m_blockHeight;
    const int right = left + m_blockWidth - 1;
    const int bottom = top + m_blockHeight - 1;
    const bool hasBelow = row <= m_blocksY - 2;
    if (col <= m_blocksX - 2) {
        if (row >= 1) {
            registerPair(block, block - m_blocksX + 1, right, top, right, top);
        }
        registerPair(block, block + 1, right, top, right, bottom);
        if (hasBelow) {
            registerPair(block, block + m_blocksX + 1, right, bottom, right, bottom);
        }
    }
    if (hasBelow) {
        registerPair(block, block + m_blocksX, left, bottom, right, bottom);
    }
}

// Takes out the edges from the given row or column of `block` into `other`, and lists the pair when
// there are any.
void ParallelGC::registerPair(int block, int other, int firstX, int firstY, int lastX, int lastY) {
    auto* pair = new (std::nothrow) blockEdges{block, other, nullptr};
    if (pair == nullptr) {
        m_storeFailed = true;
        return;
    }
    int removed = 0;
    // A boundary beyond the grid's edge would wrap into the next row.
    for (int y = firstY; y <= std::min(lastY, m_height - 1); ++y) {
        for (int x = firstX; x <= std::min(lastX, m_width - 1); ++x) {
            const int node = y * m_width + x;
            if (node < m_nodeCount) {
                removed += RemoveAndStoreEdges(m_nodes + node, pair);
            }
        }
    }
    if (removed == 0) {
        delete pair;
        pair = nullptr;
    }
    pairOf(block, other) = pairOf(other, block) = pair;
    if (pair != nullptr) {
        sem_wait(&m_pairLock);
        m_pairList.push_back(pair);
        sem_post(&m_pairLock);
    }
}

// Inner nodes of a block still carry the label of a search tree, which may look like the other
// block's number. Their edges are then taken out as well, and come back with the rest.
int ParallelGC::RemoveAndStoreEdges(nodes* node, blockEdges* pair) {
    int slots[kSlotsPerNode];
    m_wholeGraph->outgoingSlots(static_cast<int>(node - m_nodes), slots);
    int removed = 0;
    for (const int slot : slots) {
        // The head comes first: the capacities towards a third block belong to another thread.
        if (slot == kOutside || m_nodes[m_wholeGraph->headOf(slot)].treeLabel != pair->blockB ||
            m_edgeCaps[slot] == kNoEdge) {
            continue;
        }
        const int sister = slot ^ 1;
        auto* edge = new (std::nothrow)
            cutEdge{slot, sister, m_edgeCaps[slot], m_edgeCaps[sister], pair->head};
        if (edge == nullptr) {
            m_storeFailed = true;
            continue;
        }
        pair->head = edge;
        m_edgeCaps[slot] = m_edgeCaps[sister] = kNoEdge;
        ++removed;
    }
    return removed;
}

int ParallelGC::MergeBlocks(int a, int b) {
    const int lo = std::min(a, b);
    VORNSEGraph& view = *m_blockGraphs[static_cast<std::size_t>(lo)];
    assert(view.m_activeHead == nullptr || VORNSEMarker::m_exitApp);
    view.m_activeHead = view.m_activeTail = nullptr;
    view.m_orphanHead = view.m_orphanTail = nullptr;
    view.m_flow = 0.0F;
    blockEdges* pair = pairOf(a, b);
    if (pair == nullptr) {
        return lo;
    }
    for (const cutEdge* edge = pair->head; edge != nullptr; edge = edge->next) {
        putBack(*edge, m_edgeCaps);
        view.AddToActiveQueue(m_nodes + view.headOf(edge->sisterSlot));
        view.AddToActiveQueue(m_nodes + view.headOf(edge->slot));
    }
    deleteEdges(pair);
    return lo;
}

void ParallelGC::MakeNeighbourChanges(int a, int b) {
    const int lo = std::min(a, b);
    const int hi = std::max(a, b);
    forgetPair(pairOf(lo, hi));
    pairOf(lo, hi) = pairOf(hi, lo) = nullptr;
    for (int k = 0; k < m_numBlocks; ++k) {
        blockEdges* moved = pairOf(hi, k);
        if (moved == nullptr) {
            continue;
        }
        pairOf(hi, k) = pairOf(k, hi) = nullptr;
        (moved->blockA == hi ? moved->blockA : moved->blockB) = lo;
        blockEdges* present = pairOf(lo, k);
        if (present == nullptr) {
            pairOf(lo, k) = pairOf(k, lo) = moved;
            continue;
        }
        if (present->head != nullptr) {
            cutEdge* last = present->head;
            while (last->next != nullptr) {
                last = last->next;
            }
            last->next = moved->head;
            moved->head = nullptr;
        }
        forgetPair(moved);
    }
}

blockEdges*& ParallelGC::pairOf(int a, int b) {
    return m_pairMatrix[static_cast<std::size_t>(a)][static_cast<std::size_t>(b)];
}

// Strikes a record off the list and deletes it.
void ParallelGC::forgetPair(blockEdges* pair) {
    const auto place = std::find(m_pairList.begin(), m_pairList.end(), pair);
    if (place != m_pairList.end()) {
        m_pairList.erase(place);
        deleteEdges(pair);
        delete pair;
    }
}

void ParallelGC::putBackAllEdges() {
    while (!m_pairList.empty()) {
        blockEdges* pair = m_pairList.back();
        for (const cutEdge* edge = pair->head; edge != nullptr; edge = edge->next) {
            putBack(*edge, m_edgeCaps);
        }
        pairOf(pair->blockA, pair->blockB) = pairOf(pair->blockB, pair->blockA) = nullptr;
        forgetPair(pair);
    }
}
