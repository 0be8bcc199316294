// Augmentation: the walks from the meeting edge to both roots, and the push along them.
#include "graph/dense/dense_solver.h"

using namespace node_state;

namespace {

void prefetch(const float* capacity) {
    __builtin_prefetch(capacity, 1);
}

}  // namespace

// Brings the directions of both ends up to date with an edge's capacities: from `node` in
// `direction` to `neighbour`, and back.
void DenseSolver::openOrClose(int node, int neighbour, int direction, float there, float back) {
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

// Pushes what the path through the edge from `sourceEnd` in `direction` to `sinkEnd` can carry.
void DenseSolver::augment(int sourceEnd, int sinkEnd, int direction) {
    const int sourceCell = m_grid.rowMajor(sourceEnd);
    const int slot = kSlotsPerNode * sourceCell + m_slotOffset[direction];
    prefetch(m_caps + slot);
    walkToRoots({sourceEnd, sourceCell}, {sinkEnd, sourceCell + m_cellOffset[direction]});
    const KeptPath::Place sinkRoot = m_sinkPath.root();
    const KeptPath::Place sourceRoot = m_sourcePath.root();
    float& sinkResidual = m_records[sinkRoot.cell].residualTerminalCap;
    float& sourceResidual = m_records[sourceRoot.cell].residualTerminalCap;
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
        makeOrphan(sinkRoot.node);
        m_sinkPath.orphaned(m_sinkPath.end());
    }
    pushFlow<kInSource>(m_sourcePath, bottleneck);
    sourceResidual -= bottleneck;
    if (sourceResidual == 0.0F) {
        makeOrphan(sourceRoot.node);
        m_sourcePath.orphaned(m_sourcePath.end());
    }
    m_graph.m_flow += bottleneck;
}

// The walk from one end of the meeting edge towards the root of its tree, up to where it can follow
// the path of the last augmentation. Flow runs along a child's parent edge in the sink tree and along
// its sister in the source tree.
template <int kTree>
class DenseSolver::Walk {
  public:
    Walk(DenseSolver& solver, KeptPath& path, KeptPath::Place start)
        : m_solver(solver),
          m_path(path),
          m_kept(path.keptFrom(start.node)),
          m_joined(path.end()),
          m_node(m_kept > path.begin() ? path.node(m_kept) : start.node),
          m_cell(m_node == start.node ? start.cell : solver.m_grid.rowMajor(m_node)) {}

    // One step; false at the root or back on the path.
    bool step() {
        const std::uint8_t state = m_solver.m_state[static_cast<std::size_t>(m_node)];
        const int code = state & kParentMask;
        if (code == kTerminalParent) {
            prefetch(&m_solver.m_records[m_cell].residualTerminalCap);
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
        const bool joins = m_joined < m_path.end();
        const KeptPath::Laid laid =
            m_path.lay(m_kept, m_joined, joins ? m_path.root() : KeptPath::Place{m_node, m_cell});
        const float* const caps = m_solver.m_caps;
        for (int step = laid.detour.first; step < laid.detour.last; ++step) {
            const int slot = m_path.slot(step);
            m_path.setCapacities(step, caps[slot], caps[slot ^ 1]);
            std::uint8_t& state = m_solver.m_state[static_cast<std::size_t>(m_path.node(step))];
            state = static_cast<std::uint8_t>(state | kOnPath);
        }
        for (int step = laid.placed.first; step < laid.placed.last; ++step) {
            m_solver.m_step[static_cast<std::size_t>(m_path.node(step))] = step;
        }
    }

  private:
    DenseSolver& m_solver;
    KeptPath& m_path;
    const int m_kept;
    int m_joined;
    int m_node;
    int m_cell;
};

// The walks wait for memory rather than for each other, so they go side by side. Both leave what they
// replace before either is laid: a node may go from one path to the other.
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
        std::uint8_t& state = m_state[static_cast<std::size_t>(path.node(step))];
        state = static_cast<std::uint8_t>(state & ~kOnPath);
    }
}

template <int kTree>
void DenseSolver::pushFlow(KeptPath& path, float amount) {
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
