// Measured times, what is reported of them, and the file they are recorded in.
#pragma once

#include <chrono>
#include <ctime>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

// What a call takes, in milliseconds: by the wall clock, and of processor time on all threads, which
// other programs on the machine disturb less.
struct Duration {
    double wall = 0.0;
    double processor = 0.0;
};

// Runs from its construction.
class Stopwatch {
  public:
    Duration elapsed() const {
        constexpr double kClocksPerMillisecond = CLOCKS_PER_SEC / 1000.0;
        const std::chrono::duration<double, std::milli> wall =
            std::chrono::steady_clock::now() - m_start;
        return {wall.count(),
                static_cast<double>(std::clock() - m_processorStart) / kClocksPerMillisecond};
    }

  private:
    std::clock_t m_processorStart = std::clock();
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

template <typename Call>
Duration durationOf(Call&& call) {
    const Stopwatch stopwatch;
    std::forward<Call>(call)();
    return stopwatch.elapsed();
}

// The value below which `share` (0 to 1) of the values lie, by nearest rank; not a number for none.
double percentile(std::vector<double> values, double share);
inline double median(const std::vector<double>& values) {
    return percentile(values, 0.5);
}

// One line a value: date, processor, commit, program, subject, megapixels, statistic, value, unit.
// Lines are appended, so that one file can hold the runs of several programs. The commit is what
// the environment variable SEGCORE_BENCH_COMMIT says.
class ResultFile {
  public:
    // An empty name records nothing.
    ResultFile(const std::string& file, std::string program);
    void add(const std::string& subject, double megapixels, const std::string& statistic,
             double value, const std::string& unit);

  private:
    std::ofstream m_out;
    std::string m_prefix;
};
