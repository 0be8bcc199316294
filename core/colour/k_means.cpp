// k-means++ seeding (D. Arthur and S. Vassilvitskii, "k-means++: The Advantages of Careful
// Seeding", SODA 2007) and Lloyd's passes. Sums are kept per thread and added in thread order, so
// the result does not depend on scheduling. Invariant at the end: labels are those of the last
// assignment pass, with every cluster that it left empty given its own seed sample.
#include "colour/k_means.h"

#include <pthread.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <vector>

#include "colour/color_model.h"
#include "support/log.h"

namespace {

constexpr int kThreads = 4;
constexpr double kRandScale = 4.656612873077393e-10;  // 2^-31: rand() to [0, 1)

double squaredDistance(const double* a, const double* b) {
    double sum = 0.0;
    for (int c = 0; c < kChannels; ++c) {
        const double d = a[c] - b[c];
        sum += d * d;
    }
    return sum;
}

// Converting a total of more than 32 bits directly would be undefined. This keeps its low
// bits, on every platform.
unsigned int seedFrom(double total) {
    return static_cast<unsigned int>(static_cast<std::uint64_t>(total));
}

// The per-thread partial results with the pointer tables that the workers index.
struct PartialSums {
    double sumValues[kComponents][kThreads][kChannels];
    double countValues[kComponents][kThreads];
    double distances[kThreads];
    double* sumRows[kComponents][kThreads];
    double** sums[kComponents];
    double* counts[kComponents];

    void clear() {
        for (int k = 0; k < kComponents; ++k) {
            sums[k] = sumRows[k];
            counts[k] = countValues[k];
            for (int t = 0; t < kThreads; ++t) {
                sumRows[k][t] = sumValues[k][t];
                countValues[k][t] = 0.0;
                std::fill(std::begin(sumValues[k][t]), std::end(sumValues[k][t]), 0.0);
            }
        }
        std::fill(std::begin(distances), std::end(distances), 0.0);
    }
};

void runWorkers(KMeansWorker (&workers)[kThreads]) {
    pthread_t threads[kThreads];
    bool started[kThreads];
    for (int t = 0; t < kThreads; ++t) {
        started[t] = pthread_create(&threads[t], nullptr, findMinDistance, &workers[t]) == 0;
        if (!started[t]) {
            SEGCORE_LOG_ERROR("k_means: cannot start thread %d, its share runs on the caller", t);
            findMinDistance(&workers[t]);
        }
    }
    for (int t = 0; t < kThreads; ++t) {
        if (started[t]) {
            pthread_join(threads[t], nullptr);
        }
    }
}

}  // namespace

void chooseCentersKMeanspp(double** data, int n, int k, int* indices) {
    std::vector<double> nearest(static_cast<std::size_t>(n));
    std::srand(static_cast<unsigned int>(n));
    indices[0] = static_cast<int>(n * kRandScale * std::rand());
    double total = 0.0;
    for (int j = 0; j < n; ++j) {
        nearest[static_cast<std::size_t>(j)] = squaredDistance(data[j], data[indices[0]]);
        total += nearest[static_cast<std::size_t>(j)];
    }
    for (int c = 1; c < k; ++c) {
        std::srand(seedFrom(total));
        double target = total * kRandScale * std::rand();
        int chosen = 0;
        while (chosen < n - 1 && target > nearest[static_cast<std::size_t>(chosen)]) {
            target -= nearest[static_cast<std::size_t>(chosen)];
            ++chosen;
        }
        indices[c] = chosen;
        total = 0.0;
        for (int j = 0; j < n; ++j) {
            double& distance = nearest[static_cast<std::size_t>(j)];
            distance = std::min(distance, squaredDistance(data[j], data[chosen]));
            total += distance;
        }
    }
}

void* findMinDistance(void* argument) {
    const KMeansWorker& worker = *static_cast<const KMeansWorker*>(argument);
    const int chunk = worker.n / kThreads;
    const int start = worker.thread * chunk;
    const int end = worker.thread == kThreads - 1 ? worker.n : start + chunk;
    for (int j = start; j < end; ++j) {
        const double* sample = worker.data[j];
        int best = 0;
        double bestDistance = squaredDistance(sample, worker.centres[0]);
        for (int k = 1; k < kComponents; ++k) {
            const double distance = squaredDistance(sample, worker.centres[k]);
            if (distance < bestDistance) {
                bestDistance = distance;
                best = k;
            }
        }
        worker.labels[j] = best;
        double* sum = worker.sums[best][worker.thread];
        for (int c = 0; c < kChannels; ++c) {
            sum[c] += sample[c];
        }
        worker.counts[best][worker.thread] += 1.0;
        worker.distances[worker.thread] += bestDistance;
    }
    return nullptr;
}

void k_means(double** data, int* labels, int n, double threshold, int maxIterations,
             double** centreBuffer) {
    int seeds[kComponents];
    chooseCentersKMeanspp(data, n, kComponents, seeds);
    for (int k = 0; k < kComponents; ++k) {
        std::copy(data[seeds[k]], data[seeds[k]] + kChannels, centreBuffer[k]);
    }
    PartialSums partial;
    double previous = std::numeric_limits<double>::max();
    for (int iteration = 1;; ++iteration) {
        partial.clear();
        KMeansWorker workers[kThreads];
        for (int t = 0; t < kThreads; ++t) {
            workers[t] = {data,           centreBuffer,      labels, n, partial.sums,
                          partial.counts, partial.distances, t};
        }
        runWorkers(workers);

        for (int k = 0; k < kComponents; ++k) {
            double count = 0.0;
            double sum[kChannels] = {};
            for (int t = 0; t < kThreads; ++t) {
                count += partial.countValues[k][t];
                for (int c = 0; c < kChannels; ++c) {
                    sum[c] += partial.sumValues[k][t][c];
                }
            }
            if (count > 0.0) {
                for (int c = 0; c < kChannels; ++c) {
                    centreBuffer[k][c] = sum[c] / count;
                }
            } else {
                labels[seeds[k]] = k;
            }
        }
        double error = 0.0;
        for (const double distance : partial.distances) {
            error += distance;
        }
        if (iteration >= maxIterations || !(std::fabs(error - previous) > threshold)) {
            return;
        }
        previous = error;
    }
}
