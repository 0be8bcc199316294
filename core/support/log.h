// Diagnostics of the library. Every line goes to the host's callback where one is set, and through
// __android_log_print otherwise: the platform's on Android, liblog's elsewhere. These are macros,
// not functions, so that the format string reaches the logger (and the compiler's format check) as
// it is written at the call.
#pragma once

#include <android/log.h>

#include "support/log_sink.h"

#define SEGCORE_LOG(priority, tag, ...)                                               \
    static_cast<void>(log_sink::isSet() ? log_sink::print(priority, tag, __VA_ARGS__) \
                                        : __android_log_print(priority, tag, __VA_ARGS__))
#define SEGCORE_LOG_ERROR(...) SEGCORE_LOG(ANDROID_LOG_ERROR, "Error", __VA_ARGS__)
#define SEGCORE_LOG_INFO(...) SEGCORE_LOG(ANDROID_LOG_INFO, "Info", __VA_ARGS__)

// Reports an impossible image size. The call goes on: the imaging library refuses the size by
// itself, and the guard of the host call catches that.
inline void checkImageSize(int width, int height, const char* function, int line) {
    if (!(width >= 1 && height >= 1)) {
        SEGCORE_LOG_ERROR("MEMORY_CRASH : %s %d", function, line);
    }
}
