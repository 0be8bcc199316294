#include "support/request_limit.h"

#include <algorithm>
#include <atomic>
#include <chrono>

namespace {

using Clock = std::chrono::steady_clock;

constexpr double kTimerLimitMs = 10000.0;
// What the clock can still count; longer limits are as good as this one.
constexpr double kLongestSeconds = 1e9;

enum class Kind { kTimer, kNone, kDeadline };

Kind kind = Kind::kTimer;
double limitSeconds = 0.0;
bool isRunning = false;
Clock::time_point deadline;
std::atomic<bool> ranOut{false};

}  // namespace

namespace request_limit {

void set(double seconds) {
    // Negated, so that what is not a number means the ten seconds.
    kind = !(seconds >= 0.0) ? Kind::kTimer : seconds > 0.0 ? Kind::kDeadline : Kind::kNone;
    limitSeconds = std::min(seconds, kLongestSeconds);
}

Running::Running() {
    ranOut = false;
    isRunning = true;
    if (kind == Kind::kDeadline) {
        deadline = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                      std::chrono::duration<double>(limitSeconds));
    }
}

Running::~Running() {
    isRunning = false;
}

bool isPassed(double milliseconds) {
    switch (kind) {
        case Kind::kTimer:
            return milliseconds > kTimerLimitMs;
        case Kind::kNone:
            return false;
        case Kind::kDeadline:
            return isRunning && Clock::now() > deadline;
    }
    return false;
}

bool needsTimer() {
    return kind == Kind::kTimer;
}

void noteRanOut(bool wasCancelled) {
    if (!wasCancelled) {
        ranOut = true;
    }
}

bool hasRanOut() {
    return ranOut;
}

}  // namespace request_limit
