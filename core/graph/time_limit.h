// How long a search may take: the limit that both searches keep to.
#pragma once

#include "history/marker.h"
#include "support/timers.h"

// The request's clock against its limit. A stopped timer reads the same at every scan.
class TimeLimit {
  public:
    TimeLimit() : m_isSet(g_cancelTimer != nullptr) {
        if (m_isSet) {
            m_timer = *g_cancelTimer;
        }
        m_running = m_isSet && m_timer.m_stopped == 0;
        m_passed = !m_running && read();
    }

    // True when the search has to stop; a passed limit becomes a cancel, so that the engine ends its
    // iterations too.
    bool mustStop() {
        if (m_running ? read() : m_passed) {
            VORNSEMarker::m_exitApp = true;
        }
        return VORNSEMarker::m_exitApp.load(std::memory_order_relaxed);
    }

  private:
    bool read() {
        return get_elapsed_time_in_millisec(m_isSet ? &m_timer : nullptr) > kTimeLimitMs;
    }

    static constexpr double kTimeLimitMs = 10000.0;

    CpuTimer m_timer{};  // a copy: a reading writes to the timer, which other searches may share
    bool m_isSet;
    bool m_running = false;
    bool m_passed = false;
};
