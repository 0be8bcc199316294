// A time-of-day clock under the test's control, for as long as an object lives. Without one the
// library sees the real time. One at a time.
#pragma once

#include <atomic>
#include <cstdint>

class FakeClock {
  public:
    // Every reading moves the clock on by `microsPerRead` afterwards.
    explicit FakeClock(std::int64_t micros, std::int64_t microsPerRead = 0) {
        s_micros = micros;
        s_step = microsPerRead;
        s_reads = 0;
        s_faked = true;
    }
    ~FakeClock() { s_faked = false; }
    FakeClock(const FakeClock&) = delete;
    FakeClock& operator=(const FakeClock&) = delete;

    static void set(std::int64_t micros) { s_micros = micros; }
    // Readings since the clock was made.
    static std::int64_t reads() { return s_reads; }
    // What the library's calls get: this clock's time, or the real one without it.
    static std::int64_t read();

  private:
    static inline std::atomic<bool> s_faked{false};
    static inline std::atomic<std::int64_t> s_micros{0};
    static inline std::atomic<std::int64_t> s_step{0};
    static inline std::atomic<std::int64_t> s_reads{0};
};
