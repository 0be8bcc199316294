#include "session/stats.h"

#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;

std::string line(const std::string& stage, double milliseconds, std::optional<double> megabytes) {
    constexpr int kStageColumns = 28;
    char figures[64];
    std::snprintf(figures, sizeof figures, "%10.1f ms", milliseconds);
    std::string text = stage;
    text.resize(std::max<std::size_t>(stage.size(), kStageColumns), ' ');
    text += figures;
    if (megabytes) {
        std::snprintf(figures, sizeof figures, " %9.1f MB", *megabytes);
        text += figures;
    }
    return text + "\n";
}

Json figuresOf(double milliseconds, std::optional<double> megabytes) {
    Json figures = {{"milliseconds", milliseconds}};
    if (megabytes) {
        figures["peak_megabytes"] = *megabytes;
    }
    return figures;
}

}  // namespace

Stats::Stage::Stage(Stats& stats, std::string name)
    : m_stats(stats), m_name(std::move(name)), m_start(std::chrono::steady_clock::now()) {
    if (m_stats.m_meter != nullptr) {
        m_stats.m_meter->forgetPeak();
    }
}

Stats::Stage::~Stage() {
    const std::chrono::duration<double, std::milli> elapsed =
        std::chrono::steady_clock::now() - m_start;
    Entry entry{m_name, elapsed.count(), std::nullopt};
    if (m_stats.m_meter != nullptr) {
        entry.peakMegabytes = m_stats.m_meter->peakMegabytes();
    }
    m_stats.m_entries.push_back(std::move(entry));
}

Stats::Entry Stats::total() const {
    Entry total{"total", 0.0, std::nullopt};
    if (m_meter != nullptr) {
        total.peakMegabytes = 0.0;
    }
    for (const Entry& entry : m_entries) {
        total.milliseconds += entry.milliseconds;
        total.peakMegabytes = std::max(total.peakMegabytes, entry.peakMegabytes);
    }
    return total;
}

std::string Stats::text() const {
    std::string lines;
    for (const Entry& entry : m_entries) {
        lines += line(entry.stage, entry.milliseconds, entry.peakMegabytes);
    }
    const Entry all = total();
    return lines + line(all.stage, all.milliseconds, all.peakMegabytes);
}

std::string Stats::json() const {
    Json stages = Json::array();
    for (const Entry& entry : m_entries) {
        Json stage = {{"stage", entry.stage}};
        stage.update(figuresOf(entry.milliseconds, entry.peakMegabytes));
        stages.push_back(stage);
    }
    const Entry all = total();
    Json document = {{"stages", stages}};
    document.update(figuresOf(all.milliseconds, all.peakMegabytes));
    return document.dump(2) + "\n";
}
