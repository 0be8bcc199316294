// Timers on gettimeofday. Invariant: elapsed time is always measured from the last start, and a
// stopped timer keeps its reading until it is stopped or started again.
#include "support/timers.h"

#include <sys/time.h>

#include "support/log.h"
#include "support/tracked_memory.h"

CpuTimer* g_timer = nullptr;
CpuTimer* g_cancelTimer = nullptr;
CpuTimer* g_totalTimer = nullptr;
double g_t_TotalTime = 0.0;
double g_t_preProcess = 0.0;
double g_t_nLinksComputation = 0.0;
double g_t_tAndNLinks = 0.0;
double g_t_colEst = 0.0;
double g_t_colUpd = 0.0;
double g_t_maxflow = 0.0;
double g_t_postProcess = 0.0;

namespace {

constexpr std::int32_t kMicrosPerSecond = 1000000;

TimeOfDay now() {
    timeval time{};
    gettimeofday(&time, nullptr);
    return {static_cast<std::int32_t>(time.tv_sec), static_cast<std::int32_t>(time.tv_usec)};
}

double toMicros(const TimeOfDay& time) {
    return time.microseconds + time.seconds * static_cast<double>(kMicrosPerSecond);
}

double elapsed(CpuTimer* timer, double unitsPerMicrosecond) {
    if (timer == nullptr) {
        return -1.0 * unitsPerMicrosecond;
    }
    if (timer->m_stopped == 0) {
        timer->m_end = now();
    }
    timer->m_startMicros = toMicros(timer->m_start);
    timer->m_endMicros = toMicros(timer->m_end);
    return (timer->m_endMicros - timer->m_startMicros) * unitsPerMicrosecond;
}

}  // namespace

CpuTimer* create_timer() {
    return static_cast<CpuTimer*>(VORN_Calloc_Msg(1, sizeof(CpuTimer), "create_timer", 27));
}

void destroy_timer(CpuTimer* timer) {
    if (timer != nullptr) {
        VORN_Free_Msg(timer, "destroy_timer", 48);
    }
}

CpuTimer* init_timer() {
    g_timer = create_timer();
    return g_timer;
}

void exit_timer() {
    destroy_timer(g_timer);
}

void start_cpu_timer(CpuTimer* timer) {
    if (timer != nullptr) {
        timer->m_stopped = 0;
        timer->m_start = now();
    }
}

void stop_cpu_timer(CpuTimer* timer) {
    if (timer != nullptr) {
        timer->m_stopped = 1;
        timer->m_end = now();
    }
}

double get_elapsed_time_in_microsec(CpuTimer* timer) {
    return elapsed(timer, 1.0);
}

double get_elapsed_time_in_millisec(CpuTimer* timer) {
    return elapsed(timer, 0.001);
}

double get_elapsed_time_in_sec(CpuTimer* timer) {
    return elapsed(timer, 0.000001);
}

CGElapsedTime::CGElapsedTime(const char* name) : m_start(now()), m_name(name) {}

CGElapsedTime::~CGElapsedTime() {
    const TimeOfDay end = now();
    std::int32_t seconds = end.seconds - m_start.seconds;
    std::int32_t micros = end.microseconds - m_start.microseconds;
    if (micros < 0) {
        seconds -= 1;
        micros += kMicrosPerSecond;
    }
    const float milliseconds =
        static_cast<float>(seconds) * 1000.0F + static_cast<float>(micros) * 0.001F;
    SEGCORE_LOG(ANDROID_LOG_INFO, "GTime", "%s =%f", m_name, static_cast<double>(milliseconds));
}
