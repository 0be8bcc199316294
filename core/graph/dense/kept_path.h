// A path from one end of the edge where the trees met to the root of one tree, kept for the next
// augmentation. The capacities of its edges lie side by side, so that pushing flow along the path
// reads memory in order. While a step lies on the path its capacities are here, and those in the
// graph are out of date.
//
//     begin()          firstOrphan()           lastOrphan()                end()
//       o ---- o ---- o ---- x ---- o ---- o ---- x ---- o ---- o ---- o ---- root
//       the next walk from   the next walk goes   every walk that comes upon
//       the same end keeps   its own way here     these steps follows them
//       these steps          (the detour)
//
// That works because only orphans (x) change their parent.
//
// The steps lie in the middle of their arrays, with room on both sides. A detour that is longer or
// shorter than what it replaces moves the shorter of the two parts beside it.
#pragma once

#include <algorithm>
#include <cassert>
#include <cstring>
#include <vector>

#include "graph/dense/flow_lanes.h"

class KeptPath {
  public:
    // A node by both of its numbers.
    struct Place {
        int tiled;
        int node;
    };

    // The steps begin() .. end() - 1 lead from tiled(begin()) to the root, tiled(end()).
    int begin() const { return m_begin; }
    int end() const { return m_end; }
    Place root() const { return {tiled(m_end), m_rootNode}; }
    int tiled(int step) const {
        assert(step >= m_begin && step <= m_end);
        return m_tiled[static_cast<std::size_t>(step)];
    }
    // The edge of a step in the direction of the flow, and its capacities there and back.
    int slot(int step) const { return m_slots[indexOf(step)]; }
    float left(int step) const { return m_left[indexOf(step)]; }
    float back(int step) const { return m_back[indexOf(step)]; }

    // The step up to which a walk from `start` can keep the path.
    int keptFrom(int start) const { return tiled(m_begin) == start ? m_firstOrphan : m_begin; }

    // Whether a walk that comes upon a node can follow the path from there. `step` is where the
    // node was last laid; it may be out of date.
    bool joinsAt(int step, int tiled) const {
        return step > m_lastOrphan && step >= m_begin && step < m_end &&
               m_tiled[static_cast<std::size_t>(step)] == tiled;
    }

    // The detour collects the steps that a walk takes beside the path.
    void addToDetour(int tiled, int slot) { m_detour.push_back({tiled, slot}); }

    struct Steps {
        int first;
        int last;  // one past
    };
    struct Laid {
        Steps detour;  // new on the path, still without capacities
        Steps placed;  // the detour and all steps that have moved
    };

    // Puts the detour in the place of the steps `from` .. `to` - 1, which include all orphans.
    Laid lay(int from, int to, Place root) {
        assert(m_begin <= from && from <= to && to <= m_end);
        assert(from <= m_firstOrphan && (m_lastOrphan < to || to == m_end));
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
            m_tiled[step] = edge.tiled;
            m_slots[step] = edge.slot;
            ++step;
        }
        m_tiled[static_cast<std::size_t>(m_end)] = root.tiled;
        m_rootNode = root.node;
        if (shift != 0) {
            laid.placed = {m_begin, m_end};
        }
        m_detour.clear();
        m_firstOrphan = m_end;
        m_lastOrphan = kNoStep;
        return laid;
    }
    void setCapacities(int step, float left, float back) {
        m_left[indexOf(step)] = left;
        m_back[indexOf(step)] = back;
    }

    // The smallest capacity on the way; infinite on a path without steps.
    float smallest() const {
        return flow_lanes::smallest(m_left.data() + m_begin, m_end - m_begin);
    }

    // Pushes flow along the path. Calls changed(step), in order, for each step where one of the
    // two directions may have begun or ceased to carry flow.
    template <typename Changed>
    void push(float amount, Changed changed) {
        using flow_lanes::kLanes;
        float* const left = m_left.data();
        float* const back = m_back.data();
        const int end = m_end;
        for (int step = m_begin; step < end; step += kLanes) {
            unsigned lanes = flow_lanes::push(left + step, back + step, amount);
            if (end - step < kLanes) {
                lanes &= (1U << (end - step)) - 1;  // the rest lies behind the path
            }
            for (; lanes != 0; lanes &= lanes - 1) {
                changed(step + __builtin_ctz(lanes));
            }
        }
    }

    // The node of this step, or the root at end(), has lost its parent.
    void orphaned(int step) {
        assert(step >= m_begin && step <= m_end);
        m_firstOrphan = std::min(m_firstOrphan, step);
        m_lastOrphan = std::max(m_lastOrphan, step);
    }
    // The outermost steps that were orphaned since the path was laid; end() and -1 if none was.
    int firstOrphan() const { return m_firstOrphan; }
    int lastOrphan() const { return m_lastOrphan; }

  private:
    static constexpr int kNoStep = -1;
    static constexpr int kNobody = -1;
    static constexpr int kFirstRoom = 1024;

    struct Edge {
        int tiled;
        int slot;
    };

    std::size_t indexOf(int step) const {
        assert(step >= m_begin && step < m_end);
        return static_cast<std::size_t>(step);
    }

    // Moves the path so that the detour has room on either side, and returns by how far it moved.
    int makeRoom() {
        const auto size = static_cast<int>(m_slots.size());
        const auto detourLength = static_cast<int>(m_detour.size());
        if (m_begin >= detourLength && m_end + detourLength + flow_lanes::kLanes <= size) {
            return 0;
        }
        const int length = m_end - m_begin;
        const int begin = 2 * (length + detourLength) + kFirstRoom;
        moveTo(begin, m_tiled);
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
            moveOf(m_tiled, first, last, shift);
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

    std::vector<int> m_tiled = {kNobody};
    std::vector<int> m_slots;
    std::vector<float> m_left;
    std::vector<float> m_back;
    std::vector<Edge> m_detour;
    int m_begin = 0;
    int m_end = 0;
    int m_rootNode = 0;
    int m_firstOrphan = 0;
    int m_lastOrphan = kNoStep;
};
