// Contrast weights of neighbouring pixels: exp(-beta |Ip - Iq|^2). That is the product of one
// factor a channel, and a channel's difference is a byte, so an image needs only 256 exponentials.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "support/tracked_memory.h"

constexpr int kByteValues = 256;
// The inverse distance of diagonal neighbours, at the precision that the weights are defined with.
constexpr double kDiagonal = 0.7071067932881648;

// 256 floats, entry d = exp(-d^2 beta). Null without memory.
class ContrastTable {
  public:
    ContrastTable(double beta, const char* owner, int allocateLine, int freeLine)
        : m_values(static_cast<float*>(
              VORN_Malloc_Msg(kByteValues * sizeof(float), owner, allocateLine))),
          m_owner(owner),
          m_freeLine(freeLine) {
        for (int d = 0; m_values != nullptr && d < kByteValues; ++d) {
            const double squared = static_cast<double>(d) * static_cast<double>(d);
            m_values[d] = std::exp(-static_cast<float>(squared * beta));
        }
    }
    ~ContrastTable() {
        if (m_values != nullptr) {
            VORN_Free_Msg(m_values, m_owner, m_freeLine);
        }
    }
    ContrastTable(const ContrastTable&) = delete;
    ContrastTable& operator=(const ContrastTable&) = delete;

    bool valid() const { return m_values != nullptr; }

    float factor(const std::uint8_t* p, const std::uint8_t* q, int channel) const {
        return m_values[std::abs(p[channel] - q[channel])];
    }
    // Product of the three factors in single precision.
    float product(const std::uint8_t* p, const std::uint8_t* q) const {
        return factor(p, q, 0) * factor(p, q, 1) * factor(p, q, 2);
    }

  private:
    float* m_values;
    const char* m_owner;
    int m_freeLine;
};
