// What ends the program early besides the errors of a session.
#pragma once

#include <stdexcept>

#include "session/errors.h"

// The user asked the program to stop.
class Interrupted : public std::runtime_error {
  public:
    explicit Interrupted(int received)
        : std::runtime_error("interrupted, nothing was written"), signal(received) {}
    int signal;
};
