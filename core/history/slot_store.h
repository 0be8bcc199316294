// One slot of the history's bit planes, to and from masks of photo size.
//
// Most tiles of a mask are all object or all background. Which they are is remembered beside the
// planes, so that only tiles on an outline are read and written word by word. Invariant: a tile that
// is not marked mixed for a slot has its bit of the slot alike in all its words.
#pragma once

#include <opencv2/core/core_c.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "support/image.h"

namespace slot_store {

constexpr int kTile = 32;

// What is known of a tile: bit k of each tells of slot k.
struct TileContents {
    std::uint32_t mixed;
    std::uint32_t object;  // of tiles that are not mixed
};

// A tile's pixels, 0 or not.
struct TileBytes {
    std::uint8_t row[kTile][kTile];
};

// The 32-bit words that planes of a size take, with the contents of their tiles behind them. All
// zero are empty planes.
std::size_t wordsFor(int columns, int rows);

// The calls below need planes that the history has allocated.

// The slot's mask, bytes 0 and 255. Throws the imaging library's exception without memory.
ImagePtr load(int slot);
// Stores image byte != 0 as the slot's bits.
void store(int slot, const IplImage* image);
// Finds the contents of the slot's tiles anew: the planes are public.
void examine(int slot);

// A slot's mask as it was, to be put back.
class SavedSlot {
  public:
    // Throws std::bad_alloc without memory.
    explicit SavedSlot(int slot);
    void putBack() const;

  private:
    int m_slot;
    std::vector<TileContents> m_contents;
    std::vector<TileBytes> m_mixedTiles;
};

}  // namespace slot_store
