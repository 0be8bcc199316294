#include "support/log_sink.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <mutex>

namespace {

constexpr int kLongestLine = 1024;

std::atomic<bool> used{false};
std::mutex access;  // of what follows, and of the host while it takes a line
log_sink::Receive receiver = nullptr;
void* receiverData = nullptr;
int least = 0;
thread_local bool isReceiving = false;

// Also when a host throws.
struct Receiving {
    Receiving() { isReceiving = true; }
    ~Receiving() { isReceiving = false; }
};

}  // namespace

namespace log_sink {

void set(Receive receive, void* user, int leastPriority) {
    const std::lock_guard<std::mutex> lock(access);
    receiver = receive;
    receiverData = user;
    least = leastPriority;
    used = receive != nullptr;
}

bool isSet() {
    return used.load(std::memory_order_relaxed);
}

bool isInside() {
    return isReceiving;
}

int print(int priority, const char* tag, const char* format, ...) {
    char line[kLongestLine];
    std::va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    if (isReceiving) {
        return length;
    }
    const std::lock_guard<std::mutex> lock(access);
    if (receiver != nullptr && priority >= least) {
        const Receiving receiving;
        try {
            receiver(priority, tag, line, receiverData);
        } catch (...) {  // NOLINT(bugprone-empty-catch)
            // Lines are also logged where nothing may be thrown, and there is nobody left to tell.
        }
    }
    return length;
}

}  // namespace log_sink
