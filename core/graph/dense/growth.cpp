// Growth of the trees and adoption of orphans.
//
// Distances are known along the kept paths, because within a stage only orphans change their
// parent, and only children of a node that is set free become orphans. Above its last orphan a
// path stays as it is, and so does every chain that reaches it there. Up to its first orphan
// it stays as well.
#include <limits>

#include "graph/dense/dense_solver.h"
#include "graph/time_limit.h"
#include "history/marker.h"

using namespace node_state;

namespace {

constexpr int kUnreachable = std::numeric_limits<int>::max();

unsigned lowestBit(unsigned bits) {
    return bits & -bits;
}

}  // namespace

bool DenseSolver::run() {
    if (!importRecords()) {
        return false;
    }
    assert(invariantsHold());
    TimeLimit limit;
    bool stopped = VORNSEMarker::m_exitApp;
    while (!stopped && !m_active.empty()) {
        const int tiled = m_active.pop();
        std::uint8_t& state = m_state[tiled];
        assert((state & kActive) != 0);
        clear(state, kActive);
        bool augmented = true;
        while (augmented && !stopped) {
            const int tree = state & kTreeMask;
            augmented = tree == kInSource ? growOrAugment<kInSource>(tiled)
                        : tree == kInSink ? growOrAugment<kInSink>(tiled)
                                          : false;
            stopped = limit.mustStop();
        }
    }
    assert(invariantsHold());
    takeOff(m_sourcePath, m_sourcePath.begin(), m_sourcePath.end());
    takeOff(m_sinkPath, m_sinkPath.begin(), m_sinkPath.end());
    exportRecords();
    return true;
}

// Grows the tree of the node by its free neighbours, up to the first neighbour that is in the other
// tree, and augments through that one. False when there is none.
template <int kTree>
bool DenseSolver::growOrAugment(int tiled) {
    std::uint8_t* const states = m_state.data();
    const OpenEdges open = m_open[tiled];
    const int* const steps = m_grid.steps(tiled);
    const unsigned usable = kTree == kInSource ? open.out : open.in;
    const NeighbourStates near(states, tiled, steps);
    constexpr int kOtherTree = kTree == kInSource ? kInSink : kInSource;
    const unsigned meeting = usable & near.inTree(kOtherTree);
    const unsigned beforeMeeting = lowestBit(meeting) - 1;
    for (unsigned left = usable & near.inTree(kInNoTree) & beforeMeeting; left != 0;
         left &= left - 1) {
        const int d = __builtin_ctz(left);
        const int neighbour = tiled + steps[d];
        states[neighbour] = static_cast<std::uint8_t>((states[neighbour] & kActive) | kTree |
                                                      parentCode(direction::opposite(d)));
        m_parent[neighbour] = tiled;
        activate(neighbour);
    }
    if (meeting == 0) {
        return false;
    }
    // Marked active, the node does not enter the queue while its orphans are adopted: it is scanned
    // again right after.
    const int d = __builtin_ctz(meeting);
    const int neighbour = tiled + steps[d];
    set(states[tiled], kActive);
    if (kTree == kInSource) {
        augment(tiled, neighbour, d);
    } else {
        augment(neighbour, tiled, direction::opposite(d));
    }
    adoptOrphans();
    clear(states[tiled], kActive);
    assert(invariantsHoldAfterAugmentation());
    return true;
}

void DenseSolver::adoptOrphans() {
    while (!m_orphans.empty() && !VORNSEMarker::m_exitApp.load(std::memory_order_relaxed)) {
        const int tiled = m_orphans.pop();
        if ((m_state[tiled] & kTreeMask) == kInSink) {
            adopt<kInSink>(tiled);
        } else {
            adopt<kInSource>(tiled);
        }
    }
}

template <int kTree>
void DenseSolver::adopt(int tiled) {
    std::uint8_t* const states = m_state.data();
    assert((states[tiled] & (kTreeMask | kParentMask)) == kTree);
    const OpenEdges open = m_open[tiled];
    const unsigned usable = kTree == kInSource ? open.in : open.out;
    const int* const steps = m_grid.steps(tiled);
    const NeighbourStates near(states, tiled, steps);
    const unsigned relatives = near.inTree(kTree) & near.withParent();
    const unsigned children = relatives & near.children();
    const int parent = nearest<kTree>(tiled, near, usable & relatives & ~children);
    if (parent >= 0) {
        setParent(tiled, parent);
        return;
    }

    states[tiled] = static_cast<std::uint8_t>(states[tiled] & kActive);
    for (unsigned left = usable & relatives; left != 0; left &= left - 1) {
        activate(tiled + steps[__builtin_ctz(left)]);
    }
    for (unsigned left = children; left != 0; left &= left - 1) {
        makeOrphan(tiled + steps[__builtin_ctz(left)]);
    }
}

// The direction of the candidate with the shortest way to the terminal, among equals the first; -1
// when none has a way. Candidates whose distance is known come first, because a short distance
// saves walks from the others.
template <int kTree>
int DenseSolver::nearest(int tiled, const NeighbourStates& near, unsigned candidates) const {
    const unsigned roots = candidates & near.atTerminal();
    if (roots != 0) {
        return __builtin_ctz(roots);
    }
    const int* const steps = m_grid.steps(tiled);
    const KeptPath& path = pathOf<kTree>();
    int best = -1;
    int bestDistance = kUnreachable;
    for (unsigned left = candidates & near.onPath(); left != 0; left &= left - 1) {
        const int d = __builtin_ctz(left);
        const int step = m_step[tiled + steps[d]];
        if (step > path.lastOrphan()) {
            candidates &= ~(1U << d);
            const int known = 1 + path.end() - step;
            if (known < bestDistance) {
                bestDistance = known;
                best = d;
            }
        }
    }
    for (unsigned left = candidates; left != 0; left &= left - 1) {
        const int d = __builtin_ctz(left);
        const int limit = bestDistance + (d < best ? 1 : 0);
        const int walked = distance<kTree>(tiled + steps[d], limit);
        if (walked < limit) {
            bestDistance = walked;
            best = d;
        }
    }
    return best;
}

// The number of edges from an orphan to the terminal by way of its neighbour `tiled`. When the
// chain is broken or not shorter than `limit`, some number that is not below `limit`.
template <int kTree>
int DenseSolver::distance(int tiled, int limit) const {
    const KeptPath& path = pathOf<kTree>();
    for (int total = 1; total < limit; ++total) {
        const std::uint8_t state = m_state[tiled];
        const bool plainStep = (state & (kOnPath | kParentIsNeighbour)) == kParentIsNeighbour;
        if (!plainStep) {
            if ((state & kOnPath) != 0) {
                const int step = m_step[tiled];
                if (step > path.lastOrphan()) {
                    return total + path.end() - step;
                }
                if (step < path.firstOrphan()) {
                    total += path.firstOrphan() - step - 1;
                    tiled = path.tiled(path.firstOrphan());
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
        tiled = m_parent[tiled];
    }
    return kUnreachable;
}
