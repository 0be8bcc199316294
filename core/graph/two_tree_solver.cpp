// Notation: a node's directions 0 .. 7 are its scan order (left, up-left, up, up-right, right,
// down-right, down, down-left); direction d is undone by (d + 4) mod 8. A stage is the time from one
// augmentation to the next.
//
// A state byte holds the node's parent (0 none, 1 the terminal, 2 + d the neighbour in direction d),
// its tree and whether it is queued. All zero is a free node, so nodes that the graph skipped need no
// initialisation.
//
// Why distances can be remembered: within a stage only orphans change their parent, and only children
// of a node that is set free become orphans. A node with an unbroken chain to its root has no orphan
// above it, so neither it nor anything above it changes before the stage ends.
#include "graph/two_tree_solver.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "history/marker.h"
#include "support/timers.h"

namespace {

constexpr double kTimeLimitMs = 10000.0;
constexpr int kUnreachable = std::numeric_limits<int>::max();

constexpr std::uint8_t kParentMask = 0x0F;
constexpr std::uint8_t kNoParent = 0;
constexpr std::uint8_t kTerminalParent = 1;
constexpr std::uint8_t kFirstDirection = 2;
constexpr std::uint8_t kTreeMask = 0x30;
constexpr std::uint8_t kInSource = 0x10;
constexpr std::uint8_t kInSink = 0x20;
constexpr std::uint8_t kActive = 0x40;
constexpr std::uint8_t kOrphan = 0x80;

// A mark is stage << kDistanceBits | distance; longer distances are walked again.
constexpr int kDistanceBits = 12;
constexpr std::uint32_t kDistanceMask = (1U << kDistanceBits) - 1;
constexpr std::uint32_t kLastStage = std::numeric_limits<std::uint32_t>::max() >> kDistanceBits;

constexpr int kDirectionsInBottomRow = 5;
constexpr int kDirectionsOfLastNode = 4;

constexpr int opposite(int direction) {
    return (direction + 4) % kSlotsPerNode;
}

constexpr std::uint8_t parentCode(int direction) {
    return static_cast<std::uint8_t>(kFirstDirection + direction);
}

bool carriesFlow(float capacity) {
    return capacity != 0.0F && capacity != kNoEdge;
}

template <typename T>
T* allocateZeroed(std::size_t count) {
    return static_cast<T*>(std::calloc(count, sizeof(T)));
}

// The request's clock against its limit. A stopped timer reads the same at every scan.
class TimeLimit {
  public:
    TimeLimit()
        : m_running(g_cancelTimer != nullptr && g_cancelTimer->m_stopped == 0), m_passed(read()) {}

    // True when the search has to stop; a passed limit becomes a cancel, so that the engine ends its
    // iterations too.
    bool mustStop() {
        if (m_running ? read() : m_passed) {
            VORNSEMarker::m_exitApp = true;
        }
        return VORNSEMarker::m_exitApp.load(std::memory_order_relaxed);
    }

  private:
    static bool read() { return get_elapsed_time_in_millisec(g_cancelTimer) > kTimeLimitMs; }

    bool m_running;
    bool m_passed;
};

}  // namespace

void TwoTreeSolver::Free::operator()(void* block) const {
    std::free(block);
}

void TwoTreeSolver::Queue::grow() {
    std::vector<int> larger(std::max<std::size_t>(2 * m_ring.size(), 1024));
    for (std::size_t i = 0; i < m_count; ++i) {
        larger[i] = m_ring[(m_head + i) & (m_ring.size() - 1)];
    }
    m_ring.swap(larger);
    m_head = 0;
}

TwoTreeSolver::TwoTreeSolver(VORNSEGraph& graph)
    : m_graph(graph),
      m_caps(graph.m_edgeCaps),
      m_records(graph.m_nodes),
      m_nodeCount(graph.m_nodeCount),
      m_lastRow(graph.m_width * (graph.m_height - 1)),
      m_headOffset{-1, -graph.m_width - 1, -graph.m_width, -graph.m_width + 1,
                   1,  graph.m_width + 1,  graph.m_width,  graph.m_width - 1},
      m_slotOffset{0,
                   2,
                   4,
                   6,
                   9,
                   kSlotsPerNode * graph.m_width + 11,
                   kSlotsPerNode * graph.m_width + 5,
                   kSlotsPerNode * graph.m_width - 1},
      m_margin(static_cast<std::size_t>(graph.m_width) + 1),
      m_stateStore(
          allocateZeroed<std::uint8_t>(static_cast<std::size_t>(m_nodeCount) + 2 * m_margin)),
      m_state(m_stateStore == nullptr ? nullptr : m_stateStore.get() + m_margin),
      m_marks(allocateZeroed<std::uint32_t>(static_cast<std::size_t>(m_nodeCount))) {}

bool TwoTreeSolver::canSolve() const {
    if (m_state == nullptr || m_marks == nullptr ||
        m_nodeCount != m_graph.m_width * m_graph.m_height ||
        m_graph.m_edgeCount != kSlotsPerNode * m_nodeCount ||
        m_graph.m_edgeMax - m_caps < kSlotsPerNode + m_graph.m_edgeCount) {
        return false;
    }
    const int width = m_graph.m_width;
    const auto edgeLeaves = [this](int node, std::initializer_list<int> directions) {
        return std::any_of(directions.begin(), directions.end(), [&](int direction) {
            const int slot = kSlotsPerNode * node + m_slotOffset[direction];
            return direction < directionCount(node) &&
                   (carriesFlow(m_caps[slot]) || carriesFlow(m_caps[slot ^ 1]));
        });
    };
    for (const NodeRange& range : m_graph.ranges()) {
        for (int node = range.first; node < std::min(range.last, width); ++node) {
            if (edgeLeaves(node, {1, 2, 3})) {
                return false;
            }
        }
        const int firstColumn = (range.first + width - 1) / width * width;
        for (int node = firstColumn; node < range.last; node += width) {
            if (edgeLeaves(node, {0, 1, 7})) {
                return false;
            }
        }
        const int lastColumn = range.first / width * width + width - 1;
        for (int node = lastColumn; node < range.last; node += width) {
            if (edgeLeaves(node, {3, 4, 5})) {
                return false;
            }
        }
    }
    return true;
}

int TwoTreeSolver::directionCount(int node) const {
    if (node < m_lastRow) {
        return kSlotsPerNode;
    }
    return node < m_nodeCount - 1 ? kDirectionsInBottomRow : kDirectionsOfLastNode;
}

int TwoTreeSolver::directionOf(int node, int slot) const {
    const int* const end = m_slotOffset + kSlotsPerNode;
    return static_cast<int>(std::find(m_slotOffset, end, slot - kSlotsPerNode * node) -
                            m_slotOffset);
}

void TwoTreeSolver::importRecords() {
    for (const NodeRange& range : m_graph.ranges()) {
        for (int node = range.first; node < range.last; ++node) {
            const nodes& record = m_records[node];
            std::uint8_t state = kNoParent;
            if (record.parentEdge == parent::kTerminal) {
                state = kTerminalParent;
            } else if (record.parentEdge != parent::kNone) {
                state = parentCode(directionOf(node, record.parentEdge));
            }
            if (record.treeLabel != tree::kFree) {
                state = static_cast<std::uint8_t>(
                    state | (record.treeLabel == tree::kSink ? kInSink : kInSource));
            }
            m_state[node] = state;
        }
    }
    while (nodes* record = m_graph.GetTopActiveQueueNode()) {
        record->nextActive = nullptr;
        activate(static_cast<int>(record - m_records));
    }
}

void TwoTreeSolver::exportRecords() {
    for (const NodeRange& range : m_graph.ranges()) {
        for (int node = range.first; node < range.last; ++node) {
            const std::uint8_t state = m_state[node];
            const int code = state & kParentMask;
            nodes& record = m_records[node];
            if (code >= kFirstDirection) {
                record.parentEdge = kSlotsPerNode * node + m_slotOffset[code - kFirstDirection];
            } else {
                record.parentEdge = code == kTerminalParent ? parent::kTerminal : parent::kNone;
            }
            const int treeBits = state & kTreeMask;
            record.treeLabel = treeBits == kInSink     ? tree::kSink
                               : treeBits == kInSource ? tree::kSource
                                                       : tree::kFree;
        }
    }
    while (!m_active.empty()) {
        m_graph.AddToActiveQueue(m_records + m_active.pop());
    }
    while (!m_orphans.empty()) {
        m_graph.AddToOrphanQueue(m_records + m_orphans.pop());
    }
}

void TwoTreeSolver::activate(int node) {
    std::uint8_t& state = m_state[node];
    if ((state & kActive) == 0) {
        state = static_cast<std::uint8_t>(state | kActive);
        m_active.push(node);
    }
}

void TwoTreeSolver::makeOrphan(int node) {
    std::uint8_t& state = m_state[node];
    state = static_cast<std::uint8_t>(state & ~kParentMask);
    if ((state & kOrphan) == 0) {
        state = static_cast<std::uint8_t>(state | kOrphan);
        m_orphans.push(node);
    }
}

void TwoTreeSolver::run() {
    importRecords();
    TimeLimit limit;
    bool stopped = VORNSEMarker::m_exitApp;
    while (!stopped && !m_active.empty()) {
        const int node = m_active.pop();
        std::uint8_t& state = m_state[node];
        state = static_cast<std::uint8_t>(state & ~kActive);
        bool augmented = true;
        while (augmented && !stopped) {
            const int treeBits = state & kTreeMask;
            augmented = treeBits == kInSource ? growOrAugment<kInSource>(node)
                        : treeBits == kInSink ? growOrAugment<kInSink>(node)
                                              : false;
            stopped = limit.mustStop();
        }
    }
    exportRecords();
}

// Grows the tree of `node` by its free neighbours up to the first neighbour in the other tree, and
// augments through that one; false when there is none.
template <int kTree>
bool TwoTreeSolver::growOrAugment(int node) {
    constexpr int kSisterBit = kTree == kInSink ? 1 : 0;
    std::uint8_t* const states = m_state;
    const float* const caps = m_caps;
    const int directions = directionCount(node);
    for (int direction = 0; direction < directions; ++direction) {
        const int slot = (kSlotsPerNode * node + m_slotOffset[direction]) ^ kSisterBit;
        if (!carriesFlow(caps[slot])) {
            continue;
        }
        const int neighbour = node + m_headOffset[direction];
        const std::uint8_t state = states[neighbour];
        if ((state & kTreeMask) == 0) {
            states[neighbour] = static_cast<std::uint8_t>((state & (kActive | kOrphan)) | kTree |
                                                          parentCode(opposite(direction)));
            activate(neighbour);
        } else if ((state & kTreeMask) != kTree) {
            // Marked active, the node is not queued while its orphans are adopted: it is scanned
            // again right after.
            states[node] = static_cast<std::uint8_t>(states[node] | kActive);
            augment(slot, kTree == kInSource ? node : neighbour,
                    kTree == kInSource ? neighbour : node);
            adoptOrphans();
            states[node] = static_cast<std::uint8_t>(states[node] & ~kActive);
            return true;
        }
    }
    return false;
}

void TwoTreeSolver::augment(int slot, int sourceEnd, int sinkEnd) {
    float bottleneck = walkToRoot(m_sinkPath, sinkEnd, 0, m_caps[slot]);
    float& sinkResidual = m_records[m_sinkPath.root].residualTerminalCap;
    bottleneck = -sinkResidual < bottleneck ? -sinkResidual : bottleneck;
    bottleneck = walkToRoot(m_sourcePath, sourceEnd, 1, bottleneck);
    float& sourceResidual = m_records[m_sourcePath.root].residualTerminalCap;
    bottleneck = sourceResidual < bottleneck ? sourceResidual : bottleneck;

    m_caps[slot] -= bottleneck;
    m_caps[slot ^ 1] += bottleneck;
    pushFlow(m_sinkPath, bottleneck);
    sinkResidual += bottleneck;
    if (sinkResidual == 0.0F) {
        makeOrphan(m_sinkPath.root);
    }
    pushFlow(m_sourcePath, bottleneck);
    sourceResidual -= bottleneck;
    if (sourceResidual == 0.0F) {
        makeOrphan(m_sourcePath.root);
    }
    m_graph.m_flow += bottleneck;
}

// Records the edges from `node` up to its root; flow runs along a child's parent edge in the sink
// tree and along its sister in the source tree. Returns the smallest capacity met.
float TwoTreeSolver::walkToRoot(Path& path, int node, int sisterBit, float bottleneck) {
    const std::uint8_t* const states = m_state;
    const float* const caps = m_caps;
    std::size_t length = 0;
    std::size_t room = path.steps.size();
    Path::Step* steps = path.steps.data();
    for (;;) {
        const int code = states[node] & kParentMask;
        if (code == kTerminalParent) {
            break;
        }
        if (length == room) {
            path.steps.resize(std::max<std::size_t>(2 * room, 1024));
            room = path.steps.size();
            steps = path.steps.data();
        }
        const int direction = code - kFirstDirection;
        const int slot = (kSlotsPerNode * node + m_slotOffset[direction]) ^ sisterBit;
        steps[length++] = {slot, node};
        bottleneck = caps[slot] < bottleneck ? caps[slot] : bottleneck;
        node += m_headOffset[direction];
    }
    path.length = length;
    path.root = node;
    return bottleneck;
}

void TwoTreeSolver::pushFlow(const Path& path, float amount) {
    float* const caps = m_caps;
    const Path::Step* const end = path.steps.data() + path.length;
    for (const Path::Step* step = path.steps.data(); step != end; ++step) {
        const float left = caps[step->slot] - amount;
        caps[step->slot] = left;
        caps[step->slot ^ 1] += amount;
        if (left == 0.0F) {
            makeOrphan(step->node);
        }
    }
}

void TwoTreeSolver::adoptOrphans() {
    startStage();
    while (!m_orphans.empty() && !VORNSEMarker::m_exitApp.load(std::memory_order_relaxed)) {
        const int node = m_orphans.pop();
        std::uint8_t& state = m_state[node];
        state = static_cast<std::uint8_t>(state & ~kOrphan);
        if ((state & kTreeMask) == kInSink) {
            adopt<kInSink>(node);
        } else {
            adopt<kInSource>(node);
        }
    }
}

void TwoTreeSolver::startStage() {
    if (m_stage == kLastStage) {
        for (const NodeRange& range : m_graph.ranges()) {
            std::fill(m_marks.get() + range.first, m_marks.get() + range.last, 0U);
        }
        m_stage = 0;
    }
    ++m_stage;
}

template <int kTree>
void TwoTreeSolver::adopt(int node) {
    constexpr int kSisterBit = kTree == kInSource ? 1 : 0;
    std::uint8_t* const states = m_state;
    const float* const caps = m_caps;
    const int directions = directionCount(node);
    int bestDirection = -1;
    int bestDistance = kUnreachable;
    for (int direction = 0; direction < directions; ++direction) {
        const int slot = (kSlotsPerNode * node + m_slotOffset[direction]) ^ kSisterBit;
        if (!carriesFlow(caps[slot])) {
            continue;
        }
        const int neighbour = node + m_headOffset[direction];
        if ((states[neighbour] & kTreeMask) == kTree &&
            (states[neighbour] & kParentMask) != kNoParent) {
            const int candidate = distance(neighbour, bestDistance);
            if (candidate < bestDistance) {
                bestDistance = candidate;
                bestDirection = direction;
            }
        }
    }
    if (bestDirection >= 0) {
        states[node] = static_cast<std::uint8_t>(states[node] | parentCode(bestDirection));
        return;
    }

    states[node] = static_cast<std::uint8_t>(states[node] & kActive);
    for (int direction = 0; direction < directions; ++direction) {
        const int slot = (kSlotsPerNode * node + m_slotOffset[direction]) ^ kSisterBit;
        if (caps[slot] == kNoEdge) {
            continue;
        }
        const int neighbour = node + m_headOffset[direction];
        const std::uint8_t state = states[neighbour];
        const int code = state & kParentMask;
        if ((state & kTreeMask) != kTree || code == kNoParent) {
            continue;
        }
        if (caps[slot] != 0.0F) {
            activate(neighbour);
        }
        if (code == parentCode(opposite(direction))) {
            makeOrphan(neighbour);
        }
    }
}

// Number of edges from an orphan through its neighbour `node` to the terminal; kUnreachable when the
// chain is broken or not shorter than `limit`.
int TwoTreeSolver::distance(int node, int limit) {
    const std::uint8_t* const states = m_state;
    std::uint32_t* const marks = m_marks.get();
    const std::uint32_t stage = m_stage << kDistanceBits;
    int end = node;
    int total = 1;
    for (;; ++total) {
        if (total >= limit) {
            return kUnreachable;
        }
        if ((marks[end] & ~kDistanceMask) == stage) {
            total += static_cast<int>(marks[end] & kDistanceMask) - 1;
            break;
        }
        const int code = states[end] & kParentMask;
        if (code == kTerminalParent) {
            break;
        }
        if (code == kNoParent) {
            return kUnreachable;
        }
        end += m_headOffset[code - kFirstDirection];
    }
    for (int left = total; left <= static_cast<int>(kDistanceMask); --left) {
        marks[node] = stage | static_cast<std::uint32_t>(left);
        if (node == end) {
            break;
        }
        node += m_headOffset[(states[node] & kParentMask) - kFirstDirection];
    }
    return total;
}
