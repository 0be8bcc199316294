#include "support/log_capture.h"

#include <android/log.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <utility>

namespace {

std::mutex guard;
Log captured;
thread_local bool logging = false;

}  // namespace

extern "C" int __android_log_print(int priority, const char* tag, const char* format, ...) {
    std::array<char, 1024> text{};
    std::va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);
    const std::lock_guard<std::mutex> lock(guard);
    logging = true;
    captured.push_back({priority, tag, text.data()});
    logging = false;
    return length;
}

bool isLogging() {
    return logging;
}

std::ostream& operator<<(std::ostream& out, const LogLine& line) {
    return out << line.priority << ' ' << line.tag << ": " << line.text;
}

Log takeLog() {
    const std::lock_guard<std::mutex> lock(guard);
    return std::exchange(captured, {});
}

Log takeErrors() {
    Log lines = takeLog();
    const auto isNoError = [](const LogLine& line) {
        return line.priority != ANDROID_LOG_ERROR || line.tag != "Error";
    };
    lines.erase(std::remove_if(lines.begin(), lines.end(), isNoError), lines.end());
    return lines;
}
