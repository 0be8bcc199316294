// What ends the program early besides the errors of a session.
#pragma once

#include <algorithm>
#include <stdexcept>
#include <string>

#include "session/errors.h"

// The user asked the program to stop.
class Interrupted : public std::runtime_error {
  public:
    explicit Interrupted(int received)
        : std::runtime_error("interrupted, nothing was written"), signal(received) {}
    int signal;
};

// A library's message as one line, which is what the program says about a failure.
inline std::string oneLine(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}
