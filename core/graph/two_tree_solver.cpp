// Notation: a node's directions 0 .. 7 are its scan order (left, up-left, up, up-right, right,
// down-right, down, down-left); direction d is undone by (d + 4) mod 8. A stage is the time from one
// augmentation to the next.
//
// A state byte holds the node's parent (0 none, 1 the terminal, 2 + d the neighbour in direction d),
// its tree, and whether it is queued and on a laid path. A node of a tree without a parent is an
// orphan. All zero is a free node, so nodes that the graph skipped, and the border around the grid,
// need no initialisation. A cell is a node's number in the graph, row by row, which its capacities
// and its record go by; everything else goes by the tiled number.
//
// Invariant: m_open tells of every edge inside the image whether it carries flow, so that scans of
// neighbours do not read capacities.
//
// Why distances are known along the laid paths: within a stage only orphans change their parent, and
// only children of a node that is set free become orphans. Above its last orphan a path stays as it
// is, and every chain that reaches it there ends at its root; up to its first orphan it stays too.
#include "graph/two_tree_solver.h"

#include <algorithm>
#include <cstdint>
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
constexpr std::uint8_t kOnPath = 0x80;

constexpr int opposite(int direction) {
    return (direction + 4) % kSlotsPerNode;
}

constexpr std::uint8_t parentCode(int direction) {
    return static_cast<std::uint8_t>(kFirstDirection + direction);
}

// Tiled numbers per node that a large graph may cost; a very narrow one would cost eight.
constexpr std::size_t kMostNumbersPerNode = 2;
constexpr std::size_t kSmallGrid = 1U << 16;

void prefetch(const float* capacity) {
    __builtin_prefetch(capacity, 1);
}

template <typename T>
T* allocateZeroed(std::size_t count) {
    return static_cast<T*>(std::calloc(count, sizeof(T)));
}

// The request's clock against its limit. A stopped timer reads the same at every scan.
class TimeLimit {
  public:
    TimeLimit() : m_isSet(g_cancelTimer != nullptr) {
        if (m_isSet) {
            m_timer = *g_cancelTimer;
        }
        m_running = m_isSet && m_timer.m_stopped == 0;
        m_passed = read();
    }

    // True when the search has to stop; a passed limit becomes a cancel, so that the engine ends its
    // iterations too.
    bool mustStop() {
        if (m_running ? read() : m_passed) {
            VORNSEMarker::m_exitApp = true;
        }
        return VORNSEMarker::m_exitApp.load(std::memory_order_relaxed);
    }

  private:
    bool read() {
        return get_elapsed_time_in_millisec(m_isSet ? &m_timer : nullptr) > kTimeLimitMs;
    }

    CpuTimer m_timer{};  // a copy: a reading writes to the timer, which other searches may share
    bool m_isSet;
    bool m_running = false;
    bool m_passed = false;
};

}  // namespace

void TwoTreeSolver::Free::operator()(void* block) const {
    std::free(block);
}

void TwoTreeSolver::Queue::grow() {
    std::vector<int> larger(std::max<std::size_t>(2 * m_ring.size(), 1024));
    for (std::size_t i = 0; i < m_count; ++i) {
        larger[i] = m_ring[(m_head + i) & m_mask];
    }
    m_ring.swap(larger);
    m_mask = m_ring.size() - 1;
    m_head = 0;
}

TwoTreeSolver::TwoTreeSolver(VORNSEGraph& graph)
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
        m_step.reset(allocateZeroed<int>(m_grid.size()));
    }
}

bool TwoTreeSolver::fits() const {
    return m_graph.m_nodeCount == m_graph.m_width * m_graph.m_height &&
           m_graph.m_edgeCount == kSlotsPerNode * m_graph.m_nodeCount &&
           m_grid.size() <=
               kSmallGrid + kMostNumbersPerNode * static_cast<std::size_t>(m_graph.m_nodeCount);
}

bool TwoTreeSolver::canSolve() const {
    return m_state != nullptr && m_open != nullptr && m_step != nullptr;
}

template <typename Visit>
void TwoTreeSolver::forEachNode(Visit visit) const {
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

int TwoTreeSolver::directionOf(int cell, int slot) const {
    const int* const end = m_slotOffset + kSlotsPerNode;
    return static_cast<int>(std::find(m_slotOffset, end, slot - kSlotsPerNode * cell) -
                            m_slotOffset);
}

// Every edge belongs to the later of its nodes in row order, whose directions 0 .. 3 it takes.
void TwoTreeSolver::importEdges(int cell, int node, int x, int y) {
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
}

void TwoTreeSolver::importRecords() {
    forEachNode([this](int cell, int node, int x, int y) {
        const nodes& record = m_records[cell];
        std::uint8_t state = kNoParent;
        if (record.parentEdge == parent::kTerminal) {
            state = kTerminalParent;
        } else if (record.parentEdge != parent::kNone) {
            state = parentCode(directionOf(cell, record.parentEdge));
        }
        if (record.treeLabel != tree::kFree) {
            state = static_cast<std::uint8_t>(
                state | (record.treeLabel == tree::kSink ? kInSink : kInSource));
        }
        m_state[static_cast<std::size_t>(node)] = state;
        importEdges(cell, node, x, y);
    });
    while (nodes* record = m_graph.GetTopActiveQueueNode()) {
        record->nextActive = nullptr;
        const auto cell = static_cast<int>(record - m_records);
        activate(m_grid.at(cell % m_graph.m_width, cell / m_graph.m_width));
    }
}

void TwoTreeSolver::exportRecords() {
    forEachNode([this](int cell, int node, int /*x*/, int /*y*/) {
        const std::uint8_t state = m_state[static_cast<std::size_t>(node)];
        const int code = state & kParentMask;
        nodes& record = m_records[cell];
        if (code >= kFirstDirection) {
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

void TwoTreeSolver::activate(int node) {
    std::uint8_t& state = m_state[static_cast<std::size_t>(node)];
    if ((state & kActive) == 0) {
        state = static_cast<std::uint8_t>(state | kActive);
        m_active.push(node);
    }
}

void TwoTreeSolver::makeOrphan(int node) {
    std::uint8_t& state = m_state[static_cast<std::size_t>(node)];
    if ((state & kOnPath) != 0) {
        LaidPath& path = (state & kTreeMask) == kInSink ? m_sinkPath : m_sourcePath;
        path.orphaned(m_step[static_cast<std::size_t>(node)]);
    }
    if ((state & kParentMask) != kNoParent) {
        state = static_cast<std::uint8_t>(state & ~kParentMask);
        m_orphans.push(node);
    }
}

// Brings the directions of both ends up to date with an edge's capacities: from `node` in
// `direction` to `neighbour`, and back.
void TwoTreeSolver::openOrClose(int node, int neighbour, int direction, float there, float back) {
    const auto set = [](std::uint8_t& directions, int bit, bool open) {
        const auto cleared = static_cast<std::uint8_t>(directions & ~(1U << bit));
        directions =
            static_cast<std::uint8_t>(cleared | static_cast<std::uint8_t>((open ? 1U : 0U) << bit));
    };
    const bool away = flow_lanes::carriesFlow(there);
    const bool home = flow_lanes::carriesFlow(back);
    Directions& from = m_open[static_cast<std::size_t>(node)];
    Directions& to = m_open[static_cast<std::size_t>(neighbour)];
    set(from.out, direction, away);
    set(from.in, direction, home);
    set(to.in, opposite(direction), away);
    set(to.out, opposite(direction), home);
}

void TwoTreeSolver::run() {
    importRecords();
    TimeLimit limit;
    bool stopped = VORNSEMarker::m_exitApp;
    while (!stopped && !m_active.empty()) {
        const int node = m_active.pop();
        std::uint8_t& state = m_state[static_cast<std::size_t>(node)];
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
    takeOff(m_sourcePath, 0, m_sourcePath.length());
    takeOff(m_sinkPath, 0, m_sinkPath.length());
    exportRecords();
}

// Grows the tree of `node` by its free neighbours up to the first neighbour in the other tree, and
// augments through that one; false when there is none.
template <int kTree>
bool TwoTreeSolver::growOrAugment(int node) {
    std::uint8_t* const states = m_state.get();
    const Directions open = m_open[static_cast<std::size_t>(node)];
    const int* const steps = m_grid.steps(node);
    for (unsigned left = kTree == kInSource ? open.out : open.in; left != 0; left &= left - 1) {
        const int direction = __builtin_ctz(left);
        const int neighbour = node + steps[direction];
        const std::uint8_t state = states[neighbour];
        if ((state & kTreeMask) == 0) {
            states[neighbour] = static_cast<std::uint8_t>((state & kActive) | kTree |
                                                          parentCode(opposite(direction)));
            activate(neighbour);
        } else if ((state & kTreeMask) != kTree) {
            // Marked active, the node is not queued while its orphans are adopted: it is scanned
            // again right after.
            states[node] = static_cast<std::uint8_t>(states[node] | kActive);
            if (kTree == kInSource) {
                augment(node, neighbour, direction);
            } else {
                augment(neighbour, node, opposite(direction));
            }
            adoptOrphans();
            states[node] = static_cast<std::uint8_t>(states[node] & ~kActive);
            return true;
        }
    }
    return false;
}

// Pushes what the path through the edge from `sourceEnd` in `direction` to `sinkEnd` can carry.
void TwoTreeSolver::augment(int sourceEnd, int sinkEnd, int direction) {
    const int slot = kSlotsPerNode * m_grid.rowMajor(sourceEnd) + m_slotOffset[direction];
    prefetch(m_caps + slot);
    walkToRoots(sourceEnd, sinkEnd);
    const int sinkRoot = m_sinkPath.node(m_sinkPath.length());
    const int sourceRoot = m_sourcePath.node(m_sourcePath.length());
    float& sinkResidual = m_records[m_grid.rowMajor(sinkRoot)].residualTerminalCap;
    float& sourceResidual = m_records[m_grid.rowMajor(sourceRoot)].residualTerminalCap;
    float bottleneck = m_caps[slot];
    for (const float room :
         {m_sinkPath.smallest(), -sinkResidual, m_sourcePath.smallest(), sourceResidual}) {
        bottleneck = room < bottleneck ? room : bottleneck;
    }

    m_caps[slot] -= bottleneck;
    m_caps[slot ^ 1] += bottleneck;
    openOrClose(sourceEnd, sinkEnd, direction, m_caps[slot], m_caps[slot ^ 1]);
    pushFlow<kInSink>(m_sinkPath, bottleneck);
    sinkResidual += bottleneck;
    if (sinkResidual == 0.0F) {
        makeOrphan(sinkRoot);
        m_sinkPath.orphaned(m_sinkPath.length());
    }
    pushFlow<kInSource>(m_sourcePath, bottleneck);
    sourceResidual -= bottleneck;
    if (sourceResidual == 0.0F) {
        makeOrphan(sourceRoot);
        m_sourcePath.orphaned(m_sourcePath.length());
    }
    m_graph.m_flow += bottleneck;
}

// The walk from one end of the meeting edge towards the root of its tree, up to where it can follow
// the path of the last augmentation. Flow runs along a child's parent edge in the sink tree and along
// its sister in the source tree.
template <int kTree>
class TwoTreeSolver::Walk {
  public:
    Walk(TwoTreeSolver& solver, LaidPath& path, int start)
        : m_solver(solver),
          m_path(path),
          m_kept(path.keptFrom(start)),
          m_joined(path.length()),
          m_node(m_kept > 0 ? path.node(m_kept) : start),
          m_cell(solver.m_grid.rowMajor(m_node)) {}

    // One step; false at the root or back on the path.
    bool step() {
        const std::uint8_t state = m_solver.m_state[static_cast<std::size_t>(m_node)];
        const int code = state & kParentMask;
        if (code == kTerminalParent) {
            return false;
        }
        if ((state & kOnPath) != 0) {
            const int step = m_solver.m_step[static_cast<std::size_t>(m_node)];
            if (m_path.joinsAt(step, m_node)) {
                m_joined = step;
                return false;
            }
        }
        const int direction = code - kFirstDirection;
        const int slot = (kSlotsPerNode * m_cell + m_solver.m_slotOffset[direction]) ^
                         (kTree == kInSource ? 1 : 0);
        prefetch(m_solver.m_caps + slot);
        m_path.addToDetour(m_node, slot);
        m_node += m_solver.m_grid.steps(m_node)[direction];
        m_cell += m_solver.m_cellOffset[direction];
        return true;
    }

    // Hands the capacities of the steps that the detour replaces back to the graph.
    void leave() const { m_solver.takeOff(m_path, m_kept, m_joined); }

    void lay() {
        const bool joins = m_joined < m_path.length();
        const int detourEnd = m_kept + m_path.detourLength();
        m_path.lay(m_kept, m_joined, joins ? m_path.node(m_path.length()) : m_node);
        const float* const caps = m_solver.m_caps;
        for (int step = m_kept; step < detourEnd; ++step) {
            const int slot = m_path.slot(step);
            m_path.setCapacities(step, caps[slot], caps[slot ^ 1]);
            const auto node = static_cast<std::size_t>(m_path.node(step));
            m_solver.m_state[node] = static_cast<std::uint8_t>(m_solver.m_state[node] | kOnPath);
            m_solver.m_step[node] = step;
        }
        if (detourEnd != m_joined) {
            for (int step = detourEnd; step < m_path.length(); ++step) {
                m_solver.m_step[static_cast<std::size_t>(m_path.node(step))] = step;
            }
        }
    }

  private:
    TwoTreeSolver& m_solver;
    LaidPath& m_path;
    const int m_kept;
    int m_joined;
    int m_node;
    int m_cell;
};

// The walks wait for memory rather than for each other, so they go side by side. Both leave what they
// replace before either is laid: a node may go from one path to the other.
void TwoTreeSolver::walkToRoots(int sourceEnd, int sinkEnd) {
    Walk<kInSource> source(*this, m_sourcePath, sourceEnd);
    Walk<kInSink> sink(*this, m_sinkPath, sinkEnd);
    bool sourceGoesOn = true;
    bool sinkGoesOn = true;
    while (sourceGoesOn && sinkGoesOn) {
        sinkGoesOn = sink.step();
        sourceGoesOn = source.step();
    }
    while (sinkGoesOn) {
        sinkGoesOn = sink.step();
    }
    while (sourceGoesOn) {
        sourceGoesOn = source.step();
    }
    source.leave();
    sink.leave();
    source.lay();
    sink.lay();
}

// Hands the capacities of the steps `from` .. `to` - 1 back to the graph.
void TwoTreeSolver::takeOff(const LaidPath& path, int from, int to) {
    for (int step = from; step < to; ++step) {
        const int slot = path.slot(step);
        m_caps[slot] = path.left(step);
        m_caps[slot ^ 1] = path.back(step);
        std::uint8_t& state = m_state[static_cast<std::size_t>(path.node(step))];
        state = static_cast<std::uint8_t>(state & ~kOnPath);
    }
}

template <int kTree>
void TwoTreeSolver::pushFlow(LaidPath& path, float amount) {
    path.push(amount, [this, &path](int step) {
        const int node = path.node(step);
        const int direction =
            (m_state[static_cast<std::size_t>(node)] & kParentMask) - kFirstDirection;
        const float left = path.left(step);
        const float back = path.back(step);
        const bool towardsRoot = kTree == kInSink;
        const float fromChild = towardsRoot ? left : back;
        const float toChild = towardsRoot ? back : left;
        openOrClose(node, path.node(step + 1), direction, fromChild, toChild);
        if (left == 0.0F) {
            makeOrphan(node);
        }
    });
}

void TwoTreeSolver::adoptOrphans() {
    while (!m_orphans.empty() && !VORNSEMarker::m_exitApp.load(std::memory_order_relaxed)) {
        const int node = m_orphans.pop();
        if ((m_state[static_cast<std::size_t>(node)] & kTreeMask) == kInSink) {
            adopt<kInSink>(node);
        } else {
            adopt<kInSource>(node);
        }
    }
}

template <int kTree>
void TwoTreeSolver::adopt(int node) {
    std::uint8_t* const states = m_state.get();
    const Directions open = m_open[static_cast<std::size_t>(node)];
    const unsigned usable = kTree == kInSource ? open.in : open.out;
    const int* const steps = m_grid.steps(node);
    int bestDirection = -1;
    int bestDistance = kUnreachable;
    for (unsigned left = usable; left != 0; left &= left - 1) {
        const int direction = __builtin_ctz(left);
        const int neighbour = node + steps[direction];
        if ((states[neighbour] & kTreeMask) == kTree &&
            (states[neighbour] & kParentMask) != kNoParent) {
            const int candidate = distance<kTree>(neighbour, bestDistance);
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
    for (int direction = 0; direction < kSlotsPerNode; ++direction) {
        const int neighbour = node + steps[direction];
        const std::uint8_t state = states[neighbour];
        const int code = state & kParentMask;
        if ((state & kTreeMask) != kTree || code == kNoParent) {
            continue;
        }
        if ((usable >> direction & 1U) != 0) {
            activate(neighbour);
        }
        if (code == parentCode(opposite(direction))) {
            makeOrphan(neighbour);
        }
    }
}

// Number of edges from an orphan through its neighbour `node` to the terminal. When the chain is
// broken or not shorter than `limit`, something that is not below `limit`.
template <int kTree>
int TwoTreeSolver::distance(int node, int limit) const {
    const LaidPath& path = kTree == kInSink ? m_sinkPath : m_sourcePath;
    for (int total = 1; total < limit; ++total) {
        const std::uint8_t state = m_state[static_cast<std::size_t>(node)];
        if ((state & kOnPath) != 0) {
            const int step = m_step[static_cast<std::size_t>(node)];
            if (step > path.lastOrphan()) {
                return total + path.length() - step;
            }
            if (step < path.firstOrphan()) {
                total += path.firstOrphan() - step - 1;
                node = path.node(path.firstOrphan());
                continue;
            }
        }
        const int code = state & kParentMask;
        if (code == kTerminalParent) {
            return total;
        }
        if (code == kNoParent) {
            return kUnreachable;
        }
        node += m_grid.steps(node)[code - kFirstDirection];
    }
    return kUnreachable;
}
