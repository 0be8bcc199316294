#include "history/history_transaction.h"

#include "history/undo_redo_history.h"

using History = VORNSEManageUndoRedo;

HistoryTransaction::HistoryTransaction(Step step)
    : m_bottom(History::m_bottom), m_current(History::m_current), m_top(History::m_top) {
    if (step == Step::kRecord && History::canRedo() && History::m_bitPlane != nullptr) {
        m_overwritten.emplace(m_current);
    }
}

HistoryTransaction::~HistoryTransaction() {
    if (m_committed) {
        return;
    }
    History::m_bottom = m_bottom;
    History::m_current = m_current;
    History::m_top = m_top;
    if (m_overwritten) {
        m_overwritten->putBack();
    }
}
