// The mask history as a plain list: what undo, redo and direct edits must deliver.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

using Mask = std::vector<std::uint8_t>;  // host mask bytes

class HistoryModel {
  public:
    void clear() {
        m_masks.clear();
        m_shown = 0;
    }
    void record(Mask mask) {
        m_masks.resize(m_shown);
        m_masks.push_back(std::move(mask));
        if (m_masks.size() > kCapacity) {
            m_masks.pop_front();
        }
        m_shown = m_masks.size();
    }
    void stepBack() { m_shown -= m_shown > 0 ? 1 : 0; }
    void stepForward() { m_shown += canRedo() ? 1 : 0; }

    // Null before the first mask.
    const Mask* shown() const { return m_shown == 0 ? nullptr : &m_masks[m_shown - 1]; }
    bool canUndo() const { return m_shown > 1; }
    bool canRedo() const { return m_shown < m_masks.size(); }

  private:
    static constexpr std::size_t kCapacity = 31;

    std::deque<Mask> m_masks;
    std::size_t m_shown = 0;  // masks up to and with the one on display
};
