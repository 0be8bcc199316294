// Takes back what a call that fails half-way recorded in the history.
#pragma once

#include <cstdint>
#include <vector>

// Remembers the ring's position and, where recording a mask would overwrite a redo branch, the bits
// of the slot that it goes to. Unless committed, the destructor puts both back.
class HistoryTransaction {
  public:
    enum class Step { kMove, kRecord };

    explicit HistoryTransaction(Step step);
    ~HistoryTransaction();
    HistoryTransaction(const HistoryTransaction&) = delete;
    HistoryTransaction& operator=(const HistoryTransaction&) = delete;

    void commit() { m_committed = true; }

  private:
    int m_bottom;
    int m_current;
    int m_top;
    // Column by column, 32 rows a word; empty when nothing reachable is overwritten.
    std::vector<std::uint32_t> m_slotBits;
    bool m_committed = false;
};
