// The one kind of error that a session ends a call with. Every message is one line that says what is
// wrong and what to do about it.
#pragma once

#include <stdexcept>
#include <string>

class UserError : public std::runtime_error {
  public:
    enum class Reason {
        kInput,  // a mark, a photograph or a file that does not fit; the message says which
        kCancelled,
        kOutOfTime,
        kEndedByObserver,
        kOutOfMemory,
        kEngine,  // refused for a reason inside
    };

    explicit UserError(const std::string& what, Reason why = Reason::kInput)
        : std::runtime_error(what), reason(why) {}

    Reason reason;
};
