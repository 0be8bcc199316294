#include "engine_log.h"

#include <android/log.h>

#include <atomic>
#include <cstring>
#include <mutex>
#include <utility>

namespace {

// The tag of errors that concern the host; leaks and the like are logged under others.
constexpr const char* kErrorTag = "Error";

std::atomic<bool> shown{false};
std::mutex errorAccess;  // the library logs from its own threads, too
std::string firstError;

void receive(const __android_logger_data* line, const char* message) {
    if (shown) {
        __android_log_stderr_logger(line, message);
    }
    const bool isError = line->priority >= ANDROID_LOG_ERROR && line->tag != nullptr &&
                         std::strcmp(line->tag, kErrorTag) == 0;
    const std::lock_guard<std::mutex> lock(errorAccess);
    if (isError && firstError.empty()) {
        firstError = message;
    }
}

}  // namespace

void keepEngineLog() {
    __android_log_set_logger(receive);
}

void showEngineLog() {
    shown = true;
}

std::string takeEngineError() {
    const std::lock_guard<std::mutex> lock(errorAccess);
    return std::exchange(firstError, std::string());
}
