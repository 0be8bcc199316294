// A photograph and its mask reduced by a power of two, as far as soft edges need them: what is near
// the mask's outline, and alpha of the whole.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "matting/colour_estimate.h"
#include "matting/edge_softness.h"
#include "matting/outline_band.h"
#include "matting/plane.h"
#include "matting/reduction.h"

// Pixels that an edge may be soft (deviation of its blur) to be solved at a level. Softer ones are
// solved better where they are reduced: their noise is averaged away, and few pixels hold all of them.
constexpr float kSoftestSolved = 3.0F;

class OutlineLevel {
  public:
    // The photograph itself. The planes must outlive the level; `alpha` is filled later on.
    OutlineLevel(const ColourPlane& photograph, Plane<const std::uint8_t> mask,
                 Plane<std::uint16_t> alpha, const std::function<void()>& checkpoint);
    // Half the size of another.
    OutlineLevel(const ColourPlane& photograph, const OutlineLevel& finer,
                 const std::function<void()>& checkpoint);

    int number() const { return m_number; }  // halvings
    Plane<const std::uint8_t> mask() const { return m_mask; }
    Plane<std::uint16_t> alpha() const { return m_alpha; }
    const OutlineBand& band() const { return m_band; }  // reaches EdgeShapes::kReach pixels
    const EdgeShapes& shapes() const { return *m_shapes; }
    const ColourEstimates& estimates() const { return *m_estimates; }

    // Leaves the level without; nothing else may be asked of it any more.
    OutlineBand takeBand() { return std::move(m_band); }

    // Whether the edge at a pixel is to be solved at a coarser level.
    bool isTooSoft(int x, int y) const;
    bool isTooSoftSomewhere() const;

  private:
    void measure(const ColourPlane& photograph, const EdgeShapes* finer,
                 const std::function<void()>& checkpoint);

    int m_number = 0;
    SmallMask m_small;  // of the reduced ones, as are:
    std::vector<std::uint16_t> m_alphaValues;
    Plane<const std::uint8_t> m_mask;
    Plane<std::uint16_t> m_alpha;
    OutlineBand m_band;
    std::unique_ptr<EdgeShapes> m_shapes;
    std::unique_ptr<ColourEstimates> m_estimates;
};
