#include "support/fake_clock.h"

#include <sys/time.h>

#include <atomic>
#include <ctime>

namespace {

constexpr std::int64_t kMicrosPerSecond = 1000000;

std::atomic<bool> faked{false};
std::atomic<std::int64_t> clockMicros{0};
std::atomic<std::int64_t> step{0};
std::atomic<std::int64_t> readings{0};

std::int64_t currentMicros() {
    if (faked) {
        ++readings;
        return clockMicros.fetch_add(step);
    }
    timespec real{};
    clock_gettime(CLOCK_REALTIME, &real);
    return real.tv_sec * kMicrosPerSecond + real.tv_nsec / 1000;
}

}  // namespace

extern "C" int gettimeofday(timeval* __restrict result, void* __restrict /*zone*/) noexcept {
    const std::int64_t micros = currentMicros();
    result->tv_sec = static_cast<time_t>(micros / kMicrosPerSecond);
    result->tv_usec = static_cast<suseconds_t>(micros % kMicrosPerSecond);
    return 0;
}

FakeClock::FakeClock(std::int64_t micros, std::int64_t microsPerRead) {
    clockMicros = micros;
    step = microsPerRead;
    readings = 0;
    faked = true;
}

FakeClock::~FakeClock() {
    faked = false;
}

void FakeClock::set(std::int64_t micros) {
    clockMicros = micros;
}

std::int64_t FakeClock::reads() {
    return readings;
}
