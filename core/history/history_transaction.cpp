#include "history/history_transaction.h"

#include "history/undo_redo_history.h"

using History = VORNSEManageUndoRedo;

HistoryTransaction::HistoryTransaction(Step step)
    : m_bottom(History::m_bottom), m_current(History::m_current), m_top(History::m_top) {
    if (step == Step::kMove || !History::canRedo() || History::m_bitPlane == nullptr) {
        return;
    }
    m_slotBits.reserve(static_cast<std::size_t>(History::width) *
                       static_cast<std::size_t>(History::height));
    for (int x = 0; x < History::width; ++x) {
        for (int y = 0; y < History::height; ++y) {
            m_slotBits.push_back(((History::m_bitPlane[x][y] >> m_current) & 1U) != 0);
        }
    }
}

HistoryTransaction::~HistoryTransaction() {
    if (m_committed) {
        return;
    }
    History::m_bottom = m_bottom;
    History::m_current = m_current;
    History::m_top = m_top;
    const std::uint32_t bit = std::uint32_t{1} << m_current;
    std::size_t i = 0;
    for (int x = 0; x < History::width && !m_slotBits.empty(); ++x) {
        for (int y = 0; y < History::height; ++y, ++i) {
            std::uint32_t& word = History::m_bitPlane[x][y];
            word = (word & ~bit) | (m_slotBits[i] ? bit : 0U);
        }
    }
}
