// A single classification step of expectation-maximisation, not run to convergence: the cut between
// two steps changes the samples anyway.
#include "colour/model_update.h"

#include <memory>
#include <new>

#include "support/tracked_memory.h"

namespace {

struct LabelRelease {
    void operator()(int* labels) const { VORN_Free_Msg(labels, "updateModel", 741); }
};

}  // namespace

void updateModel(const std::vector<pixelVal>& samples, VORNSEColorModel& model) {
    const std::size_t count = samples.size();
    const std::unique_ptr<int, LabelRelease> labels(
        static_cast<int*>(VORN_Malloc_Msg(count * sizeof(int), "updateModel", 725)));
    if (labels == nullptr && count > 0) {
        throw std::bad_alloc();
    }
    for (std::size_t i = 0; i < count; ++i) {
        labels.get()[i] = model.assignCluster(samples[i]);
    }
    estimateComponents(ClusterInfo(labels.get(), samples.data(), count), count, model);
}

void updateModel(const std::vector<pixelVal>& samplesA, const std::vector<pixelVal>& samplesB,
                 VORNSEColorModel& modelA, VORNSEColorModel& modelB) {
    updateModel(samplesA, modelA);
    updateModel(samplesB, modelB);
}
