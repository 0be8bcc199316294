// What ends a run of the program early. Every message is one line that says what is wrong and what
// to do about it.
#pragma once

#include <stdexcept>

class UserError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// The user asked the program to stop.
class Interrupted : public std::runtime_error {
  public:
    explicit Interrupted(int received)
        : std::runtime_error("interrupted, nothing was written"), signal(received) {}
    int signal;
};
