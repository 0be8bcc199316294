// A path from one end of a meeting edge to the root of its search tree, with the capacities of its
// edges side by side. It stays laid between augmentations: only orphans change their parent, so the
// path up to its first orphan serves the next augmentation from the same end. Until a step is taken
// off, its capacities are here and not in the graph.
#pragma once

#include <algorithm>
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

    // Relaying: the steps after the kept ones are taken off and new ones put on, up to a root. A new
    // step gets its capacities before finish().
    void keep(int steps) { m_length = steps; }
    void append(int node, int slot) {
        const auto step = static_cast<std::size_t>(m_length);
        if (step == m_slots.size()) {
            grow();
        }
        m_nodes[step] = node;
        m_slots[step] = slot;
        ++m_length;
    }
    void setCapacities(int step, float left, float back) {
        m_left[static_cast<std::size_t>(step)] = left;
        m_back[static_cast<std::size_t>(step)] = back;
    }
    void finish(int root) {
        m_nodes[static_cast<std::size_t>(m_length)] = root;
        m_firstOrphan = m_length;
        m_lastOrphan = kNoStep;
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
            float& leftover = m_left[static_cast<std::size_t>(step)];
            float& returned = m_back[static_cast<std::size_t>(step)];
            const bool open = flow_lanes::carriesFlow(returned);
            leftover -= amount;
            returned += amount;
            if (!open || !flow_lanes::carriesFlow(leftover) || !flow_lanes::carriesFlow(returned)) {
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

    void grow() {
        const std::size_t capacity = std::max(2 * m_slots.size(), kFirstCapacity);
        m_nodes.resize(capacity + 1);
        m_left.resize(capacity);
        m_back.resize(capacity);
        m_slots.resize(capacity);
    }

    // As long as the longest path so far.
    std::vector<int> m_nodes = {kNobody};
    std::vector<int> m_slots;
    std::vector<float> m_left;
    std::vector<float> m_back;
    int m_length = 0;
    int m_firstOrphan = 0;
    int m_lastOrphan = kNoStep;
};
