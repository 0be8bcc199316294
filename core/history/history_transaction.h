// Takes back what a call that fails half-way recorded in the history.
#pragma once

#include <optional>

#include "history/slot_store.h"

// Remembers the ring's position and, where recording a mask would overwrite a redo branch, the
// mask that goes. Unless committed, the destructor puts both back.
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
    std::optional<slot_store::SavedSlot> m_overwritten;  // when it is still reachable
    bool m_committed = false;
};
