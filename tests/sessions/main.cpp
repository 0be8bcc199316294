// Prints the digests of whole sessions, or compares them with a file of them:
//
//     segcore-session-digests [FILE]
//
// Exit 1 with the lines that differ. Results that are meant to change are renewed by
// `segcore-session-digests > tests/sessions/digests.txt`.
#include <algorithm>
#include <fstream>
#include <iostream>

#include "recorder.h"
#include "support/fake_clock.h"

namespace {

using Lines = std::vector<std::string>;

void printMissing(const Lines& lines, const Lines& from, const char* sign) {
    for (const std::string& line : lines) {
        if (std::find(from.begin(), from.end(), line) == from.end()) {
            std::cout << sign << line << "\n";
        }
    }
}

int compare(const Lines& lines, const char* file) {
    std::ifstream stream(file);
    Lines expected;
    for (std::string line; std::getline(stream, line);) {
        expected.push_back(line);
    }
    printMissing(lines, expected, "> ");
    printMissing(expected, lines, "< ");
    return lines == expected && !lines.empty() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    // A slow machine does not end a request.
    const FakeClock clock(0);
    Recorder recorder;
    recordSceneSessions(recorder);
    recordSampleSessions(recorder);
    if (argc > 1) {
        return compare(recorder.lines(), argv[1]);
    }
    for (const std::string& line : recorder.lines()) {
        std::cout << line << "\n";
    }
    return std::cout.flush() ? 0 : 1;
}
