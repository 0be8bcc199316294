// The photograph is looked at in reductions by powers of two ("levels", 0 being the photograph). Each
// stretch of the outline is solved at the finest level at which its edge is not too soft. From coarse
// to fine: what a coarser level has solved is enlarged and stays, the rest is solved beside it. Where the
// mask is off by pixels, all that was measured along it was measured beside the edge, so the whole is
// done a second time along the outline that the first alpha has found.
#include "matting/soft_alpha.h"

#include <deque>

#include "matting/level_alpha.h"
#include "matting/moved_outline.h"
#include "matting/outline_level.h"

namespace {

// The last level's edges are 32 times as wide as they may be at the first.
constexpr size_t kMostLevels = 6;

// Returns the pixels along the outline.
OutlineBand alphaAlong(const ColourPlane& photograph, Plane<const std::uint8_t> mask, double width,
                       Plane<std::uint16_t> alpha, const std::function<void()>& checkpoint) {
    std::deque<OutlineLevel> levels;
    levels.emplace_back(photograph, mask, alpha, checkpoint);
    while (levels.size() < kMostLevels && levels.back().isTooSoftSomewhere()) {
        const OutlineLevel& finer = levels.back();
        levels.emplace_back(photograph, finer, checkpoint);
    }
    for (size_t number = levels.size(); number-- > 0;) {
        const OutlineLevel& level = levels[number];
        const bool isCoarsest = number + 1 == levels.size();
        setHard(level);
        if (!isCoarsest) {
            enlarge(levels[number + 1], level, checkpoint);
        }
        solve(photograph, level, static_cast<float>(width) / static_cast<float>(1 << number),
              isCoarsest, checkpoint);
    }
    return levels.front().takeBand();
}

}  // namespace

void softAlpha(const ColourPlane& photograph, Plane<const std::uint8_t> mask, double width,
               Plane<std::uint16_t> alpha, const std::function<void()>& checkpoint) {
    const OutlineBand band = alphaAlong(photograph, mask, width, alpha, checkpoint);
    if (width > 0.0) {
        return;  // which is meant from the outline that was given
    }
    const std::vector<std::uint8_t> moved =
        movedMask(band, mask, {alpha.row(0), alpha.stride, alpha.width, alpha.height});
    if (!moved.empty()) {
        alphaAlong(photograph, {moved.data(), mask.width, mask.width, mask.height}, width, alpha,
                   checkpoint);
    }
}
