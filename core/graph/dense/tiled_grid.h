// The numbering of a grid's pixels in square tiles, so that neighbours in every direction tend to
// share a cache line whatever the grid's width. A border of one pixel surrounds the grid: a
// neighbour of any pixel has a number.
#pragma once

#include <cstddef>
#include <cstdint>

class TiledGrid {
  public:
    static constexpr int kDirections = 8;

    // Directions 0 .. 7 are left, up-left, up, up-right, right, down-right, down, down-left.
    TiledGrid(int width, int height)
        : m_width(width),
          m_tilesInRow((width + 2 + kSide - 1) / kSide),
          m_tileRows((height + 2 + kSide - 1) / kSide) {
        constexpr int kDx[kDirections] = {-1, -1, 0, 1, 1, 1, 0, -1};
        constexpr int kDy[kDirections] = {0, -1, -1, -1, 0, 1, 1, 1};
        for (int place = 0; place < kTile; ++place) {
            for (int direction = 0; direction < kDirections; ++direction) {
                const int x = place % kSide + kDx[direction];
                const int y = place / kSide + kDy[direction];
                const int tile = (x < 0 ? -1 : x / kSide) + (y < 0 ? -1 : y / kSide) * m_tilesInRow;
                m_steps[place][direction] =
                    tile * kTile + (y + kSide) % kSide * kSide + (x + kSide) % kSide - place;
            }
        }
    }

    std::size_t size() const {
        return static_cast<std::size_t>(m_tilesInRow) * static_cast<std::size_t>(m_tileRows) *
               kTile;
    }

    int at(int x, int y) const {
        return (((y + 1) / kSide) * m_tilesInRow + (x + 1) / kSide) * kTile +
               (y + 1) % kSide * kSide + (x + 1) % kSide;
    }

    // y * width + x of a number.
    int rowMajor(int number) const {
        const int tile = number / kTile;
        const int place = number % kTile;
        const int y = tile / m_tilesInRow * kSide + place / kSide - 1;
        const int x = tile % m_tilesInRow * kSide + place % kSide - 1;
        return y * m_width + x;
    }

    // What to add to a number to get its eight neighbours'.
    const int* steps(int number) const { return m_steps[static_cast<unsigned>(number) % kTile]; }

  private:
    static constexpr int kSide = 8;  // a tile of bytes is a cache line
    static constexpr int kTile = kSide * kSide;

    int m_width;
    int m_tilesInRow;
    int m_tileRows;
    int m_steps[kTile][kDirections];
};
