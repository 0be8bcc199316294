// From samples to a model: at most ten k-means passes, then one maximum-likelihood estimate per
// cluster. The model is built from the labels; the centres are not read.
#include "colour/model_init.h"

#include "colour/k_means.h"

namespace {
constexpr double kThreshold = 0.0;  // stop only when a pass reproduces the previous error
constexpr int kIterations = 10;
}  // namespace

void initModelWithKmeansVORN(const std::vector<pixelVal>& samples, VORNSEColorModel& model) {
    const std::size_t count = samples.size();
    if (count < kComponents) {
        return;
    }
    std::vector<double> values;
    values.reserve(count * kChannels);
    for (const pixelVal& sample : samples) {
        values.insert(values.end(), {sample.ch0, sample.ch1, sample.ch2});
    }
    std::vector<double*> rows(count);
    for (std::size_t j = 0; j < count; ++j) {
        rows[j] = &values[j * kChannels];
    }
    double centres[kComponents][kChannels];
    double* centreRows[kComponents] = {centres[0], centres[1], centres[2], centres[3], centres[4]};
    std::vector<int> labels(count);
    k_means(rows.data(), labels.data(), static_cast<int>(count), kThreshold, kIterations,
            centreRows);
    estimateComponents(ClusterInfo(labels.data(), samples.data(), count), count, model);
}

void initModel(const std::vector<pixelVal>& samples, VORNSEColorModel& model, int /*unused*/) {
    initModelWithKmeansVORN(samples, model);
}

void initModel(const std::vector<pixelVal>& samplesA, const std::vector<pixelVal>& samplesB,
               VORNSEColorModel& modelA, VORNSEColorModel& modelB, int unused) {
    initModel(samplesA, modelA, unused);
    initModel(samplesB, modelB, unused);
}
