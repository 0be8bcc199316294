#include "session/stats.h"

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>

namespace {

constexpr double kKilobytesInMegabyte = 1024.0;

// The peak of resident memory since it was last forgotten, or since the program started where the
// system does not forget.
double peakMegabytes() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        double kilobytes = 0.0;
        if (word == "VmHWM:" && status >> kilobytes) {
            return kilobytes / kKilobytesInMegabyte;
        }
    }
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / kKilobytesInMegabyte;
}

void forgetPeak() {
    constexpr char kForgetPeakOnly = '5';
    std::ofstream("/proc/self/clear_refs") << kForgetPeakOnly;
}

std::string line(const std::string& stage, double milliseconds, double megabytes) {
    constexpr int kStageColumns = 28;
    char figures[64];
    std::snprintf(figures, sizeof figures, "%10.1f ms %9.1f MB\n", milliseconds, megabytes);
    std::string padded = stage;
    padded.resize(std::max<std::size_t>(stage.size(), kStageColumns), ' ');
    return padded + figures;
}

}  // namespace

Stats::Stage::Stage(Stats& stats, std::string name)
    : m_stats(stats), m_name(std::move(name)), m_start(std::chrono::steady_clock::now()) {
    forgetPeak();
}

Stats::Stage::~Stage() {
    const std::chrono::duration<double, std::milli> elapsed =
        std::chrono::steady_clock::now() - m_start;
    m_stats.m_entries.push_back({m_name, elapsed.count(), peakMegabytes()});
}

std::string Stats::text() const {
    std::string lines;
    double total = 0.0;
    double peak = 0.0;
    for (const Entry& entry : m_entries) {
        lines += line(entry.stage, entry.milliseconds, entry.peakMegabytes);
        total += entry.milliseconds;
        peak = std::max(peak, entry.peakMegabytes);
    }
    return lines + line("total", total, peak);
}

std::string Stats::json() const {
    nlohmann::ordered_json stages = nlohmann::ordered_json::array();
    double total = 0.0;
    double peak = 0.0;
    for (const Entry& entry : m_entries) {
        stages.push_back({{"stage", entry.stage},
                          {"milliseconds", entry.milliseconds},
                          {"peak_megabytes", entry.peakMegabytes}});
        total += entry.milliseconds;
        peak = std::max(peak, entry.peakMegabytes);
    }
    const nlohmann::ordered_json document = {
        {"stages", stages}, {"milliseconds", total}, {"peak_megabytes", peak}};
    return document.dump(2) + "\n";
}
