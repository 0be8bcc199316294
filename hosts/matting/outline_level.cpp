#include "matting/outline_level.h"

#include <algorithm>

OutlineLevel::OutlineLevel(const ColourPlane& photograph, Plane<const std::uint8_t> mask,
                           Plane<std::uint16_t> alpha, const std::function<void()>& checkpoint)
    : m_mask(mask), m_alpha(alpha), m_band(outlineBand(mask, EdgeShapes::kReach, checkpoint)) {
    measure(photograph, nullptr, checkpoint);
}

OutlineLevel::OutlineLevel(const ColourPlane& photograph, const OutlineLevel& finer,
                           const std::function<void()>& checkpoint)
    : m_number(finer.m_number + 1),
      m_small(finer.m_number == 0 ? halved(finer.m_mask) : halved(finer.m_small)),
      m_alphaValues(m_small.values.size()),
      m_mask(m_small.plane()),
      m_alpha{m_alphaValues.data(), m_small.width, m_small.width, m_small.height},
      m_band(outlineBand(m_mask, EdgeShapes::kReach, checkpoint)) {
    refineDistances({m_small.covered.data(), m_small.width, m_small.width, m_small.height},
                    m_small.full, m_band);
    measure(photograph, finer.m_shapes.get(), checkpoint);
}

void OutlineLevel::measure(const ColourPlane& photograph, const EdgeShapes* finer,
                           const std::function<void()>& checkpoint) {
    const std::vector<float> colours = coloursOf(photograph, m_number, m_band.pixels, 0);
    checkpoint();
    m_shapes = std::make_unique<EdgeShapes>(m_band, colours, finer, checkpoint);
    m_estimates = std::make_unique<ColourEstimates>(m_band, colours, *m_shapes, checkpoint);
}

bool OutlineLevel::isTooSoft(int x, int y) const {
    return m_shapes->at(static_cast<float>(x), static_cast<float>(y)).sigma > kSoftestSolved;
}

bool OutlineLevel::isTooSoftSomewhere() const {
    const std::vector<PixelRun>& runs = m_band.pixels.runs();
    return std::any_of(runs.begin(), runs.end(), [&](const PixelRun& run) {
        return isTooSoft(run.begin, run.row) || isTooSoft(run.end - 1, run.row);
    });
}
