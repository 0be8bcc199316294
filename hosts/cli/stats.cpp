#include "stats.h"

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>

namespace {

constexpr double kKilobytesInMegabyte = 1024.0;

double peakMegabytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / kKilobytesInMegabyte;
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

Stats::Stage::~Stage() {
    const std::chrono::duration<double, std::milli> elapsed =
        std::chrono::steady_clock::now() - m_start;
    m_stats.m_entries.push_back({m_name, elapsed.count(), peakMegabytes()});
}

std::string Stats::text() const {
    std::string lines;
    double total = 0.0;
    for (const Entry& entry : m_entries) {
        lines += line(entry.stage, entry.milliseconds, entry.peakMegabytes);
        total += entry.milliseconds;
    }
    return lines + line("total", total, peakMegabytes());
}

std::string Stats::json() const {
    nlohmann::ordered_json stages = nlohmann::ordered_json::array();
    double total = 0.0;
    for (const Entry& entry : m_entries) {
        stages.push_back({{"stage", entry.stage},
                          {"milliseconds", entry.milliseconds},
                          {"peak_megabytes", entry.peakMegabytes}});
        total += entry.milliseconds;
    }
    const nlohmann::ordered_json document = {
        {"stages", stages}, {"milliseconds", total}, {"peak_megabytes", peakMegabytes()}};
    return document.dump(2) + "\n";
}
