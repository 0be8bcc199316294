// A tile's words lie in columns, as the planes do; its bytes lie in rows, as images do. Tiles at
// the right and the lower border may be smaller than the others.
//
// Invariant: a tile that is not marked mixed for a slot has the slot's bit alike in all its words.
#include "history/slot_store.h"

#include <algorithm>
#include <cstring>

#include "history/marker.h"
#include "history/undo_redo_history.h"

namespace slot_store {

namespace {

constexpr std::uint8_t kObject = 255;

struct Tile {
    int x0;
    int x1;
    int y0;
    int y1;
    std::size_t columns() const { return static_cast<std::size_t>(x1 - x0); }
    int rows() const { return y1 - y0; }
};

// Calls visit(tile, contents) for every tile, row by row.
template <typename Visit>
void forEachTile(SlotView& view, Visit visit) {
    const int width = VORNSEMarker::m_originalWidth;
    const int height = VORNSEMarker::m_originalHeight;
    TileMap& tiles = view.tiles();
    for (int y = 0; y < height; y += kTile) {
        for (int x = 0; x < width; x += kTile) {
            visit(Tile{x, std::min(x + kTile, width), y, std::min(y + kTile, height)},
                  tiles.at(x, y));
        }
    }
}

// Whether the photograph shows all of a tile. It need not be the one that the planes were made for.
bool isWhole(const Tile& tile, const TileMap& tiles) {
    return tile.x1 == std::min(tile.x0 + kTile, tiles.columns()) &&
           tile.y1 == std::min(tile.y0 + kTile, tiles.rows());
}

// A whole tile's known length lets the compiler take columns and rows by vectors.
template <typename Visit>
void forEachIndex(int count, Visit visit) {
    if (count == kTile) {
        for (int i = 0; i < kTile; ++i) {
            visit(i);
        }
    } else {
        for (int i = 0; i < count; ++i) {
            visit(i);
        }
    }
}

void readWords(const SlotView& view, const Tile& tile, TileBytes& bytes) {
    for (int x = tile.x0; x < tile.x1; ++x) {
        const std::uint32_t* const words = view.planes[x] + tile.y0;
        std::uint8_t column[kTile];
        forEachIndex(tile.rows(),
                     [&](int i) { column[i] = (words[i] & view.bit) != 0 ? kObject : 0; });
        forEachIndex(tile.rows(), [&](int i) { bytes.row[i][x - tile.x0] = column[i]; });
    }
}

void writeWords(const SlotView& view, const Tile& tile, const TileBytes& bytes) {
    const std::uint32_t bit = view.bit;
    for (int x = tile.x0; x < tile.x1; ++x) {
        std::uint32_t* const words = view.planes[x] + tile.y0;
        std::uint8_t column[kTile];
        forEachIndex(tile.rows(), [&](int i) { column[i] = bytes.row[i][x - tile.x0]; });
        forEachIndex(tile.rows(),
                     [&](int i) { words[i] = (words[i] & ~bit) | (column[i] != 0 ? bit : 0U); });
    }
}

// Notes what all of a tile's words have of the bit, and what any has. A tile that is only seen in
// part counts as mixed.
void setContents(SlotView& view, const Tile& tile, TileContents& contents, std::uint32_t all,
                 std::uint32_t any) {
    const bool alike = all == any && isWhole(tile, view.tiles());
    contents.mixed = (contents.mixed & ~view.bit) | (alike ? 0U : view.bit);
    contents.object = (contents.object & ~view.bit) | all;
}

// Sets the bit of all words to that of `value`.
void fill(SlotView& view, const Tile& tile, TileContents& contents, std::uint32_t value) {
    for (int x = tile.x0; x < tile.x1; ++x) {
        std::uint32_t* const words = view.planes[x] + tile.y0;
        forEachIndex(tile.rows(), [&](int i) { words[i] = (words[i] & ~view.bit) | value; });
    }
    setContents(view, tile, contents, value, value);
}

// Finds the contents of all tiles from the words, in the order in which these lie in memory.
void examine(SlotView& view) {
    struct Bits {
        std::uint32_t all = ~std::uint32_t{0};
        std::uint32_t any = 0;
    };
    const int width = VORNSEMarker::m_originalWidth;
    const int height = VORNSEMarker::m_originalHeight;
    for (int x0 = 0; x0 < width; x0 += kTile) {
        const int x1 = std::min(x0 + kTile, width);
        std::vector<Bits> tileBits(static_cast<std::size_t>((height - 1) / kTile + 1));
        for (int x = x0; x < x1; ++x) {
            const std::uint32_t* words = view.planes[x];
            for (int y = 0; y < height; y += kTile) {
                std::uint32_t all = ~std::uint32_t{0};
                std::uint32_t any = 0;
                forEachIndex(std::min(kTile, height - y), [&](int i) {
                    all &= words[y + i];
                    any |= words[y + i];
                });
                Bits& bits = tileBits[static_cast<std::size_t>(y / kTile)];
                bits.all &= all;
                bits.any |= any;
            }
        }
        for (int y = 0; y < height; y += kTile) {
            const Bits& bits = tileBits[static_cast<std::size_t>(y / kTile)];
            setContents(view, Tile{x0, x1, y, std::min(y + kTile, height)}, view.tiles().at(x0, y),
                        bits.all & view.bit, bits.any & view.bit);
        }
    }
}

enum class Content { kEmpty, kFull, kMixed };

// What the tiles of an image hold, asked for in the order of forEachTile. Neighbouring tiles are
// looked at together, row after row: memory is read fastest in its own order.
class ImageTiles {
  public:
    explicit ImageTiles(const IplImage* image) : m_image(image) {}

    Content contentOf(const Tile& tile) {
        const int first = tile.x0 % kStretch;
        if (first == 0) {
            look(tile);
        }
        unsigned all = kObject;
        unsigned any = 0;
        forEachIndex(tile.x1 - tile.x0, [&](int i) {
            all &= m_all[first + i];
            any |= m_any[first + i];
        });
        // Other bytes than 0 and 255 may share no bit; such tiles are taken pixel by pixel.
        return all != 0 ? Content::kFull : any != 0 ? Content::kMixed : Content::kEmpty;
    }

  private:
    static constexpr int kStretch = 64 * kTile;

    // For every column of the stretch that begins with `tile`: the bits that all of its rows have,
    // and those that any row has.
    void look(const Tile& tile) {
        const auto columns =
            static_cast<std::size_t>(std::min(kStretch, VORNSEMarker::m_originalWidth - tile.x0));
        std::memcpy(m_all, rowOf(m_image, tile.y0) + tile.x0, columns);
        std::memcpy(m_any, m_all, columns);
        for (int y = tile.y0 + 1; y < tile.y1; ++y) {
            const std::uint8_t* const row = rowOf(m_image, y) + tile.x0;
            for (std::size_t i = 0; i < columns; ++i) {
                m_all[i] = static_cast<std::uint8_t>(m_all[i] & row[i]);
                m_any[i] = static_cast<std::uint8_t>(m_any[i] | row[i]);
            }
        }
    }

    const IplImage* const m_image;
    std::uint8_t m_all[kStretch];
    std::uint8_t m_any[kStretch];
};

}  // namespace

SlotView::SlotView(int slot, Source source)
    : bit(std::uint32_t{1} << slot),
      planes(VORNSEManageUndoRedo::m_bitPlane.ownUse()),
      m_remembered(rememberedTiles(VORNSEManageUndoRedo::m_bitPlane)) {
    if (m_remembered == nullptr) {
        m_found.emplace(VORNSEMarker::m_originalWidth, VORNSEMarker::m_originalHeight);
    }
    if (m_remembered == nullptr || source == Source::kWords ||
        VORNSEManageUndoRedo::m_bitPlane.givenOut()) {
        examine(*this);
    }
}

ImagePtr load(int slot, Source source) {
    ImagePtr mask = createImage(VORNSEMarker::m_originalWidth, VORNSEMarker::m_originalHeight, 1);
    SlotView view(slot, source);
    forEachTile(view, [&](const Tile& tile, const TileContents& contents) {
        TileBytes bytes;
        const bool mixed = (contents.mixed & view.bit) != 0;
        const int value = (contents.object & view.bit) != 0 ? kObject : 0;
        if (mixed) {
            readWords(view, tile, bytes);
        }
        for (int y = tile.y0; y < tile.y1; ++y) {
            std::uint8_t* const row = rowOf(mask.get(), y) + tile.x0;
            if (mixed) {
                std::memcpy(row, bytes.row[y - tile.y0], tile.columns());
            } else {
                std::memset(row, value, tile.columns());
            }
        }
    });
    return mask;
}

void store(int slot, const IplImage* image, Source source) {
    SlotView view(slot, source);
    ImageTiles tiles(image);
    forEachTile(view, [&](const Tile& tile, TileContents& contents) {
        const Content content = tiles.contentOf(tile);
        if (content != Content::kMixed) {
            const std::uint32_t value = content == Content::kFull ? view.bit : 0U;
            const bool known = (contents.mixed & view.bit) == 0;
            if (!known || (contents.object & view.bit) != value) {
                fill(view, tile, contents, value);
            }
            return;
        }
        TileBytes bytes;
        for (int y = tile.y0; y < tile.y1; ++y) {
            std::memcpy(bytes.row[y - tile.y0], rowOf(image, y) + tile.x0, tile.columns());
        }
        writeWords(view, tile, bytes);
        contents.mixed |= view.bit;
    });
}

SavedSlot::SavedSlot(int slot) : m_view(slot, Source::kRemembered) {
    std::size_t tiles = 0;
    std::size_t mixed = 0;
    forEachTile(m_view, [&](const Tile&, const TileContents& contents) {
        ++tiles;
        mixed += (contents.mixed & m_view.bit) != 0 ? 1 : 0;
    });
    m_contents.reserve(tiles);
    m_mixedTiles.reserve(mixed);
    forEachTile(m_view, [&](const Tile& tile, const TileContents& contents) {
        m_contents.push_back(contents);
        if ((contents.mixed & m_view.bit) != 0) {
            readWords(m_view, tile, m_mixedTiles.emplace_back());
        }
    });
}

// Every tile is written: what the view holds of planes of somebody else was found before
// the slot was overwritten.
void SavedSlot::putBack() {
    auto before = m_contents.begin();
    auto mixedTile = m_mixedTiles.begin();
    forEachTile(m_view, [&](const Tile& tile, TileContents& contents) {
        if ((before->mixed & m_view.bit) != 0) {
            writeWords(m_view, tile, *mixedTile++);
            contents.mixed |= m_view.bit;
        } else {
            fill(m_view, tile, contents, before->object & m_view.bit);
        }
        ++before;
    });
}

}  // namespace slot_store
