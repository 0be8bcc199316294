// How long a request may take. Without a host's word it is ten seconds of the request's timer,
// which reads the time of day. A limit that a host sets is a deadline on the monotonic clock
// instead, which nobody turns forward.
//
// Threads: set and Running on the thread that makes the requests; the rest on any.
#pragma once

namespace request_limit {

// In seconds; 0 for none, below 0 for the ten seconds.
void set(double seconds);

// A host's request under way, from the moment when its marks are read. The deadline counts from
// here, and without a request there is none.
class Running {
  public:
    Running();
    ~Running();
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;
};

// Whether the request is out of time. `milliseconds` is what it has taken by its timer, and is
// looked at for the ten seconds only: when needsTimer() is false, nobody has to read the timer,
// and 0 will do.
bool isPassed(double milliseconds);
bool needsTimer();

// To be called by whoever ends the request because isPassed() said so. It is remembered until the
// next request, unless a cancel came first: then it was the cancel that ended this one.
void noteRanOut(bool wasCancelled);
bool hasRanOut();

}  // namespace request_limit
