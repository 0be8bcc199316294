// A path from one end of a meeting edge to the root of its search tree, with the capacities of its
// edges side by side. It stays laid between augmentations: only orphans change their parent, so what
// lies before the first orphan serves the next augmentation from the same end, and what lies after
// the last one serves every walk that comes upon it. While a step is laid, its capacities are here
// and not in the graph.
#pragma once

#include <algorithm>
#include <cstring>
#include <vector>

#include "graph/flow_lanes.h"

class LaidPath {
  public:
    // Steps 0 .. length() - 1 lead from node(0) to the root, node(length()).
    int length() const { return m_length; }
    int node(int step) const { return m_nodes[static_cast<std::size_t>(step)]; }
    // The edge of a step in the direction of the flow, and its capacities there and back.
    int slot(int step) const { return m_slots[static_cast<std::size_t>(step)]; }
    float left(int step) const { return m_left[static_cast<std::size_t>(step)]; }
    float back(int step) const { return m_back[static_cast<std::size_t>(step)]; }

    // Number of steps that a walk from `start` can keep.
    int keptFrom(int start) const { return m_nodes[0] == start ? m_firstOrphan : 0; }

    // Whether a walk that comes upon `node`, said to be at `step`, can follow the path from there.
    bool joinsAt(int step, int node) const {
        return step > m_lastOrphan && step < m_length &&
               m_nodes[static_cast<std::size_t>(step)] == node;
    }

    // A detour: the steps that a walk took beside the path.
    int detourLength() const { return m_detourLength; }
    void addToDetour(int node, int slot) {
        const auto step = static_cast<std::size_t>(m_detourLength);
        if (step == m_detour.size()) {
            m_detour.resize(std::max(2 * m_detour.size(), kFirstCapacity));
        }
        m_detour[step] = {node, slot};
        ++m_detourLength;
    }

    // Puts the detour in the place of the steps `from` .. `to` - 1 and forgets the orphans. The
    // detour's steps have no capacities yet; all others keep theirs.
    void lay(int from, int to, int root) {
        const int shift = from + m_detourLength - to;
        const int length = m_length + shift;
        reserve(static_cast<std::size_t>(length));
        if (shift != 0) {
            move(m_nodes, to, shift);
            move(m_slots, to, shift);
            move(m_left, to, shift);
            move(m_back, to, shift);
        }
        for (int i = 0; i < m_detourLength; ++i) {
            const Edge& edge = m_detour[static_cast<std::size_t>(i)];
            m_nodes[static_cast<std::size_t>(from + i)] = edge.node;
            m_slots[static_cast<std::size_t>(from + i)] = edge.slot;
        }
        m_length = length;
        m_nodes[static_cast<std::size_t>(m_length)] = root;
        m_detourLength = 0;
        m_firstOrphan = m_length;
        m_lastOrphan = kNoStep;
    }
    void setCapacities(int step, float left, float back) {
        m_left[static_cast<std::size_t>(step)] = left;
        m_back[static_cast<std::size_t>(step)] = back;
    }

    // The smallest capacity on the way; infinite on a path without steps.
    float smallest() const { return flow_lanes::smallest(m_left.data(), m_length); }

    // Pushes flow along the path; `changed(step)` in order for each step where a capacity did not
    // carry flow before or does not after.
    template <typename Changed>
    void push(float amount, Changed changed) {
        using flow_lanes::kLanes;
        int step = 0;
        for (; step + kLanes <= m_length; step += kLanes) {
            unsigned lanes = flow_lanes::push(&m_left[static_cast<std::size_t>(step)],
                                              &m_back[static_cast<std::size_t>(step)], amount);
            for (; lanes != 0; lanes &= lanes - 1) {
                changed(step + __builtin_ctz(lanes));
            }
        }
        for (; step < m_length; ++step) {
            if (flow_lanes::pushOne(m_left[static_cast<std::size_t>(step)],
                                    m_back[static_cast<std::size_t>(step)], amount)) {
                changed(step);
            }
        }
    }

    // The node of this step, or the root at length(), has lost its parent.
    void orphaned(int step) {
        m_firstOrphan = std::min(m_firstOrphan, step);
        m_lastOrphan = std::max(m_lastOrphan, step);
    }
    // The range of the steps orphaned since the path was laid; length() and -1 without any.
    int firstOrphan() const { return m_firstOrphan; }
    int lastOrphan() const { return m_lastOrphan; }

  private:
    static constexpr int kNoStep = -1;
    static constexpr int kNobody = -1;
    static constexpr std::size_t kFirstCapacity = 1024;

    struct Edge {
        int node;
        int slot;
    };

    void reserve(std::size_t length) {
        if (length > m_slots.size()) {
            const std::size_t capacity = std::max({length, 2 * m_slots.size(), kFirstCapacity});
            m_nodes.resize(capacity + 1);
            m_slots.resize(capacity);
            m_left.resize(capacity);
            m_back.resize(capacity);
        }
    }

    // Moves the steps from `first` on by `shift` places.
    template <typename T>
    void move(std::vector<T>& steps, int first, int shift) {
        T* const source = steps.data() + first;
        std::memmove(source + shift, source,
                     static_cast<std::size_t>(m_length - first) * sizeof(T));
    }

    // As long as the longest path so far.
    std::vector<int> m_nodes = {kNobody};
    std::vector<int> m_slots;
    std::vector<float> m_left;
    std::vector<float> m_back;
    std::vector<Edge> m_detour;
    int m_length = 0;
    int m_detourLength = 0;
    int m_firstOrphan = 0;
    int m_lastOrphan = kNoStep;
};
