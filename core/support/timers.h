// Wall-clock timers on the time-of-day clock: one bounds a segmentation request, a scoped one logs
// how long a block took. A timer belongs to one thread at a time.
#pragma once

#include <cstdint>

#include "support/export.h"

// A reading of the clock, in the 32-bit form of the devices' time structure.
struct TimeOfDay {
    std::int32_t seconds;
    std::int32_t microseconds;
};

struct CpuTimer {
    TimeOfDay m_start;     // set by start_cpu_timer
    TimeOfDay m_end;       // set by stop_cpu_timer, refreshed by reading a running timer
    double m_startMicros;  // both written by every elapsed-time read
    double m_endMicros;
    int m_stopped;  // 1 after stop_cpu_timer, 0 after start_cpu_timer
};

SEGCORE_DATA_API extern CpuTimer* g_timer;        // of init_timer and exit_timer
SEGCORE_DATA_API extern CpuTimer* g_cancelTimer;  // of the running segmentation request
SEGCORE_DATA_API extern CpuTimer* g_totalTimer;

// Per-stage totals for hosts to fill; the library never writes them.
SEGCORE_DATA_API extern double g_t_TotalTime;
SEGCORE_DATA_API extern double g_t_preProcess;
SEGCORE_DATA_API extern double g_t_nLinksComputation;
SEGCORE_DATA_API extern double g_t_tAndNLinks;
SEGCORE_DATA_API extern double g_t_colEst;
SEGCORE_DATA_API extern double g_t_colUpd;
SEGCORE_DATA_API extern double g_t_maxflow;
SEGCORE_DATA_API extern double g_t_postProcess;

// A zeroed timer, owned by the caller until destroy_timer; null (and a log line) without memory.
SEGCORE_API CpuTimer* create_timer();
SEGCORE_API void destroy_timer(CpuTimer* timer);

// Create and release g_timer. exit_timer leaves the pointer as it is.
SEGCORE_API CpuTimer* init_timer();
SEGCORE_API void exit_timer();

// Null timers are ignored. A stopped timer may be stopped again for a later reading.
SEGCORE_API void start_cpu_timer(CpuTimer* timer);
SEGCORE_API void stop_cpu_timer(CpuTimer* timer);

// Time from start to stop, or to now while the timer runs. A null timer reads as minus one
// microsecond: a negative result marks a missing timer.
SEGCORE_API double get_elapsed_time_in_microsec(CpuTimer* timer);
SEGCORE_API double get_elapsed_time_in_millisec(CpuTimer* timer);
SEGCORE_API double get_elapsed_time_in_sec(CpuTimer* timer);

// Logs "NAME =MILLISECONDS" under the tag "GTime" when it goes out of scope. `name` is not copied.
class SEGCORE_API CGElapsedTime {
  public:
    explicit CGElapsedTime(const char* name);
    ~CGElapsedTime();
    CGElapsedTime(const CGElapsedTime&) = delete;
    CGElapsedTime& operator=(const CGElapsedTime&) = delete;

  private:
    TimeOfDay m_start;
    const char* m_name;
};
