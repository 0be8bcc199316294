// Where the library's log lines go when a host takes them itself.
//
// Threads: any; lines reach the host one at a time.
#pragma once

namespace log_sink {

using Receive = void (*)(int priority, const char* tag, const char* text, void* user);

// From here on lines of at least `leastPriority` go to `receive`, others nowhere. Null: to the
// platform's log again.
void set(Receive receive, void* user, int leastPriority);
bool isSet();
// Whether the calling thread is inside `receive`.
bool isInside();

// Longer lines are cut. A line that is logged while the thread is inside `receive` is dropped.
int print(int priority, const char* tag, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

}  // namespace log_sink
