// One pass along the rows and one along the columns, in integers. The columns' pass needs the rows
// around the one under way as they were, which are kept in a ring.
#include "matting/feather.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "matting/edge_profile.h"

namespace {

constexpr std::uint32_t kOne = 1U << 16;

// From the middle to one side; the whole kernel sums up to kOne.
std::vector<std::uint32_t> halfKernel(float sigma) {
    std::vector<std::uint32_t> taps;
    std::uint32_t sum = 0;
    for (int i = 1;; ++i) {
        const float share = blurredEdge((static_cast<float>(i) + 0.5F) / sigma) -
                            blurredEdge((static_cast<float>(i) - 0.5F) / sigma);
        const auto tap = static_cast<std::uint32_t>(std::lround(share * static_cast<float>(kOne)));
        if (tap == 0) {
            break;
        }
        taps.push_back(tap);
        sum += 2 * tap;
    }
    taps.insert(taps.begin(), kOne - sum);
    return taps;
}

class RowBlur {
  public:
    RowBlur(const std::vector<std::uint32_t>& kernel, int width)
        : m_kernel(kernel),
          m_reach(kernel.size() - 1),
          m_padded(static_cast<size_t>(width) + 2 * m_reach) {}

    void operator()(const std::uint16_t* from, int width, std::uint16_t* to) {
        std::fill_n(m_padded.begin(), m_reach, from[0]);
        std::copy_n(from, width, m_padded.begin() + static_cast<std::ptrdiff_t>(m_reach));
        std::fill_n(m_padded.end() - static_cast<std::ptrdiff_t>(m_reach), m_reach,
                    from[width - 1]);
        for (size_t x = 0; x < static_cast<size_t>(width); ++x) {
            const std::uint16_t* middle = &m_padded[x + m_reach];
            std::uint32_t sum = m_kernel[0] * middle[0] + kOne / 2;
            for (size_t i = 1; i <= m_reach; ++i) {
                sum += m_kernel[i] * (static_cast<std::uint32_t>(middle[i]) + *(middle - i));
            }
            to[x] = static_cast<std::uint16_t>(sum / kOne);
        }
    }

  private:
    const std::vector<std::uint32_t>& m_kernel;
    size_t m_reach;
    std::vector<std::uint16_t> m_padded;
};

}  // namespace

void feather(Plane<std::uint16_t> alpha, double sigma, const std::function<void()>& checkpoint) {
    const std::vector<std::uint32_t> kernel = halfKernel(static_cast<float>(sigma));
    const int reach = static_cast<int>(kernel.size()) - 1;
    if (reach == 0) {
        return;
    }
    const auto width = static_cast<size_t>(alpha.width);
    const int ringRows = 2 * reach + 1;
    std::vector<std::uint16_t> ring(width * static_cast<size_t>(ringRows));
    const auto ringRow = [&](int y) {
        return &ring[width * static_cast<size_t>(std::clamp(y, 0, alpha.height - 1) % ringRows)];
    };
    RowBlur blur(kernel, alpha.width);
    for (int y = 0; y < std::min(reach, alpha.height); ++y) {
        blur(alpha.row(y), alpha.width, ringRow(y));
    }
    std::vector<std::uint32_t> sums(width);
    for (int y = 0; y < alpha.height; ++y) {
        checkpoint();
        if (y + reach < alpha.height) {
            blur(alpha.row(y + reach), alpha.width, ringRow(y + reach));
        }
        const std::uint16_t* middle = ringRow(y);
        for (size_t x = 0; x < width; ++x) {
            sums[x] = kernel[0] * middle[x] + kOne / 2;
        }
        for (int i = 1; i <= reach; ++i) {
            const std::uint16_t* above = ringRow(y - i);
            const std::uint16_t* below = ringRow(y + i);
            for (size_t x = 0; x < width; ++x) {
                sums[x] += kernel[static_cast<size_t>(i)] *
                           (static_cast<std::uint32_t>(above[x]) + below[x]);
            }
        }
        std::transform(sums.begin(), sums.end(), alpha.row(y),
                       [](std::uint32_t sum) { return static_cast<std::uint16_t>(sum / kOne); });
    }
}
