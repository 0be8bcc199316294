// Neighbour links of the whole working image, computed once per photograph (C. Rother, V.
// Kolmogorov and A. Blake, "GrabCut", SIGGRAPH 2004: beta = 1 / (2 <|Ip - Iq|^2>)). Every unordered
// pair of 8-connected pixels is stored once, in the record of its later pixel. Invariant at the
// end: every slot is written except slot 3 of row 0 between the corners, which has no reader.
#include "engine/neighbour_links.h"

#include <new>

#include "engine/hybrid.h"
#include "history/marker.h"
#include "support/image.h"

namespace {

constexpr int kLinksPerPixel = 4;

std::int32_t squaredDifference(const std::uint8_t* p, const std::uint8_t* q) {
    const int d0 = p[0] - q[0];
    const int d1 = p[1] - q[1];
    const int d2 = p[2] - q[2];
    return d0 * d0 + d1 * d1 + d2 * d2;
}

// Sum over all neighbouring pairs, kept to its low 32 bits as a signed number.
std::int32_t contrastSum(const IplImage* image, int width, int height) {
    std::uint32_t sum = 0;
    const auto add = [&sum](const std::uint8_t* p, const std::uint8_t* q) {
        sum += static_cast<std::uint32_t>(squaredDifference(p, q));
    };
    for (int y = 0; y < height; ++y) {
        const std::uint8_t* row = rowOf(image, y);
        const std::uint8_t* above = y > 0 ? rowOf(image, y - 1) : nullptr;
        for (int x = 0; x < width; ++x) {
            const std::uint8_t* pixel = row + kChannels * x;
            if (x > 0) {
                add(pixel, pixel - kChannels);
            }
            if (above != nullptr) {
                const std::uint8_t* up = above + kChannels * x;
                if (x > 0) {
                    add(pixel, up - kChannels);
                }
                add(pixel, up);
                if (x < width - 1) {
                    add(pixel, up + kChannels);
                }
            }
        }
    }
    return static_cast<std::int32_t>(sum);
}

float diagonalWeight(const ContrastTable& table, const std::uint8_t* p, const std::uint8_t* q) {
    return static_cast<float>(static_cast<double>(table.factor(p, q, 0)) * kDiagonal *
                              static_cast<double>(table.factor(p, q, 1)) *
                              static_cast<double>(table.factor(p, q, 2)));
}

}  // namespace

void VORNSEHybrid::computeNlinks() {
    const IplImage* image = VORNSEMarker::m_srcImage;
    const std::int32_t sum = contrastSum(image, m_width, m_height);
    const std::int32_t pairs = 4 * m_width * m_height - 3 * m_width - 3 * m_height + 2;
    m_beta = m_height < 1 || sum <= 0
                 ? 0.0
                 : 1.0 / ((2.0 * static_cast<double>(sum)) / static_cast<double>(pairs));

    const auto records = static_cast<std::size_t>(m_width) * static_cast<std::size_t>(m_height);
    auto* links = static_cast<float*>(
        VORN_Malloc_Msg(records * kLinksPerPixel * sizeof(float), "computeNlinks", 503));
    if (m_nLinks != nullptr) {
        VORN_Free_Msg(m_nLinks, "computeNlinks", 503);
    }
    m_nLinks = links;
    const ContrastTable table(m_beta, "computeNlinks", 509, 651);
    if (links == nullptr || !table.valid()) {
        throw std::bad_alloc();
    }
    for (int y = 0; y < m_height; ++y) {
        const std::uint8_t* row = rowOf(image, y);
        const std::uint8_t* above = y > 0 ? rowOf(image, y - 1) : nullptr;
        for (int x = 0; x < m_width; ++x, links += kLinksPerPixel) {
            const std::uint8_t* pixel = row + kChannels * x;
            links[0] = x > 0 ? table.product(pixel, pixel - kChannels) : 0.0F;
            if (above == nullptr) {
                links[1] = links[2] = 0.0F;
                if (x == 0 || x == m_width - 1) {
                    links[3] = 0.0F;
                }
                continue;
            }
            const std::uint8_t* up = above + kChannels * x;
            links[1] = x > 0 ? diagonalWeight(table, pixel, up - kChannels) : 0.0F;
            links[2] = table.product(pixel, up);
            links[3] = x < m_width - 1 ? diagonalWeight(table, pixel, up + kChannels) : 0.0F;
        }
    }
}
