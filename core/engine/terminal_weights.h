// Terminal weights of a pixel that the colour models decide.
#pragma once

#include <cmath>
#include <cstdint>
#include <vector>

#include "colour/color_model.h"
#include "colour/training_data.h"

// Ties a marked pixel to its terminal: large beside the other capacities, deliberately finite.
constexpr float kHardWeight = 1000.0F;

struct TerminalWeights {
    double source;
    double sink;
};

// Minus the log-likelihood under the opposite model, without clamping: a likelihood of 0 gives an
// infinite capacity, which the graph carries.
inline TerminalWeights modelWeights(const VORNSEColorModel& foreground,
                                    const VORNSEColorModel& background, pixelVal sample) {
    const double pb = GMMProb(background, sample);
    const double pf = GMMProb(foreground, sample);
    return {-std::log(pb), -std::log(pf)};
}

struct TerminalCapacities {
    float source;
    float sink;
};

// Remembers the capacities of samples for as long as the models stay the same: a
// photograph repeats its colours.
class TerminalWeightCache {
  public:
    using Rule = TerminalWeights (*)(const VORNSEColorModel& foreground,
                                     const VORNSEColorModel& background, pixelVal sample);

    // The models outlive the cache and do not change during its life.
    TerminalWeightCache(const VORNSEColorModel& foreground, const VORNSEColorModel& background,
                        Rule rule)
        : m_foreground(foreground), m_background(background), m_rule(rule), m_entries(kEntries) {}

    TerminalCapacities operator()(SampleBytes sample) {
        const std::uint32_t colour = static_cast<std::uint32_t>(sample.ch0) << 16 |
                                     static_cast<std::uint32_t>(sample.ch1) << 8 | sample.ch2;
        Entry& entry = m_entries[(colour * kSpread) >> (32 - kEntryBits)];
        if (entry.key != colour + 1) {
            const TerminalWeights weights = m_rule(m_foreground, m_background, sample.value());
            entry = {colour + 1,
                     {static_cast<float>(weights.source), static_cast<float>(weights.sink)}};
        }
        return entry.capacities;
    }

  private:
    struct Entry {
        std::uint32_t key = 0;  // colour + 1; 0 = empty
        TerminalCapacities capacities{};
    };
    static constexpr int kEntryBits = 16;
    static constexpr std::size_t kEntries = std::size_t{1} << kEntryBits;
    static constexpr std::uint32_t kSpread = 2654435769U;  // 2^32 over the golden ratio

    const VORNSEColorModel& m_foreground;
    const VORNSEColorModel& m_background;
    Rule m_rule;
    std::vector<Entry> m_entries;
};
