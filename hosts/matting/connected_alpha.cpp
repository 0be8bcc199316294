// A grey-level reconstruction (Vincent 1993): sweeps forth and back until nothing changes. Its result
// does not depend on their order.
#include "matting/connected_alpha.h"

#include <algorithm>

namespace {

using Stretches = std::vector<MattingLaplacian::Stretch>;
constexpr size_t kOwnRow = MattingLaplacian::kRim;

float mostAround(const MattingLaplacian::Stretch& stretch, int i,
                 const std::vector<float>& reached) {
    float most = 0.0F;
    for (size_t row = kOwnRow - 1; row <= kOwnRow + 1; ++row) {
        const float* values = &reached[static_cast<size_t>(stretch.first + i + stretch.toRow[row])];
        most = std::max({most, values[-1], values[0], values[1]});
    }
    return most;
}

// The most of `level` that can be reached from pixels where `reached` is set to it.
void reconstruct(const Stretches& stretches, const std::vector<float>& level,
                 std::vector<float>& reached) {
    bool changed = true;
    const auto update = [&](const MattingLaplacian::Stretch& stretch, int i) {
        const auto pixel = static_cast<size_t>(stretch.first + i);
        const float value = std::min(level[pixel], mostAround(stretch, i, reached));
        if (value > reached[pixel]) {
            reached[pixel] = value;
            changed = true;
        }
    };
    while (changed) {
        changed = false;
        for (const MattingLaplacian::Stretch& stretch : stretches) {
            for (int i = 0; i < stretch.length; ++i) {
                update(stretch, i);
            }
        }
        for (auto stretch = stretches.rbegin(); stretch != stretches.rend(); ++stretch) {
            for (int i = stretch->length; i-- > 0;) {
                update(*stretch, i);
            }
        }
    }
}

}  // namespace

void connectToOutline(const Stretches& stretches, const std::vector<std::uint8_t>& inside,
                      std::vector<float>& alpha) {
    for (const bool ofObject : {true, false}) {
        std::vector<float> level(alpha.size());
        std::vector<float> reached(alpha.size());
        for (size_t pixel = 0; pixel < alpha.size(); ++pixel) {
            level[pixel] = ofObject ? alpha[pixel] : 1.0F - alpha[pixel];
            reached[pixel] = (inside[pixel] != 0) == ofObject ? level[pixel] : 0.0F;
        }
        reconstruct(stretches, level, reached);
        for (const MattingLaplacian::Stretch& stretch : stretches) {
            for (auto pixel = static_cast<size_t>(stretch.first);
                 pixel < static_cast<size_t>(stretch.first + stretch.length); ++pixel) {
                if ((inside[pixel] != 0) != ofObject) {
                    alpha[pixel] = ofObject ? reached[pixel] : 1.0F - reached[pixel];
                }
            }
        }
    }
}
