// Seeded colour samples, and models with chosen components.
#pragma once

#include <gtest/gtest.h>
#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

#include "colour/color_model.h"
#include "history/marker.h"
#include "support/log_capture.h"

using Samples = std::vector<pixelVal>;

struct ColourTest : testing::Test {
    ColourTest() {
        VORNSEMarker::m_noiseLevel = 0.1;
        clearLog();
    }
};

inline bool operator==(pixelVal a, pixelVal b) {
    return a.ch0 == b.ch0 && a.ch1 == b.ch1 && a.ch2 == b.ch2;
}

// `distinct` values a channel: few make duplicates, ties and empty clusters.
inline Samples randomSamples(std::mt19937& random, std::size_t count, unsigned distinct) {
    Samples samples(count);
    for (pixelVal& sample : samples) {
        for (double* channel : {&sample.ch0, &sample.ch1, &sample.ch2}) {
            *channel = static_cast<double>(random() % distinct * (255 / distinct));
        }
    }
    return samples;
}

// Weight, mean (the same in all channels) and a diagonal covariance; not yet prepared.
inline void setComponent(VORNSEColorModel& model, int k, double weight, double mean,
                         double variance) {
    model.m_weight[k] = weight;
    std::fill_n(model.m_mean[k], kChannels, mean);
    std::fill_n(model.m_covariance[k], kChannels * kChannels, 0.0);
    for (int c = 0; c < kChannels; ++c) {
        model.m_covariance[k][(kChannels + 1) * c] = variance;
    }
}

inline void prepare(VORNSEColorModel& model) {
    model.setDeterminant();
    model.setInverseCovariance();
}

inline bool sameBytes(const VORNSEColorModel& a, const VORNSEColorModel& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

// The rows of doubles that the clustering takes.
inline std::vector<double*> rowsOf(Samples& samples) {
    std::vector<double*> rows;
    for (pixelVal& sample : samples) {
        rows.push_back(&sample.ch0);
    }
    return rows;
}
