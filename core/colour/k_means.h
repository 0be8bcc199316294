// Hard clustering of colour samples: deterministic k-means++ seeding and Lloyd passes on four
// threads.
#pragma once

#include "support/export.h"

// Chooses k of n samples (rows of three doubles) as seeds and writes their indices. The system's
// rand is seeded from the data alone, so equal data give equal seeds; calls from several threads at
// once would share that generator.
SEGCORE_API void chooseCentersKMeanspp(double** data, int n, int k, int* indices);

// Labels n samples 0 .. 4 by at most maxIterations assignment passes, or until a pass changes the
// sum of squared distances by no more than threshold. `centreBuffer` holds five rows of three
// doubles and receives the final centres. Throws std::bad_alloc without memory.
SEGCORE_API void k_means(double** data, int* labels, int n, double threshold, int maxIterations,
                         double** centreBuffer);

// Body of one assignment thread; `argument` is a KMeansWorker. Returns null.
SEGCORE_API void* findMinDistance(void* argument);

// What one assignment thread reads and writes. Slots are indexed by thread, so no lock is needed.
struct KMeansWorker {
    double** data;
    double** centres;
    int* labels;
    int n;
    double*** sums;     // [cluster][thread] -> three doubles
    double** counts;    // [cluster][thread]
    double* distances;  // [thread]
    int thread;         // 0 .. 3
};
