#include "matting/edge_profile.h"

namespace {

constexpr float kKnotsPerDeviation = 0.57735027F;  // the spline's own deviation is the root of 1/3

float upperHalf(float t) {
    if (t >= 2.0F) {
        return 1.0F;
    }
    if (t >= 1.0F) {
        const float left = (2.0F - t) * (2.0F - t);
        return 1.0F - left * left / 24.0F;
    }
    return 0.5F + t * (2.0F / 3.0F + t * t * (t / 8.0F - 1.0F / 3.0F));
}

}  // namespace

float blurredEdge(float distance) {
    const float t = distance * kKnotsPerDeviation;
    return t >= 0.0F ? upperHalf(t) : 1.0F - upperHalf(-t);
}
