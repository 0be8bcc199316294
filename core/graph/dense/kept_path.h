// A path from one end of a meeting edge to the root of its search tree, with the capacities of its
// edges side by side. It stays laid between augmentations: only orphans change their parent, so what
// lies before the first orphan serves the next augmentation from the same end, and what lies after
// the last one serves every walk that comes upon it. While a step is laid, its capacities are here
// and not in the graph.
//
// The steps lie in the middle of their arrays, with room before and after: when a detour is longer or
// shorter than what it replaces, only the shorter part of the rest moves.
#pragma once

#include <algorithm>
#include <cstring>
#include <vector>

#include "graph/dense/flow_lanes.h"

class KeptPath {
  public:
    // A node by its tiled number and its number in the graph.
    struct Place {
        int node;
        int cell;
    };

    // Steps begin() .. end() - 1 lead from node(begin()) to the root, node(end()).
    int begin() const { return m_begin; }
    int end() const { return m_end; }
    Place root() const { return {node(m_end), m_rootCell}; }
    int node(int step) const { return m_nodes[static_cast<std::size_t>(step)]; }
    // The edge of a step in the direction of the flow, and its capacities there and back.
    int slot(int step) const { return m_slots[static_cast<std::size_t>(step)]; }
    float left(int step) const { return m_left[static_cast<std::size_t>(step)]; }
    float back(int step) const { return m_back[static_cast<std::size_t>(step)]; }

    // The step up to which a walk from `start` can keep the path.
    int keptFrom(int start) const { return node(m_begin) == start ? m_firstOrphan : m_begin; }

    // Whether a walk that comes upon `node`, said to be at `step`, can follow the path from there.
    bool joinsAt(int step, int node) const {
        return step > m_lastOrphan && step >= m_begin && step < m_end &&
               m_nodes[static_cast<std::size_t>(step)] == node;
    }

    // A detour: the steps that a walk took beside the path.
    void addToDetour(int node, int slot) { m_detour.push_back({node, slot}); }

    struct Steps {
        int first;
        int last;  // one past
    };
    struct Laid {
        Steps detour;  // they have no capacities yet, all others keep theirs
        Steps placed;  // with those that moved
    };

    // Puts the detour in the place of the steps `from` .. `to` - 1 and forgets the orphans.
    Laid lay(int from, int to, Place root) {
        const int shift = makeRoom();
        from += shift;
        to += shift;
        const auto detourLength = static_cast<int>(m_detour.size());
        const int longer = detourLength - (to - from);
        Laid laid{};
        if (from - m_begin <= m_end - to) {
            move(m_begin, from, -longer);
            m_begin -= longer;
            laid.detour = {to - detourLength, to};
            laid.placed = {longer == 0 ? laid.detour.first : m_begin, to};
        } else {
            move(to, m_end, longer);
            m_end += longer;
            laid.detour = {from, from + detourLength};
            laid.placed = {from, longer == 0 ? laid.detour.last : m_end};
        }
        auto step = static_cast<std::size_t>(laid.detour.first);
        for (const Edge& edge : m_detour) {
            m_nodes[step] = edge.node;
            m_slots[step] = edge.slot;
            ++step;
        }
        m_nodes[static_cast<std::size_t>(m_end)] = root.node;
        m_rootCell = root.cell;
        if (shift != 0) {
            laid.placed = {m_begin, m_end};
        }
        m_detour.clear();
        m_firstOrphan = m_end;
        m_lastOrphan = kNoStep;
        return laid;
    }
    void setCapacities(int step, float left, float back) {
        m_left[static_cast<std::size_t>(step)] = left;
        m_back[static_cast<std::size_t>(step)] = back;
    }

    // The smallest capacity on the way; infinite on a path without steps.
    float smallest() const {
        return flow_lanes::smallest(m_left.data() + m_begin, m_end - m_begin);
    }

    // Pushes flow along the path; `changed(step)` in order for each step where a capacity did not
    // carry flow before or does not after.
    template <typename Changed>
    void push(float amount, Changed changed) {
        using flow_lanes::kLanes;
        float* const left = m_left.data();
        float* const back = m_back.data();
        const int end = m_end;
        for (int step = m_begin; step < end; step += kLanes) {
            unsigned lanes = flow_lanes::push(left + step, back + step, amount);
            if (end - step < kLanes) {
                lanes &= (1U << (end - step)) - 1;  // behind the path is nothing to tell of
            }
            for (; lanes != 0; lanes &= lanes - 1) {
                changed(step + __builtin_ctz(lanes));
            }
        }
    }

    // The node of this step, or the root at end(), has lost its parent.
    void orphaned(int step) {
        m_firstOrphan = std::min(m_firstOrphan, step);
        m_lastOrphan = std::max(m_lastOrphan, step);
    }
    // The range of the steps orphaned since the path was laid; end() and -1 without any.
    int firstOrphan() const { return m_firstOrphan; }
    int lastOrphan() const { return m_lastOrphan; }

  private:
    static constexpr int kNoStep = -1;
    static constexpr int kNobody = -1;
    static constexpr int kFirstRoom = 1024;

    struct Edge {
        int node;
        int slot;
    };

    // Moves everything to where the detour has room on either side; by how much.
    int makeRoom() {
        const auto size = static_cast<int>(m_slots.size());
        const auto detourLength = static_cast<int>(m_detour.size());
        if (m_begin >= detourLength && m_end + detourLength + flow_lanes::kLanes <= size) {
            return 0;
        }
        const int length = m_end - m_begin;
        const int begin = 2 * (length + detourLength) + kFirstRoom;
        moveTo(begin, m_nodes);
        moveTo(begin, m_slots);
        moveTo(begin, m_left);
        moveTo(begin, m_back);
        const int shift = begin - m_begin;
        m_begin += shift;
        m_end += shift;
        return shift;
    }
    template <typename T>
    void moveTo(int begin, std::vector<T>& steps) const {
        std::vector<T> moved(static_cast<std::size_t>(2 * begin));
        std::copy(steps.begin() + m_begin, steps.begin() + m_end, moved.begin() + begin);
        steps.swap(moved);
    }

    void move(int first, int last, int shift) {
        if (shift != 0 && first != last) {
            moveOf(m_nodes, first, last, shift);
            moveOf(m_slots, first, last, shift);
            moveOf(m_left, first, last, shift);
            moveOf(m_back, first, last, shift);
        }
    }
    template <typename T>
    static void moveOf(std::vector<T>& steps, int first, int last, int shift) {
        T* const source = steps.data() + first;
        std::memmove(source + shift, source, static_cast<std::size_t>(last - first) * sizeof(T));
    }

    std::vector<int> m_nodes = {kNobody};
    std::vector<int> m_slots;
    std::vector<float> m_left;
    std::vector<float> m_back;
    std::vector<Edge> m_detour;
    int m_begin = 0;
    int m_end = 0;
    int m_rootCell = 0;
    int m_firstOrphan = 0;
    int m_lastOrphan = kNoStep;
};
