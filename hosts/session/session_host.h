// What a session asks of the program around it, so that the session itself needs neither files nor
// signals. All calls come on the thread that applies the step.
#pragma once

#include <opencv2/core.hpp>
#include <string>

#include "session/errors.h"

// Where a request is. A step makes several of them, one after the other, and each goes from 0 to 1. A
// first box begins with small ones on a copy of the photograph.
struct RequestProgress {
    double fraction = 0.0;  // of the request's time, 0 to 1, estimated
    // The result as it is found, some hundreds of pixels wide, CV_8UC1, 255 object; empty but once in
    // a request. A working pixel (x, y) lies at photograph pixel (x * width / its width, y likewise).
    cv::Mat workingMask;
};

class SessionHost {
  public:
    SessionHost() = default;
    virtual ~SessionHost() = default;
    SessionHost(const SessionHost&) = delete;
    SessionHost& operator=(const SessionHost&) = delete;

    // Called between the parts of a step; an exception of any type ends the step.
    virtual void throwIfInterrupted() {}

    // Called from inside a request, some dozens of times; a step's first working mask is what a host
    // shows at once. False ends the step, which then throws UserError for the reason
    // kEndedByObserver; an exception ends it, too, and is what the step throws.
    virtual bool onProgress(const RequestProgress& /*progress*/) { return true; }

    // The decoded picture that a marks step names, 8 bits a channel, with all channels as stored
    // (blue, green, red, alpha). Throws UserError when there is none.
    virtual cv::Mat marksPicture(const std::string& name) {
        throw UserError(name + " cannot be read here; paint the marks as strokes");
    }
};
