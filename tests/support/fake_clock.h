// A time-of-day clock under the test's control, for as long as an object lives. Without one the
// library sees the real time. One at a time.
#pragma once

#include <cstdint>

class FakeClock {
  public:
    // Every reading moves the clock on by `microsPerRead` afterwards.
    explicit FakeClock(std::int64_t micros, std::int64_t microsPerRead = 0);
    ~FakeClock();
    FakeClock(const FakeClock&) = delete;
    FakeClock& operator=(const FakeClock&) = delete;

    static void set(std::int64_t micros);
    // Readings since the clock was made.
    static std::int64_t reads();
};
