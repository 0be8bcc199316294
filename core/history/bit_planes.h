// The memory of the history's bit planes: the words, and what is known of them without
// reading them.
//
// Most tiles of a mask are all object or all background. Which they are is remembered, so that only
// tiles on an outline are read and written word by word. That is right as long as nobody else
// writes words, and the planes are public: see BitPlanes.
//
// Threads: one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

constexpr int kTile = 32;  // pixels along a side

// The pointer to the planes, as callers of the history see it: planes[x][y] is the word
// of pixel (x, y).
//
// Whoever holds the plain pointer may write words at any time, so giving it out is remembered. From
// then on words count, and nothing that is remembered of them.
class BitPlanes {
  public:
    // Planes of somebody else, or none.
    constexpr BitPlanes(std::uint32_t** planes = nullptr)  // NOLINT(google-explicit-constructor)
        : m_planes(planes), m_givenOut(true) {}
    BitPlanes(BitPlanes&& other) noexcept { *this = std::move(other); }
    BitPlanes& operator=(BitPlanes&& other) noexcept {
        m_planes = std::exchange(other.m_planes, nullptr);
        m_givenOut = other.m_givenOut;
        return *this;
    }
    BitPlanes(const BitPlanes&) = delete;
    BitPlanes& operator=(const BitPlanes&) = delete;
    ~BitPlanes() = default;

    operator std::uint32_t**() const {  // NOLINT(google-explicit-constructor)
        m_givenOut = true;
        return m_planes;
    }
    friend bool operator==(const BitPlanes& planes, std::nullptr_t) {
        return planes.m_planes == nullptr;
    }
    friend bool operator!=(const BitPlanes& planes, std::nullptr_t) { return !(planes == nullptr); }

    // For the history itself, which does not count as giving the pointer out.
    std::uint32_t** ownUse() const { return m_planes; }
    bool givenOut() const { return m_givenOut; }

  private:
    friend BitPlanes makePlanes(int columns, int rows);

    std::uint32_t** m_planes = nullptr;
    mutable bool m_givenOut = true;
};

// What a tile holds: bit k of each word tells of slot k.
struct TileContents {
    std::uint32_t mixed;
    std::uint32_t object;  // of tiles that are not mixed
};

// The contents of all tiles of a size.
class TileMap {
  public:
    TileMap(int columns, int rows);
    int columns() const { return m_columns; }
    int rows() const { return m_rows; }
    // Of the tile that pixel (x, y) lies in.
    TileContents& at(int x, int y) {
        return m_tiles[m_tilesInRow * static_cast<std::size_t>(y / kTile) +
                       static_cast<std::size_t>(x / kTile)];
    }

  private:
    int m_columns;
    int m_rows;
    std::size_t m_tilesInRow;
    std::vector<TileContents> m_tiles;
};

// Cleared planes. Throws std::bad_alloc without memory.
BitPlanes makePlanes(int columns, int rows);
// What is remembered of planes that makePlanes made; null for planes of somebody else.
TileMap* rememberedTiles(const BitPlanes& planes);
// Releases planes, if any: those of makePlanes, or an array of `columns` pointers to arrays, each
// made with new. Nulls the pointer.
void releasePlanes(BitPlanes& planes, int columns);
