// The guard that every exported call runs in: no exception leaves, a call that cannot be carried
// out logs one line, and what became of it is kept for segcore_last_status.
#pragma once

#include <cstdio>
#include <new>
#include <opencv2/core.hpp>
#include <stdexcept>
#include <utility>

#include "interface/call_status.h"
#include "interface/segmentation_core.h"
#include "support/log.h"

// A call that is refused before anything changed; `what` says why and what to do.
class HostError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Whether the host's observer is being called.
bool isInsideObserver() noexcept;

// False, with a log line, for a call from inside the observer or the host's log: the call that made
// them is still under way. Its status is not touched.
inline bool admitsCall(const char* name) noexcept {
    if (log_sink::isInside()) {
        return false;  // such a line would be dropped
    }
    if (isInsideObserver()) {
        SEGCORE_LOG_ERROR("%s: refused inside the observer", name);
        return false;
    }
    return true;
}

// Logs why a call failed, and keeps it as its status.
inline void reportFailure(const char* name, int status, const char* reason) noexcept {
    SEGCORE_LOG_ERROR("%s: %s", name, reason);
    call_status::set(status, reason);
}

// Runs `body` and reports what it throws; then `after`, whatever became of it. Nothing of a call
// that is not admitted.
template <typename Body, typename After>
void guardedCall(const char* name, Body&& body, After&& after) noexcept {
    if (!admitsCall(name)) {
        return;
    }
    call_status::set(SEGCORE_DONE);
    try {
        std::forward<Body>(body)();
    } catch (const HostError& error) {
        reportFailure(name, SEGCORE_REFUSED, error.what());
    } catch (const std::bad_alloc&) {
        reportFailure(name, SEGCORE_OUT_OF_MEMORY, "out of memory");
    } catch (const cv::Exception& error) {
        if (error.code == cv::Error::StsNoMem) {
            reportFailure(name, SEGCORE_OUT_OF_MEMORY, "out of memory");
        } else {
            char reason[call_status::kLongestReason];
            std::snprintf(reason, sizeof reason, "imaging library error %d (%s)", error.code,
                          error.err.c_str());
            SEGCORE_LOG_ERROR("%s: imaging library error %d (%s)", name, error.code,
                              error.err.c_str());
            call_status::set(SEGCORE_REFUSED, reason);
        }
    } catch (const std::exception& error) {
        reportFailure(name, SEGCORE_REFUSED, error.what());
    } catch (...) {
        reportFailure(name, SEGCORE_REFUSED, "unknown error");
    }
    std::forward<After>(after)();
}

template <typename Body>
void guardedCall(const char* name, Body&& body) noexcept {
    guardedCall(name, std::forward<Body>(body), [] {});
}
