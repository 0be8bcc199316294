// A picture cut into squares, with something known of each.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <vector>

// Some value of each square, kSide pixels wide and high, of a picture of `width` x `height` pixels.
template <typename Value, int kSide>
class Squares {
  public:
    Squares(int width, int height)
        : m_columns((width + kSide - 1) / kSide),
          m_rows((height + kSide - 1) / kSide),
          m_values(static_cast<size_t>(m_columns) * static_cast<size_t>(m_rows)) {}

    int columns() const { return m_columns; }
    int rows() const { return m_rows; }
    const Value& at(int column, int row) const { return m_values[numberOf(column, row)]; }
    Value& at(int column, int row) { return m_values[numberOf(column, row)]; }

    // Calls act(value, column, row) for all squares.
    template <typename Act>
    void forEach(Act&& act) const {
        for (int row = 0; row < m_rows; ++row) {
            for (int column = 0; column < m_columns; ++column) {
                act(at(column, row), column, row);
            }
        }
    }

    // Calls use(value, weight) for the four squares whose centres are around a pixel, with the weights of
    // bilinear interpolation.
    template <typename Use>
    void around(float x, float y, Use&& use) const {
        const float u = place(x, m_columns);
        const float v = place(y, m_rows);
        const int column = static_cast<int>(u);
        const int row = static_cast<int>(v);
        const int right = std::min(column + 1, m_columns - 1);
        const int below = std::min(row + 1, m_rows - 1);
        const float fx = u - static_cast<float>(column);
        const float fy = v - static_cast<float>(row);
        use(at(column, row), (1.0F - fx) * (1.0F - fy));
        use(at(right, row), fx * (1.0F - fy));
        use(at(column, below), (1.0F - fx) * fy);
        use(at(right, below), fx * fy);
    }

  private:
    size_t numberOf(int column, int row) const {
        return static_cast<size_t>(row) * static_cast<size_t>(m_columns) +
               static_cast<size_t>(column);
    }
    static float place(float pixel, int squares) {
        return std::clamp((pixel + 0.5F) / kSide - 0.5F, 0.0F, static_cast<float>(squares - 1));
    }

    int m_columns;
    int m_rows;
    std::vector<Value> m_values;
};

// Sums of each square with those of its neighbours, weighted by the product of `weights` at the columns'
// and at the rows' distance. Sums need add(sums, weight) and isEmpty().
template <typename Sums, int kSide, size_t kCount>
Squares<Sums, kSide> pooled(const Squares<Sums, kSide>& squares,
                            const std::array<float, kCount>& weights) {
    constexpr int kReach = static_cast<int>(kCount) - 1;
    Squares<Sums, kSide> result(squares.columns() * kSide, squares.rows() * kSide);
    squares.forEach([&](const Sums& here, int column, int row) {
        if (here.isEmpty()) {
            return;
        }
        const int bottom = std::min(row + kReach, squares.rows() - 1);
        const int right = std::min(column + kReach, squares.columns() - 1);
        for (int v = std::max(row - kReach, 0); v <= bottom; ++v) {
            for (int u = std::max(column - kReach, 0); u <= right; ++u) {
                result.at(u, v).add(here, weights[static_cast<size_t>(std::abs(u - column))] *
                                              weights[static_cast<size_t>(std::abs(v - row))]);
            }
        }
    });
    return result;
}
