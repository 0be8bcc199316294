// Takes back what a call that fails half-way recorded in the history.
#pragma once

#include <optional>

#include "history/slot_store.h"

// Remembers the ring's position and, if a redo could still reach it, the mask that a recorded one
// will overwrite. Unless committed, the destructor puts both back.
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
    std::optional<slot_store::SavedSlot> m_overwritten;
    bool m_committed = false;
};
