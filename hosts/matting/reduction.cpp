#include "matting/reduction.h"

#include <algorithm>

namespace {

// `count(x, y)` tells how much of a pixel of the larger mask is the object's.
template <typename Count>
SmallMask halvedBy(int width, int height, int full, Count&& count) {
    SmallMask half;
    half.width = (width + 1) / 2;
    half.height = (height + 1) / 2;
    half.full = 4 * full;
    const auto size = static_cast<size_t>(half.width) * static_cast<size_t>(half.height);
    half.covered.reserve(size);
    half.values.reserve(size);
    for (int y = 0; y < half.height; ++y) {
        const int lower = std::min(2 * y + 1, height - 1);
        for (int x = 0; x < half.width; ++x) {
            const int right = std::min(2 * x + 1, width - 1);
            const int covered = count(2 * x, 2 * y) + count(right, 2 * y) + count(2 * x, lower) +
                                count(right, lower);
            half.covered.push_back(static_cast<std::uint16_t>(covered));
            half.values.push_back(2 * covered >= half.full ? 1 : 0);
        }
    }
    return half;
}

}  // namespace

std::vector<float> coloursOf(const ColourPlane& photograph, int level, const PixelRuns& pixels,
                             int frame) {
    const int side = 1 << level;
    const float scale = 1.0F / (255.0F * static_cast<float>(side * side));
    std::vector<float> colours(3 * static_cast<size_t>(pixels.size()));
    size_t next = 0;
    for (const PixelRun& run : pixels.runs()) {
        const int top = (run.row - frame) * side;
        for (int column = run.begin; column < run.end; ++column) {
            const int left = (column - frame) * side;
            int sums[3] = {0, 0, 0};
            for (int dy = 0; dy < side; ++dy) {
                const int y = std::clamp(top + dy, 0, photograph.rows.height - 1);
                const std::uint8_t* row = photograph.rows.row(y);
                for (int dx = 0; dx < side; ++dx) {
                    const int x = std::clamp(left + dx, 0, photograph.rows.width - 1);
                    const std::uint8_t* pixel = row + x * photograph.channels;
                    for (int c = 0; c < 3; ++c) {
                        sums[c] += pixel[c];
                    }
                }
            }
            for (const int sum : sums) {
                colours[next++] = static_cast<float>(sum) * scale;
            }
        }
    }
    return colours;
}

SmallMask halved(Plane<const std::uint8_t> mask) {
    return halvedBy(mask.width, mask.height, 1,
                    [&](int x, int y) { return mask.row(y)[x] != 0 ? 1 : 0; });
}

SmallMask halved(const SmallMask& mask) {
    return halvedBy(mask.width, mask.height, mask.full, [&](int x, int y) {
        return static_cast<int>(
            mask.covered[static_cast<size_t>(y) * static_cast<size_t>(mask.width) +
                         static_cast<size_t>(x)]);
    });
}
