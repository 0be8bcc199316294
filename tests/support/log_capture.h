// Everything that the library logs in an executable linked with the test support, in order. The
// logger is replaced at link time, so nothing reaches the system's log.
//
// Threads: any.
#pragma once

#include <ostream>
#include <string>
#include <vector>

struct LogLine {
    int priority;
    std::string tag;
    std::string text;

    bool operator==(const LogLine& other) const {
        return priority == other.priority && tag == other.tag && text == other.text;
    }
};

std::ostream& operator<<(std::ostream& out, const LogLine& line);

using Log = std::vector<LogLine>;

// The lines since the last call.
Log takeLog();
// The same, error lines under the tag "Error" only.
Log takeErrors();
inline void clearLog() {
    takeLog();
}
// Whether the calling thread is inside the logger.
bool isLogging();
