// How long a request may take. Without a host's word it is ten seconds of the request's timer, which
// reads the time of day. A limit that a host sets is a deadline on the monotonic clock instead, which
// nobody turns forward.
//
// Threads: set, start and stop on the thread that makes the requests; the rest on any.
#pragma once

namespace request_limit {

// In seconds; 0 for none, below 0 for the ten seconds.
void set(double seconds);

// Around a request. Outside of one there is no deadline.
void start();
void stop();

// Whether the request that took `milliseconds` by its timer so far is out of time, and whether that
// question can be answered without a timer.
bool isPassed(double milliseconds);
bool needsTimer();

// Remembers that it was the limit, and no cancel, that ended the request. start() forgets it.
void noteRanOut();
bool hasRanOut();

}  // namespace request_limit
