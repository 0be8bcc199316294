// One slot of the history's bit planes, to and from masks. A mask has the size of the photograph in
// the marker store. The planes may have been made for a larger one.
#pragma once

#include <opencv2/core/core_c.h>

#include <cstdint>
#include <optional>
#include <vector>

#include "history/bit_planes.h"
#include "support/image.h"

namespace slot_store {

// How a call finds out which tiles are all alike. kRemembered: from what is remembered of them, or
// from the words if others may have written to the planes. kWords: from the words in any case.
enum class Source { kRemembered, kWords };

// The planes and what their tiles hold of one slot.
class SlotView {
  public:
    // Throws std::bad_alloc without memory.
    SlotView(int slot, Source source);

    std::uint32_t bit;
    std::uint32_t** planes;
    TileMap& tiles() { return m_found ? *m_found : *m_remembered; }

  private:
    TileMap* m_remembered;
    std::optional<TileMap> m_found;  // of planes of which nothing is remembered
};

// The calls below need planes.

// The slot's mask, bytes 0 and 255. Throws the imaging library's exception without memory.
ImagePtr load(int slot, Source source);
// Stores image byte != 0 as the slot's bits.
void store(int slot, const IplImage* image, Source source);

// A tile's pixels, 0 or not.
struct TileBytes {
    std::uint8_t row[kTile][kTile];
};

// A slot's mask as it was, to be put back.
class SavedSlot {
  public:
    // Throws std::bad_alloc without memory.
    explicit SavedSlot(int slot);
    void putBack();

  private:
    SlotView m_view;
    std::vector<TileContents> m_contents;
    std::vector<TileBytes> m_mixedTiles;
};

}  // namespace slot_store
