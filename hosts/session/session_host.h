// What a session asks of the program around it, so that the session itself needs neither files nor
// signals. All calls come on the thread that applies the step.
#pragma once

#include <opencv2/core.hpp>
#include <string>

#include "session/errors.h"

class SessionHost {
  public:
    SessionHost() = default;
    virtual ~SessionHost() = default;
    SessionHost(const SessionHost&) = delete;
    SessionHost& operator=(const SessionHost&) = delete;

    // Called between the parts of a step; an exception of any type ends the step.
    virtual void throwIfInterrupted() {}

    // The decoded picture that a marks step names, 8 bits a channel, with all channels as stored
    // (blue, green, red, alpha). Throws UserError when there is none.
    virtual cv::Mat marksPicture(const std::string& name) {
        throw UserError(name + " cannot be read here; paint the marks as strokes");
    }
};
