// Notation: a tile's words lie in columns, x outer, as the planes do, its bytes in rows, as images
// do. Tiles at the right and the lower border may be smaller than the others.
#include "history/slot_store.h"

#include <algorithm>
#include <cstring>

#include "history/marker.h"
#include "history/undo_redo_history.h"

using History = VORNSEManageUndoRedo;

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

constexpr std::uint32_t bitOf(int slot) {
    return std::uint32_t{1} << slot;
}

std::size_t tilesAlong(int pixels) {
    return static_cast<std::size_t>(pixels / kTile + (pixels % kTile > 0 ? 1 : 0));
}

std::size_t pixelsOf(int columns, int rows) {
    return static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows);
}

TileContents& contentsAt(int x, int y) {
    std::uint32_t* behind = History::m_bitPlane[0] + pixelsOf(History::width, History::height);
    const std::size_t tile = tilesAlong(History::width) * static_cast<std::size_t>(y / kTile) +
                             static_cast<std::size_t>(x / kTile);
    return reinterpret_cast<TileContents*>(behind)[tile];
}

// Calls visit(tile, contents) for every tile, row by row.
template <typename Visit>
void forEachTile(Visit visit) {
    const int width = VORNSEMarker::m_originalWidth;
    const int height = VORNSEMarker::m_originalHeight;
    for (int y = 0; y < height; y += kTile) {
        for (int x = 0; x < width; x += kTile) {
            visit(Tile{x, std::min(x + kTile, width), y, std::min(y + kTile, height)},
                  contentsAt(x, y));
        }
    }
}

// Whether all of a tile of the planes is inside the photograph, which need not be the one that they
// were made for.
bool isWhole(const Tile& tile) {
    return tile.x1 == std::min(tile.x0 + kTile, History::width) &&
           tile.y1 == std::min(tile.y0 + kTile, History::height);
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

void readWords(const Tile& tile, std::uint32_t bit, TileBytes& bytes) {
    for (int x = tile.x0; x < tile.x1; ++x) {
        const std::uint32_t* const words = History::m_bitPlane[x] + tile.y0;
        std::uint8_t column[kTile];
        forEachIndex(tile.rows(), [&](int i) { column[i] = (words[i] & bit) != 0 ? kObject : 0; });
        forEachIndex(tile.rows(), [&](int i) { bytes.row[i][x - tile.x0] = column[i]; });
    }
}

void writeWords(const Tile& tile, std::uint32_t bit, const TileBytes& bytes) {
    for (int x = tile.x0; x < tile.x1; ++x) {
        std::uint32_t* const words = History::m_bitPlane[x] + tile.y0;
        std::uint8_t column[kTile];
        forEachIndex(tile.rows(), [&](int i) { column[i] = bytes.row[i][x - tile.x0]; });
        forEachIndex(tile.rows(),
                     [&](int i) { words[i] = (words[i] & ~bit) | (column[i] != 0 ? bit : 0U); });
    }
}

// Takes down what all of a tile's words have of the bit, and what any has. A tile of which only a part
// is seen counts as mixed.
void setContents(const Tile& tile, TileContents& contents, std::uint32_t bit, std::uint32_t all,
                 std::uint32_t any) {
    const bool alike = all == any && isWhole(tile);
    contents.mixed = (contents.mixed & ~bit) | (alike ? 0U : bit);
    contents.object = (contents.object & ~bit) | all;
}

// Sets the bit of all words to that of `value`, unless they are known to have it.
void fill(const Tile& tile, TileContents& contents, std::uint32_t bit, std::uint32_t value) {
    if ((contents.mixed & bit) == 0 && (contents.object & bit) == value) {
        return;
    }
    for (int x = tile.x0; x < tile.x1; ++x) {
        std::uint32_t* const words = History::m_bitPlane[x] + tile.y0;
        forEachIndex(tile.rows(), [&](int i) { words[i] = (words[i] & ~bit) | value; });
    }
    setContents(tile, contents, bit, value, value);
}

enum class Content { kEmpty, kFull, kMixed };

// What the tiles of an image hold, asked for in the order of forEachTile. A stretch of tiles is looked
// at together, row after row, as the memory delivers it best.
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

    // Of every column of the stretch that begins with `tile`, what all and what any of its rows have.
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

std::size_t wordsFor(int columns, int rows) {
    constexpr std::size_t kWordsOfContents = sizeof(TileContents) / sizeof(std::uint32_t);
    return pixelsOf(columns, rows) + kWordsOfContents * tilesAlong(columns) * tilesAlong(rows);
}

ImagePtr load(int slot) {
    ImagePtr mask = createImage(VORNSEMarker::m_originalWidth, VORNSEMarker::m_originalHeight, 1);
    const std::uint32_t bit = bitOf(slot);
    forEachTile([&](const Tile& tile, const TileContents& contents) {
        TileBytes bytes;
        const bool mixed = (contents.mixed & bit) != 0;
        const int value = (contents.object & bit) != 0 ? kObject : 0;
        if (mixed) {
            readWords(tile, bit, bytes);
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

void store(int slot, const IplImage* image) {
    const std::uint32_t bit = bitOf(slot);
    ImageTiles tiles(image);
    forEachTile([&](const Tile& tile, TileContents& contents) {
        const Content content = tiles.contentOf(tile);
        if (content != Content::kMixed) {
            fill(tile, contents, bit, content == Content::kFull ? bit : 0U);
            return;
        }
        TileBytes bytes;
        for (int y = tile.y0; y < tile.y1; ++y) {
            std::memcpy(bytes.row[y - tile.y0], rowOf(image, y) + tile.x0, tile.columns());
        }
        writeWords(tile, bit, bytes);
        contents.mixed |= bit;
    });
}

void examine(int slot) {
    const std::uint32_t bit = bitOf(slot);
    forEachTile([bit](const Tile& tile, TileContents& contents) {
        std::uint32_t all = bit;
        std::uint32_t any = 0;
        for (int x = tile.x0; x < tile.x1; ++x) {
            const std::uint32_t* const words = History::m_bitPlane[x] + tile.y0;
            for (int i = 0; i < tile.rows(); ++i) {
                all &= words[i];
                any |= words[i];
            }
        }
        setContents(tile, contents, bit, all, any & bit);
    });
}

SavedSlot::SavedSlot(int slot) : m_slot(slot) {
    const std::uint32_t bit = bitOf(slot);
    std::size_t tiles = 0;
    std::size_t mixed = 0;
    forEachTile([&](const Tile&, const TileContents& contents) {
        ++tiles;
        mixed += (contents.mixed & bit) != 0 ? 1 : 0;
    });
    m_contents.reserve(tiles);
    m_mixedTiles.reserve(mixed);
    forEachTile([&](const Tile& tile, const TileContents& contents) {
        m_contents.push_back(contents);
        if ((contents.mixed & bit) != 0) {
            readWords(tile, bit, m_mixedTiles.emplace_back());
        }
    });
}

void SavedSlot::putBack() const {
    const std::uint32_t bit = bitOf(m_slot);
    auto before = m_contents.begin();
    auto mixedTile = m_mixedTiles.begin();
    forEachTile([&](const Tile& tile, TileContents& contents) {
        if ((before->mixed & bit) != 0) {
            writeWords(tile, bit, *mixedTile++);
            contents.mixed |= bit;
        } else {
            fill(tile, contents, bit, before->object & bit);
        }
        ++before;
    });
}

}  // namespace slot_store
