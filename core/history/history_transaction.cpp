#include "history/history_transaction.h"

#include <algorithm>

#include "history/undo_redo_history.h"

using History = VORNSEManageUndoRedo;

namespace {

constexpr int kRun = 32;  // rows whose bits fill a word

// Calls visit(words, rows, run) for every run of every column, in the order that they are kept in.
template <typename Visit>
void forEachRun(Visit visit) {
    std::size_t run = 0;
    for (int x = 0; x < History::width; ++x) {
        for (int y = 0; y < History::height; y += kRun) {
            visit(History::m_bitPlane[x] + y, std::min(kRun, History::height - y), run++);
        }
    }
}

// One bit of each of kRun words. Most runs are all object or all background, which vectors tell.
std::uint32_t bitsOf(const std::uint32_t* words, int bit) {
    std::uint32_t all = ~std::uint32_t{0};
    std::uint32_t any = 0;
    for (int i = 0; i < kRun; ++i) {
        all &= words[i];
        any |= words[i];
    }
    if ((((all ^ any) >> bit) & 1U) == 0) {
        return ((any >> bit) & 1U) != 0 ? ~std::uint32_t{0} : 0;
    }
    std::uint32_t bits = 0;
    for (int i = 0; i < kRun; ++i) {
        bits |= ((words[i] >> bit) & 1U) << i;
    }
    return bits;
}

}  // namespace

HistoryTransaction::HistoryTransaction(Step step)
    : m_bottom(History::m_bottom), m_current(History::m_current), m_top(History::m_top) {
    if (step == Step::kMove || !History::canRedo() || History::m_bitPlane == nullptr) {
        return;
    }
    const auto runs = static_cast<std::size_t>((History::height + kRun - 1) / kRun);
    m_slotBits.resize(static_cast<std::size_t>(History::width) * runs);
    forEachRun([this](const std::uint32_t* words, int rows, std::size_t run) {
        std::uint32_t last[kRun] = {};
        if (rows < kRun) {
            std::copy_n(words, rows, last);
            words = last;
        }
        m_slotBits[run] = bitsOf(words, m_current);
    });
}

HistoryTransaction::~HistoryTransaction() {
    if (m_committed) {
        return;
    }
    History::m_bottom = m_bottom;
    History::m_current = m_current;
    History::m_top = m_top;
    if (m_slotBits.empty()) {
        return;
    }
    const std::uint32_t bit = std::uint32_t{1} << m_current;
    forEachRun([this, bit](std::uint32_t* words, int rows, std::size_t run) {
        for (int i = 0; i < rows; ++i) {
            words[i] = (words[i] & ~bit) | ((m_slotBits[run] >> i & 1U) << m_current);
        }
    });
}
