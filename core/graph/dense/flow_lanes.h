// Works on four capacities at a time. Each is rounded as scalar code would round it, so the results
// are the same.
//
// Only x86 has vector code here: the vector unit of 32-bit ARM takes subnormal numbers for zero,
// which would change results.
#pragma once

#include <limits>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "graph/graph.h"

namespace flow_lanes {

constexpr int kLanes = 4;

// Of a node's edges to its four earlier neighbours, bit d for direction d: which can carry flow
// away from the node, which towards it, and which exist and have a capacity below 0.
struct OpenEdges {
    unsigned out;
    unsigned in;
    unsigned negative;
};

inline bool carriesFlow(float capacity) {
    return capacity != 0.0F && capacity != kNoEdge;
}

#if defined(__SSE2__)
// NOLINTBEGIN(portability-simd-intrinsics): the other branch is portable.

inline __m128 closed(__m128 capacities) {
    return _mm_or_ps(_mm_cmpeq_ps(capacities, _mm_setzero_ps()),
                     _mm_cmpeq_ps(capacities, _mm_set1_ps(kNoEdge)));
}

// `slots`: the eight slots that the node owns.
inline OpenEdges openEdges(const float* slots) {
    const __m128 low = _mm_loadu_ps(slots);
    const __m128 high = _mm_loadu_ps(slots + kLanes);
    const __m128 there = _mm_shuffle_ps(low, high, _MM_SHUFFLE(2, 0, 2, 0));
    const __m128 back = _mm_shuffle_ps(low, high, _MM_SHUFFLE(3, 1, 3, 1));
    const auto lanes = [](__m128 mask) { return static_cast<unsigned>(_mm_movemask_ps(mask)); };
    const __m128 absent = _mm_set1_ps(kNoEdge);
    const __m128 zero = _mm_setzero_ps();
    const __m128 below = _mm_or_ps(_mm_cmplt_ps(there, zero), _mm_cmplt_ps(back, zero));
    const __m128 bothAbsent = _mm_and_ps(_mm_cmpeq_ps(there, absent), _mm_cmpeq_ps(back, absent));
    return {lanes(closed(there)) ^ 0xFU, lanes(closed(back)) ^ 0xFU,
            lanes(_mm_andnot_ps(bothAbsent, below))};
}

// Moves `amount` from `left` to `back` in kLanes places. Sets a bit for each place where one of the
// two may have begun or ceased to carry flow.
inline unsigned push(float* left, float* back, float amount) {
    const __m128 amounts = _mm_set1_ps(amount);
    const __m128 rest = _mm_sub_ps(_mm_loadu_ps(left), amounts);
    const __m128 before = _mm_loadu_ps(back);
    const __m128 after = _mm_add_ps(before, amounts);
    _mm_storeu_ps(left, rest);
    _mm_storeu_ps(back, after);
    const __m128 changed = _mm_or_ps(closed(rest), _mm_or_ps(closed(before), closed(after)));
    return static_cast<unsigned>(_mm_movemask_ps(changed));
}

// NOLINTEND(portability-simd-intrinsics)
#else

inline OpenEdges openEdges(const float* slots) {
    OpenEdges open = {0, 0, 0};
    for (int edge = 0; edge < kLanes; ++edge) {
        const float there = slots[2 * edge];
        const float back = slots[2 * edge + 1];
        const bool absent = there == kNoEdge && back == kNoEdge;
        open.out |= (carriesFlow(there) ? 1U : 0U) << edge;
        open.in |= (carriesFlow(back) ? 1U : 0U) << edge;
        open.negative |= (!absent && (there < 0.0F || back < 0.0F) ? 1U : 0U) << edge;
    }
    return open;
}

inline unsigned push(float* left, float* back, float amount) {
    unsigned changed = 0;
    for (int lane = 0; lane < kLanes; ++lane) {
        const float before = back[lane];
        left[lane] -= amount;
        back[lane] += amount;
        const bool closed =
            !carriesFlow(left[lane]) || !carriesFlow(before) || !carriesFlow(back[lane]);
        changed |= (closed ? 1U : 0U) << lane;
    }
    return changed;
}

#endif

// The smallest of `count` capacities, infinity when there are none. NaN is passed over.
inline float smallest(const float* capacities, int count) {
    float lowest = std::numeric_limits<float>::infinity();
#if defined(__SSE2__)
    if (count >= kLanes) {
        // NOLINTBEGIN(portability-simd-intrinsics): the loop below would do too.
        __m128 lanes = _mm_set1_ps(lowest);
        for (int i = 0; i + kLanes < count; i += kLanes) {
            lanes = _mm_min_ps(_mm_loadu_ps(capacities + i), lanes);
        }
        // These may overlap the ones before, which does no harm to a minimum.
        lanes = _mm_min_ps(_mm_loadu_ps(capacities + count - kLanes), lanes);
        lanes = _mm_min_ps(lanes, _mm_movehl_ps(lanes, lanes));
        lanes = _mm_min_ps(lanes, _mm_shuffle_ps(lanes, lanes, 1));
        return _mm_cvtss_f32(lanes);
        // NOLINTEND(portability-simd-intrinsics)
    }
#endif
    for (int i = 0; i < count; ++i) {
        lowest = capacities[i] < lowest ? capacities[i] : lowest;
    }
    return lowest;
}

}  // namespace flow_lanes
