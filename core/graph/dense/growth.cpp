// Growth and adoption. A stage is the time from one augmentation to the next.
//
// Why distances are known along the laid paths: within a stage only orphans change their parent, and
// only children of a node that is set free become orphans. Above its last orphan a path stays as it
// is, and every chain that reaches it there ends at its root; up to its first orphan it stays too.
#include "graph/dense/dense_solver.h"

#include <limits>

#include "graph/dense/neighbour_states.h"
#include "graph/time_limit.h"
#include "history/marker.h"

using namespace node_state;

namespace {
constexpr int kUnreachable = std::numeric_limits<int>::max();
}

bool DenseSolver::run() {
    if (!importRecords()) {
        return false;
    }
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
    takeOff(m_sourcePath, m_sourcePath.begin(), m_sourcePath.end());
    takeOff(m_sinkPath, m_sinkPath.begin(), m_sinkPath.end());
    exportRecords();
    return true;
}

// Grows the tree of `node` by its free neighbours up to the first neighbour in the other tree, and
// augments through that one; false when there is none.
template <int kTree>
bool DenseSolver::growOrAugment(int node) {
    std::uint8_t* const states = m_state.get();
    const Directions open = m_open[static_cast<std::size_t>(node)];
    const int* const steps = m_grid.steps(node);
    const unsigned usable = kTree == kInSource ? open.out : open.in;
    const NeighbourStates near(states, node, steps);
    constexpr int kOtherTree = kTree == kInSource ? kInSink : kInSource;
    const unsigned meeting = usable & near.inTree(kOtherTree);
    const unsigned beforeMeeting = (meeting & -meeting) - 1;
    for (unsigned left = usable & near.inTree(kInNoTree) & beforeMeeting; left != 0;
         left &= left - 1) {
        const int direction = __builtin_ctz(left);
        const int neighbour = node + steps[direction];
        states[neighbour] = static_cast<std::uint8_t>((states[neighbour] & kActive) | kTree |
                                                      parentCode(opposite(direction)));
        m_parent[static_cast<std::size_t>(neighbour)] = node;
        activate(neighbour);
    }
    if (meeting == 0) {
        return false;
    }
    // Marked active, the node is not queued while its orphans are adopted: it is scanned again right
    // after.
    const int direction = __builtin_ctz(meeting);
    const int neighbour = node + steps[direction];
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

void DenseSolver::adoptOrphans() {
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
void DenseSolver::adopt(int node) {
    std::uint8_t* const states = m_state.get();
    const Directions open = m_open[static_cast<std::size_t>(node)];
    const unsigned usable = kTree == kInSource ? open.in : open.out;
    const int* const steps = m_grid.steps(node);
    const NeighbourStates near(states, node, steps);
    const unsigned relatives = near.inTree(kTree) & near.withParent();
    const unsigned children = relatives & near.children();
    const int direction = nearest<kTree>(node, near, usable & relatives & ~children);
    if (direction >= 0) {
        setParent(node, direction);
        return;
    }

    states[node] = static_cast<std::uint8_t>(states[node] & kActive);
    for (unsigned left = usable & relatives; left != 0; left &= left - 1) {
        activate(node + steps[__builtin_ctz(left)]);
    }
    for (unsigned left = children; left != 0; left &= left - 1) {
        makeOrphan(node + steps[__builtin_ctz(left)]);
    }
}

// The candidate whose way to the terminal is the shortest, among equals the first one; -1 when none has
// a way. What costs no walk comes first: it bounds the others.
template <int kTree>
int DenseSolver::nearest(int node, const NeighbourStates& near, unsigned candidates) const {
    const unsigned roots = candidates & near.atTerminal();
    if (roots != 0) {
        return __builtin_ctz(roots);
    }
    const int* const steps = m_grid.steps(node);
    const KeptPath& path = kTree == kInSink ? m_sinkPath : m_sourcePath;
    int best = -1;
    int bestDistance = kUnreachable;
    for (unsigned left = candidates & near.onPath(); left != 0; left &= left - 1) {
        const int direction = __builtin_ctz(left);
        const int step = m_step[static_cast<std::size_t>(node + steps[direction])];
        if (step > path.lastOrphan()) {
            candidates &= ~(1U << direction);
            const int known = 1 + path.end() - step;
            if (known < bestDistance) {
                bestDistance = known;
                best = direction;
            }
        }
    }
    for (unsigned left = candidates; left != 0; left &= left - 1) {
        const int direction = __builtin_ctz(left);
        const int limit = bestDistance + (direction < best ? 1 : 0);
        const int walked = distance<kTree>(node + steps[direction], limit);
        if (walked < limit) {
            bestDistance = walked;
            best = direction;
        }
    }
    return best;
}

// Number of edges from an orphan through its neighbour `node` to the terminal. When the chain is
// broken or not shorter than `limit`, something that is not below `limit`.
template <int kTree>
int DenseSolver::distance(int node, int limit) const {
    const KeptPath& path = kTree == kInSink ? m_sinkPath : m_sourcePath;
    for (int total = 1; total < limit; ++total) {
        const std::uint8_t state = m_state[static_cast<std::size_t>(node)];
        const bool plainStep = (state & (kOnPath | kParentIsNeighbour)) == kParentIsNeighbour;
        if (!plainStep) {
            if ((state & kOnPath) != 0) {
                const int step = m_step[static_cast<std::size_t>(node)];
                if (step > path.lastOrphan()) {
                    return total + path.end() - step;
                }
                if (step < path.firstOrphan()) {
                    total += path.firstOrphan() - step - 1;
                    node = path.node(path.firstOrphan());
                    continue;
                }
            }
            if ((state & kParentMask) == kTerminalParent) {
                return total;
            }
            if ((state & kParentMask) == kNoParent) {
                return kUnreachable;
            }
        }
        node = m_parent[static_cast<std::size_t>(node)];
    }
    return kUnreachable;
}
