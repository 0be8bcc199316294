#include "support/fake_clock.h"

#include <sys/time.h>

#include <ctime>

constexpr std::int64_t kMicrosPerSecond = 1000000;

std::int64_t FakeClock::read() {
    if (s_faked) {
        ++s_reads;
        return s_micros.fetch_add(s_step);
    }
    timespec real{};
    clock_gettime(CLOCK_REALTIME, &real);
    return real.tv_sec * kMicrosPerSecond + real.tv_nsec / 1000;
}

extern "C" int gettimeofday(timeval* __restrict result, void* __restrict /*zone*/) noexcept {
    const std::int64_t micros = FakeClock::read();
    result->tv_sec = static_cast<time_t>(micros / kMicrosPerSecond);
    result->tv_usec = static_cast<suseconds_t>(micros % kMicrosPerSecond);
    return 0;
}
