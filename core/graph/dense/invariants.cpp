// The invariants of dense_solver.h, looked at over the whole store. Only assertions ask.
#include "graph/dense/dense_solver.h"

using namespace node_state;

class DenseSolver::Check {
  public:
    // `mark` differs from those of earlier checks.
    Check(const DenseSolver& solver, int mark)
        : m_solver(solver), m_mark(static_cast<std::uint8_t>(mark)) {}

    bool holds() const {
        bool holds = pathLeadsToRoot<kInSource>() && pathLeadsToRoot<kInSink>();
        const bool orphans = !m_solver.m_orphans.empty();
        std::size_t active = 0;
        m_solver.forEachNode([&](int node, int tiled, int x, int y) {
            const int state = m_solver.m_state[tiled];
            active += (state & kActive) != 0 ? 1 : 0;
            holds = holds && openBitsFit(node, tiled, x, y) &&
                    (orphans || parentFits(node, tiled)) && stepFits(tiled, state);
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
            const int neighbour = tiled + m_solver.m_grid.steps(tiled)[d];
            const auto isOpen = [&](int either) {
                return inside && flow_lanes::carriesFlow(capacity(tiled, neighbour, either));
            };
            if ((open.out >> d & 1) != (isOpen(slot) ? 1 : 0) ||
                (open.in >> d & 1) != (isOpen(slot ^ 1) ? 1 : 0)) {
                return false;
            }
        }
        return true;
    }
    // Of a slot between two nodes, from the path that has it or from the graph.
    float capacity(int tiled, int neighbour, int slot) const {
        for (const KeptPath* path : {&m_solver.m_sourcePath, &m_solver.m_sinkPath}) {
            for (const int end : {tiled, neighbour}) {
                const int step = m_solver.m_step[end];
                if (isStep(*path, step, end) && path->slot(step) == slot) {
                    return path->left(step);
                }
                if (isStep(*path, step, end) && path->slot(step) == (slot ^ 1)) {
                    return path->back(step);
                }
            }
        }
        return m_solver.m_caps[slot];
    }
    static bool isStep(const KeptPath& path, int step, int tiled) {
        return step >= path.begin() && step < path.end() && path.tiled(step) == tiled;
    }

    // 2
    bool parentFits(int node, int tiled) const {
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
    // Marks the nodes of every chain, so that each is passed twice at most.
    bool reachesTerminal(int tiled) const {
        const TiledArray<std::uint8_t>& marks = m_solver.m_checked;
        const auto goesOn = [&](int at) {
            return (m_solver.m_state[at] & kParentIsNeighbour) != 0 && marks[at] != m_mark;
        };
        std::size_t length = 0;
        int end = tiled;
        for (; goesOn(end); end = m_solver.m_parent[end]) {
            if (++length > m_solver.m_grid.size()) {
                return false;
            }
        }
        for (int at = tiled; goesOn(at); at = m_solver.m_parent[at]) {
            marks[at] = m_mark;
        }
        return (m_solver.m_state[end] & kParentMask) != kNoParent;
    }

    // 5
    bool stepFits(int tiled, int state) const {
        if ((state & kOnPath) == 0) {
            return true;
        }
        const KeptPath& path =
            (state & kTreeMask) == kInSink ? m_solver.m_sinkPath : m_solver.m_sourcePath;
        return isStep(path, m_solver.m_step[tiled], tiled);
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
    const std::uint8_t m_mark;
};

// Without memory there is no check, since tests take memory away on purpose.
bool DenseSolver::invariantsHold() {
    if (!m_checked.allocated() && !m_checked.allocate(m_grid.size())) {
        return true;
    }
    ++m_checks;
    return Check(*this, m_checks).holds();
}

// Looks after the first, 16th, 256th augmentation and so on: requests have to end
// within their time.
bool DenseSolver::invariantsHoldAfterAugmentation() {
    const unsigned count = ++m_augmentations;
    const bool isPowerOf16 = (count & (count - 1)) == 0 && (count & 0x11111111U) != 0;
    return !isPowerOf16 || invariantsHold();
}
