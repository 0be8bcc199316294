// Numbers the pixels of a grid tile by tile, so that a pixel and its neighbours mostly share a
// cache line, however wide the grid is. A border of one pixel surrounds the grid, so that every
// neighbour of a pixel has a number too.
//
// In this folder `tiled` is a pixel's number in this order, and `node` is its number in the graph,
// y * width + x. The upper left corner of a grid that is ten pixels wide, with its
// border in brackets:
//
//                       tile 0                    |              tile 1
//      [0]  [1]  [2]  [3]  [4]  [5]  [6]  [7]     |    [64] [65] [66] [67]  68 .. 71 unused
//      [8]   9   10   11   12   13   14   15      |     72   73   74  [75]
//     [16]  17   18   19   20   21   22   23      |     80   81   82  [83]
//      ...                                        |     ...
//     [56]  57   58   59   60   61   62   63      |    120  121  122 [123]
//     --------------------------------------------+----------------------
//                       tile 2                    |              tile 3
//    [128] 129  130  131  132  133  134  135      |    192  193  194 [195]
//
// Node 0 is 9, node 7 is 72, node 10 is 17; to the right of 15 lies 72, below 57 lies 129.
#pragma once

#include <cstddef>
#include <cstdint>

#include "graph/grid_directions.h"

class TiledGrid {
  public:
    TiledGrid(int width, int height)
        : m_width(width),
          m_tilesInRow((width + 2 + kSide - 1) / kSide),
          m_tileRows((height + 2 + kSide - 1) / kSide) {
        for (int place = 0; place < kTile; ++place) {
            for (int d = 0; d < direction::kCount; ++d) {
                const int x = place % kSide + direction::kSteps[d].x;
                const int y = place / kSide + direction::kSteps[d].y;
                const int tile = (x < 0 ? -1 : x / kSide) + (y < 0 ? -1 : y / kSide) * m_tilesInRow;
                m_steps[place][d] =
                    tile * kTile + (y + kSide) % kSide * kSide + (x + kSide) % kSide - place;
            }
        }
    }

    // How many numbers there are, with those of the border and the unused ones.
    std::size_t size() const {
        return static_cast<std::size_t>(m_tilesInRow) * static_cast<std::size_t>(m_tileRows) *
               kTile;
    }

    int tiledAt(int x, int y) const {
        return (((y + 1) / kSide) * m_tilesInRow + (x + 1) / kSide) * kTile +
               (y + 1) % kSide * kSide + (x + 1) % kSide;
    }
    int nodeOf(int tiled) const {
        const int tile = tiled / kTile;
        const int place = tiled % kTile;
        const int y = tile / m_tilesInRow * kSide + place / kSide - 1;
        const int x = tile % m_tilesInRow * kSide + place % kSide - 1;
        return y * m_width + x;
    }

    // What to add to a tiled number to get those of its neighbours, by direction.
    const int* steps(int tiled) const { return m_steps[static_cast<unsigned>(tiled) % kTile]; }

  private:
    static constexpr int kSide = 8;  // a tile of bytes is a cache line
    static constexpr int kTile = kSide * kSide;

    int m_width;
    int m_tilesInRow;
    int m_tileRows;
    int m_steps[kTile][direction::kCount];
};
