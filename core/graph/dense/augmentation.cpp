// Augmentation: the walks from the edge where the trees meet to both roots, and the
// push along them.
#include "graph/dense/dense_solver.h"

using namespace node_state;

namespace {

void prefetch(const float* capacity) {
    __builtin_prefetch(capacity, 1);
}

}  // namespace

// Brings the open bits of both ends up to date with an edge's capacities: `there` from the node in
// `direction` to its neighbour, and `back`.
void DenseSolver::openOrClose(int tiled, int neighbour, int direction, float there, float back) {
    const auto set = [](std::uint8_t& directions, int bit, bool open) {
        const auto cleared = static_cast<std::uint8_t>(directions & ~(1U << bit));
        directions =
            static_cast<std::uint8_t>(cleared | static_cast<std::uint8_t>((open ? 1U : 0U) << bit));
    };
    const bool away = flow_lanes::carriesFlow(there);
    const bool home = flow_lanes::carriesFlow(back);
    const int opposite = direction::opposite(direction);
    OpenEdges& from = m_open[tiled];
    OpenEdges& to = m_open[neighbour];
    set(from.out, direction, away);
    set(from.in, direction, home);
    set(to.in, opposite, away);
    set(to.out, opposite, home);
}

// Pushes what the path through the edge from `sourceEnd` in `direction` to `sinkEnd` can carry.
void DenseSolver::augment(int sourceEnd, int sinkEnd, int direction) {
    const int sourceNode = m_grid.nodeOf(sourceEnd);
    const int slot = kSlotsPerNode * sourceNode + m_slotStep[direction];
    prefetch(m_caps + slot);
    walkToRoots({sourceEnd, sourceNode}, {sinkEnd, sourceNode + m_nodeStep[direction]});
    const KeptPath::Place sinkRoot = m_sinkPath.root();
    const KeptPath::Place sourceRoot = m_sourcePath.root();
    float& sinkResidual = m_records[sinkRoot.node].residualTerminalCap;
    float& sourceResidual = m_records[sourceRoot.node].residualTerminalCap;
    float bottleneck = m_caps[slot];
    for (const float room :
         {m_sinkPath.smallest(), -sinkResidual, m_sourcePath.smallest(), sourceResidual}) {
        bottleneck = room < bottleneck ? room : bottleneck;
    }
    assert(!(bottleneck <= 0.0F));  // it may be NaN

    m_caps[slot] -= bottleneck;
    m_caps[slot ^ 1] += bottleneck;
    openOrClose(sourceEnd, sinkEnd, direction, m_caps[slot], m_caps[slot ^ 1]);
    pushFlow<kInSink>(m_sinkPath, bottleneck);
    sinkResidual += bottleneck;
    if (sinkResidual == 0.0F) {
        makeOrphan(sinkRoot.tiled);
        m_sinkPath.orphaned(m_sinkPath.end());
    }
    pushFlow<kInSource>(m_sourcePath, bottleneck);
    sourceResidual -= bottleneck;
    if (sourceResidual == 0.0F) {
        makeOrphan(sourceRoot.tiled);
        m_sourcePath.orphaned(m_sourcePath.end());
    }
    m_graph.m_flow += bottleneck;
}

// The walk from one end of the meeting edge towards the root of its tree, up to where it can follow
// the path of the last augmentation. Flow runs along a child's parent edge in the sink tree, and
// against it in the source tree.
template <int kTree>
class DenseSolver::Walk {
  public:
    Walk(DenseSolver& solver, KeptPath& path, KeptPath::Place start)
        : m_solver(solver),
          m_path(path),
          m_kept(path.keptFrom(start.tiled)),
          m_joined(path.end()),
          m_tiled(m_kept > path.begin() ? path.tiled(m_kept) : start.tiled),
          m_node(m_tiled == start.tiled ? start.node : solver.m_grid.nodeOf(m_tiled)) {}

    // One step; false at the root or back on the path.
    bool step() {
        const std::uint8_t state = m_solver.m_state[m_tiled];
        if ((state & kParentMask) == kTerminalParent) {
            prefetch(&m_solver.m_records[m_node].residualTerminalCap);
            return false;
        }
        assert((state & kTreeMask) == kTree && (state & kParentIsNeighbour) != 0);
        if ((state & kOnPath) != 0) {
            const int step = m_solver.m_step[m_tiled];
            if (m_path.joinsAt(step, m_tiled)) {
                m_joined = step;
                return false;
            }
        }
        const int direction = directionOfParent(state);
        const int slot = (kSlotsPerNode * m_node + m_solver.m_slotStep[direction]) ^
                         (kTree == kInSource ? 1 : 0);
        prefetch(m_solver.m_caps + slot);
        m_path.addToDetour(m_tiled, slot);
        m_tiled += m_solver.m_grid.steps(m_tiled)[direction];
        m_node += m_solver.m_nodeStep[direction];
        return true;
    }

    // Hands the capacities of the steps that the detour replaces back to the graph.
    void leave() const { m_solver.takeOff(m_path, m_kept, m_joined); }

    void lay() {
        const bool joins = m_joined < m_path.end();
        const KeptPath::Laid laid =
            m_path.lay(m_kept, m_joined, joins ? m_path.root() : KeptPath::Place{m_tiled, m_node});
        const float* const caps = m_solver.m_caps;
        for (int step = laid.detour.first; step < laid.detour.last; ++step) {
            const int slot = m_path.slot(step);
            m_path.setCapacities(step, caps[slot], caps[slot ^ 1]);
            set(m_solver.m_state[m_path.tiled(step)], kOnPath);
        }
        for (int step = laid.placed.first; step < laid.placed.last; ++step) {
            m_solver.m_step[m_path.tiled(step)] = step;
        }
    }

  private:
    DenseSolver& m_solver;
    KeptPath& m_path;
    const int m_kept;
    int m_joined;
    int m_tiled;
    int m_node;
};

// Each walk waits for memory at every step, so the two go side by side. Both give up what they
// replace before either path is laid, because a node may go from one path to the other.
void DenseSolver::walkToRoots(KeptPath::Place sourceEnd, KeptPath::Place sinkEnd) {
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
void DenseSolver::takeOff(const KeptPath& path, int from, int to) {
    for (int step = from; step < to; ++step) {
        const int slot = path.slot(step);
        m_caps[slot] = path.left(step);
        m_caps[slot ^ 1] = path.back(step);
        clear(m_state[path.tiled(step)], kOnPath);
    }
}

template <int kTree>
void DenseSolver::pushFlow(KeptPath& path, float amount) {
    path.push(amount, [this, &path](int step) {
        const int tiled = path.tiled(step);
        const int direction = directionOfParent(m_state[tiled]);
        const float left = path.left(step);
        const float back = path.back(step);
        const bool towardsRoot = kTree == kInSink;
        const float fromChild = towardsRoot ? left : back;
        const float toChild = towardsRoot ? back : left;
        openOrClose(tiled, path.tiled(step + 1), direction, fromChild, toChild);
        if (left == 0.0F) {
            makeOrphan(tiled);
        }
    });
}
