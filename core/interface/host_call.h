// The guard that every exported call runs in: no exception leaves, and a call that cannot be
// carried out logs one line.
#pragma once

#include <new>
#include <opencv2/core.hpp>
#include <stdexcept>
#include <utility>

#include "support/log.h"

// A call that is refused before anything changed; `what` says why and what to do.
class HostError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Runs `body` and reports what it throws. True when it ran to its end.
template <typename Body>
bool guardedCall(const char* name, Body&& body) noexcept {
    try {
        std::forward<Body>(body)();
        return true;
    } catch (const HostError& error) {
        SEGCORE_LOG_ERROR("%s: %s", name, error.what());
    } catch (const std::bad_alloc&) {
        SEGCORE_LOG_ERROR("%s: out of memory", name);
    } catch (const cv::Exception& error) {
        if (error.code == cv::Error::StsNoMem) {
            SEGCORE_LOG_ERROR("%s: out of memory", name);
        } else {
            SEGCORE_LOG_ERROR("%s: imaging library error %d (%s)", name, error.code,
                              error.err.c_str());
        }
    } catch (const std::exception& error) {
        SEGCORE_LOG_ERROR("%s: %s", name, error.what());
    } catch (...) {
        SEGCORE_LOG_ERROR("%s: unknown error", name);
    }
    return false;
}
