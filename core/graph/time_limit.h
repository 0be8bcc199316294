// How long a search may take: the limit that both searches keep to.
#pragma once

#include <mutex>

#include "history/marker.h"
#include "support/request_limit.h"
#include "support/timers.h"

// Compares the request's timer with its limit. Reading a timer also writes its fields, and the
// searches of blocks share the timer between threads. So each search reads a copy and puts the
// copy's fields back when it ends.
class TimeLimit {
  public:
    TimeLimit() : m_shared(g_cancelTimer) {
        if (m_shared != nullptr) {
            const std::lock_guard<std::mutex> lock(s_sharing);
            m_copy = *m_shared;
        }
    }
    ~TimeLimit() {
        if (m_shared != nullptr && m_wasRead) {
            const std::lock_guard<std::mutex> lock(s_sharing);
            m_shared->m_end = m_copy.m_end;
            m_shared->m_startMicros = m_copy.m_startMicros;
            m_shared->m_endMicros = m_copy.m_endMicros;
        }
    }
    TimeLimit(const TimeLimit&) = delete;
    TimeLimit& operator=(const TimeLimit&) = delete;

    // True when the search has to stop. A passed limit becomes a cancel, so that the engine
    // ends its iterations too.
    bool mustStop() {
        if (!request_limit::needsTimer()) {
            m_passed = request_limit::isPassed(0.0);
        } else if (m_isRunning || !m_wasRead) {
            read();
        }
        if (m_passed) {
            request_limit::noteRanOut(VORNSEMarker::m_exitApp.exchange(true));
        }
        return VORNSEMarker::m_exitApp.load(std::memory_order_relaxed);
    }

  private:
    // A stopped timer reads the same every time, so one reading is enough.
    void read() {
        CpuTimer* const timer = m_shared != nullptr ? &m_copy : nullptr;
        m_passed = request_limit::isPassed(get_elapsed_time_in_millisec(timer));
        m_isRunning = timer != nullptr && timer->m_stopped == 0;
        m_wasRead = true;
    }

    static inline std::mutex s_sharing;

    CpuTimer* const m_shared;
    CpuTimer m_copy{};
    bool m_isRunning = false;
    bool m_wasRead = false;
    bool m_passed = false;
};
