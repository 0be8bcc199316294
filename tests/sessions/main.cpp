// Prints the digests of whole sessions, or compares them with a file of them:
//
//     segcore-session-digests [FILE]
//
// Exit 1 with the lines that differ. Results that are meant to change are renewed by
// `segcore-session-digests > tests/sessions/digests.txt`.
#include <fstream>
#include <iostream>
#include <set>

#include "recorder.h"
#include "support/fake_clock.h"

namespace {

int compare(const std::vector<std::string>& lines, const char* file) {
    std::ifstream stream(file);
    std::set<std::string> expected;
    for (std::string line; std::getline(stream, line);) {
        expected.insert(line);
    }
    std::size_t same = 0;
    for (const std::string& line : lines) {
        if (expected.erase(line) == 1) {
            ++same;
        } else {
            std::cout << "> " << line << "\n";
        }
    }
    for (const std::string& line : expected) {
        std::cout << "< " << line << "\n";
    }
    std::cout << same << " of " << lines.size() << " lines are as in " << file << "\n";
    return same > 0 && same == lines.size() && expected.empty() ? 0 : 1;
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
