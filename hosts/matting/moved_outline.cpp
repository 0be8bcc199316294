#include "matting/moved_outline.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr float kLeastMove = 2.0F;  // pixels from the outline
constexpr int kHalf = 32768;

// A copy of a mask in which pixels change sides together with all that touch them and want to change.
class MovingMask {
  public:
    MovingMask(Plane<const std::uint8_t> mask, Plane<const std::uint16_t> alpha)
        : m_mask(mask), m_alpha(alpha) {}

    void moveFrom(int x, int y) {
        if (!wantsToMove(x, y)) {
            return;
        }
        if (m_moved.empty()) {
            copyMask();
        }
        take(x, y);
        while (!m_open.empty()) {
            const auto [column, row] = m_open.back();
            m_open.pop_back();
            for (int v = std::max(row - 1, 0); v <= std::min(row + 1, m_mask.height - 1); ++v) {
                for (int u = std::max(column - 1, 0); u <= std::min(column + 1, m_mask.width - 1);
                     ++u) {
                    if (wantsToMove(u, v)) {
                        take(u, v);
                    }
                }
            }
        }
    }
    std::vector<std::uint8_t> result() && { return std::move(m_moved); }

  private:
    bool wantsToMove(int x, int y) const {
        const bool isInside =
            m_moved.empty() ? m_mask.row(y)[x] != 0 : m_moved[numberOf(x, y)] != 0;
        return isInside != (m_alpha.row(y)[x] >= kHalf);
    }
    void take(int x, int y) {
        m_moved[numberOf(x, y)] ^= 1U;
        m_open.emplace_back(x, y);
    }
    void copyMask() {
        m_moved.resize(static_cast<size_t>(m_mask.width) * static_cast<size_t>(m_mask.height));
        for (int y = 0; y < m_mask.height; ++y) {
            std::transform(m_mask.row(y), m_mask.row(y) + m_mask.width, &m_moved[numberOf(0, y)],
                           [](std::uint8_t side) { return side != 0 ? 1U : 0U; });
        }
    }
    size_t numberOf(int x, int y) const {
        return static_cast<size_t>(y) * static_cast<size_t>(m_mask.width) + static_cast<size_t>(x);
    }

    Plane<const std::uint8_t> m_mask;
    Plane<const std::uint16_t> m_alpha;
    std::vector<std::uint8_t> m_moved;
    std::vector<std::pair<int, int>> m_open;  // taken, but not what is around them
};

}  // namespace

std::vector<std::uint8_t> movedMask(const OutlineBand& band, Plane<const std::uint8_t> mask,
                                    Plane<const std::uint16_t> alpha) {
    MovingMask moving(mask, alpha);
    for (const PixelRun& run : band.pixels.runs()) {
        for (int x = run.begin; x < run.end; ++x) {
            if (std::fabs(band.distance[static_cast<size_t>(run.numberOf(x))]) >= kLeastMove) {
                moving.moveFrom(x, run.row);
            }
        }
    }
    return std::move(moving).result();
}
