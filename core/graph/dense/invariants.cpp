// The invariants of dense_solver.h, looked at over the whole store. Only assertions ask.
#include <algorithm>
#include <unordered_map>

#include "graph/dense/dense_solver.h"
#include "history/marker.h"

using namespace node_state;

class DenseSolver::Check {
  public:
    explicit Check(const DenseSolver& solver) : m_solver(solver) {
        for (const KeptPath* path : {&solver.m_sourcePath, &solver.m_sinkPath}) {
            for (int step = path->begin(); step < path->end(); ++step) {
                m_onPath[path->slot(step)] = path->left(step);
                m_onPath[path->slot(step) ^ 1] = path->back(step);
            }
        }
        m_reachesTerminal.allocate(solver.m_grid.size());
    }

    bool holds() {
        bool holds = pathLeadsToRoot<kInSource>() && pathLeadsToRoot<kInSink>();
        const bool orphans = !m_solver.m_orphans.empty();
        std::size_t active = 0;
        m_solver.forEachNode([&](int node, int tiled, int x, int y) {
            const int state = m_solver.m_state[tiled];
            active += (state & kActive) != 0 ? 1 : 0;
            holds = holds && openBitsFit(node, tiled, x, y) && (orphans || parentFits(node, tiled)) &&
                    stepFits(tiled, state);
        });
        return holds && active == m_solver.m_active.count();
    }

  private:
    // 1 and 4
    bool openBitsFit(int node, int tiled, int x, int y) const {
        const OpenEdges open = m_solver.m_open[tiled];
        for (int d = 0; d < direction::kCount; ++d) {
            const int toX = x + direction::kSteps[d].x;
            const int toY = y + direction::kSteps[d].y;
            const bool inside = toX >= 0 && toX < m_solver.m_graph.m_width && toY >= 0 &&
                                toY < m_solver.m_graph.m_height;
            const int slot = kSlotsPerNode * node + m_solver.m_slotStep[d];
            if ((open.out >> d & 1) != (inside && carriesFlow(slot) ? 1 : 0) ||
                (open.in >> d & 1) != (inside && carriesFlow(slot ^ 1) ? 1 : 0)) {
                return false;
            }
        }
        return true;
    }
    bool carriesFlow(int slot) const {
        const auto found = m_onPath.find(slot);
        return flow_lanes::carriesFlow(found == m_onPath.end() ? m_solver.m_caps[slot]
                                                               : found->second);
    }

    // 2
    bool parentFits(int node, int tiled) {
        const int state = m_solver.m_state[tiled];
        const int treeBits = state & kTreeMask;
        const int code = state & kParentMask;
        if (treeBits == kInNoTree) {
            return code == kNoParent;
        }
        if (code == kTerminalParent) {
            const float residual = m_solver.m_records[node].residualTerminalCap;
            return !(treeBits == kInSource ? residual <= 0.0F : residual >= 0.0F);
        }
        if ((code & kParentIsNeighbour) == 0) {
            return false;
        }
        const int d = directionOfParent(state);
        const int parent = tiled + m_solver.m_grid.steps(tiled)[d];
        const OpenEdges open = m_solver.m_open[tiled];
        return m_solver.m_parent[tiled] == parent &&
               (m_solver.m_state[parent] & kTreeMask) == treeBits &&
               ((treeBits == kInSource ? open.in : open.out) >> d & 1) != 0 &&
               reachesTerminal(tiled);
    }
    // Remembers what it has found, so that each node is passed once.
    bool reachesTerminal(int tiled) {
        std::vector<int> chain;
        while ((m_solver.m_state[tiled] & kParentIsNeighbour) != 0 && !m_reachesTerminal[tiled]) {
            if (chain.size() > m_solver.m_grid.size()) {
                return false;
            }
            chain.push_back(tiled);
            tiled = m_solver.m_parent[tiled];
        }
        if ((m_solver.m_state[tiled] & kParentMask) == kNoParent) {
            return false;
        }
        for (const int passed : chain) {
            m_reachesTerminal[passed] = true;
        }
        return true;
    }

    // 5
    bool stepFits(int tiled, int state) const {
        if ((state & kOnPath) == 0) {
            return true;
        }
        const KeptPath& path =
            (state & kTreeMask) == kInSink ? m_solver.m_sinkPath : m_solver.m_sourcePath;
        const int step = m_solver.m_step[tiled];
        return step >= path.begin() && step < path.end() && path.tiled(step) == tiled;
    }
    template <int kTree>
    bool pathLeadsToRoot() const {
        const KeptPath& path = m_solver.pathOf<kTree>();
        for (int step = path.begin(); step < path.end(); ++step) {
            const int tiled = path.tiled(step);
            const int state = m_solver.m_state[tiled];
            if (step >= path.firstOrphan() && step <= path.lastOrphan()) {
                continue;
            }
            if ((state & kTreeMask) != kTree || (state & kOnPath) == 0 ||
                (state & kParentIsNeighbour) == 0 ||
                m_solver.m_parent[tiled] != path.tiled(step + 1)) {
                return false;
            }
        }
        return true;
    }

    const DenseSolver& m_solver;
    std::unordered_map<int, float> m_onPath;
    TiledArray<bool> m_reachesTerminal;
};

bool DenseSolver::invariantsHold() const {
    return Check(*this).holds();
}

// Looks after the first, second, fourth, eighth augmentation and so on, so that large graphs stay
// affordable.
bool DenseSolver::invariantsHoldAfterAugmentation() {
    ++m_augmentations;
    return (m_augmentations & (m_augmentations - 1)) != 0 || invariantsHold();
}
