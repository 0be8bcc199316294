// The ring of mask slots. Notation: next and prev step around the ring. Invariant: slot numbers lie
// in 0 .. m_maxSize - 1, and the slots from m_bottom up to m_top (exclusive) hold masks.
//
// The planes are column-major while images are row-major, so both are walked in square tiles, a
// stack of them at a time: long enough runs of every column for the memory to deliver at its pace,
// few enough bytes to stay in the caches. Most tiles of a mask are all object or all background and
// need no transposing. All columns lie in one block, made zeroed so that the system hands out its
// pages only when a mask is written.
#include "history/undo_redo_history.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "history/marker.h"
#include "support/image.h"
#include "support/large_pages.h"
#include "support/log.h"

namespace {
constexpr int kSlots = 32;  // the bits of a plane word
}

std::uint32_t** VORNSEManageUndoRedo::m_bitPlane = nullptr;
int VORNSEManageUndoRedo::m_maxSize = kSlots;  // never 0: the ring's arithmetic divides by it
int VORNSEManageUndoRedo::m_bottom = 0;
int VORNSEManageUndoRedo::m_current = 0;
int VORNSEManageUndoRedo::m_top = 0;
int VORNSEManageUndoRedo::width = 0;
int VORNSEManageUndoRedo::height = 0;

namespace {

constexpr int kTile = 32;
constexpr int kTilesInStack = 8;

struct FreeBlock {
    void operator()(std::uint32_t* block) const { std::free(block); }
};

int nextSlot(int slot) {
    return (slot + 1) % VORNSEManageUndoRedo::m_maxSize;
}

int prevSlot(int slot) {
    const int size = VORNSEManageUndoRedo::m_maxSize;
    return ((slot < 1 ? slot + size : slot) - 1) % size;
}

struct Tile {
    int x0;
    int x1;
    int y0;
    int y1;
    std::size_t columns() const { return static_cast<std::size_t>(x1 - x0); }
    int rows() const { return y1 - y0; }
};

struct TileStack {
    Tile tiles[kTilesInStack];
    int count;
    int x0;
    int x1;
};

// Calls visit for every stack of tiles, down one column of them after the other.
template <typename Visit>
void forEachStack(Visit visit) {
    const int width = VORNSEMarker::m_originalWidth;
    const int height = VORNSEMarker::m_originalHeight;
    for (int x = 0; x < width; x += kTile) {
        for (int y = 0; y < height;) {
            TileStack stack{};
            stack.x0 = x;
            stack.x1 = std::min(x + kTile, width);
            for (; stack.count < kTilesInStack && y < height; y += kTile) {
                stack.tiles[stack.count++] = {x, stack.x1, y, std::min(y + kTile, height)};
            }
            visit(stack);
        }
    }
}

enum class Content { kEmpty, kFull, kMixed };

// What all values have, and what any of them has.
template <typename Value>
struct Common {
    Value all = static_cast<Value>(~Value{0});
    Value any = 0;

    // A whole tile's known length lets the compiler take it by vectors.
    void add(const Value* values, int count) {
        if (count == kTile) {
            addValues(values, kTile);
        } else {
            addValues(values, count);
        }
    }

  private:
    void addValues(const Value* values, int count) {
        Value inAll = all;
        Value inAny = any;
        for (int i = 0; i < count; ++i) {
            inAll = static_cast<Value>(inAll & values[i]);
            inAny = static_cast<Value>(inAny | values[i]);
        }
        all = inAll;
        any = inAny;
    }
};

Content contentOf(const IplImage* image, const Tile& tile) {
    Common<std::uint8_t> common;
    for (int y = tile.y0; y < tile.y1; ++y) {
        common.add(rowOf(image, y) + tile.x0, tile.x1 - tile.x0);
    }
    // Other bytes than 0 and 255 may share no bit; such tiles are taken pixel by pixel.
    return common.all != 0 ? Content::kFull : common.any != 0 ? Content::kMixed : Content::kEmpty;
}

// Sets a run of words to have the bit as in `value`. Words that have it already stay untouched, also
// where no mask has used the memory yet.
void setRun(std::uint32_t* words, int count, std::uint32_t bit, std::uint32_t value) {
    Common<std::uint32_t> common;
    common.add(words, count);
    if (((value != 0 ? ~common.all : common.any) & bit) == 0) {
        return;
    }
    for (int i = 0; i < count; ++i) {
        words[i] = (words[i] & ~bit) | value;
    }
}

}  // namespace

void releasePlanes(std::uint32_t** planes) {
    if (planes != nullptr) {
        std::free(planes[0]);
        delete[] planes;
    }
}

void VORNSEManageUndoRedo::allocate() {
    const auto columns = static_cast<std::size_t>(VORNSEMarker::m_originalWidth);
    const auto rows = static_cast<std::size_t>(VORNSEMarker::m_originalHeight);
    auto pointers = std::make_unique<std::uint32_t*[]>(std::max<std::size_t>(columns, 1));
    std::unique_ptr<std::uint32_t, FreeBlock> block(static_cast<std::uint32_t*>(
        std::calloc(std::max<std::size_t>(columns * rows, 1), sizeof(std::uint32_t))));
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    preferLargePages(block.get(), columns * rows * sizeof(std::uint32_t));
    pointers[0] = block.get();
    for (std::size_t x = 1; x < columns; ++x) {
        pointers[x] = block.get() + x * rows;
    }
    static_cast<void>(block.release());  // owned by the first column from here on
    m_bitPlane = pointers.release();
    width = VORNSEMarker::m_originalWidth;
    height = VORNSEMarker::m_originalHeight;
    m_top = m_bottom = m_current = 0;
    m_maxSize = kSlots;
}

void VORNSEManageUndoRedo::deallocate() {
    releasePlanes(m_bitPlane);
    m_bitPlane = nullptr;
    reset();
    width = height = 0;
}

void VORNSEManageUndoRedo::reset() {
    m_top = m_bottom = m_current = 0;
}

IplImage* VORNSEManageUndoRedo::getMask(int slot) {
    if (slot < 0) {
        return nullptr;
    }
    checkImageSize(VORNSEMarker::m_originalWidth, VORNSEMarker::m_originalHeight, "getMask", 92);
    if (m_bitPlane == nullptr) {
        return nullptr;
    }
    ImagePtr mask = createImage(VORNSEMarker::m_originalWidth, VORNSEMarker::m_originalHeight, 1);
    const std::uint32_t bit = std::uint32_t{1} << slot;
    forEachStack([&](const TileStack& stack) {
        Common<std::uint32_t> common[kTilesInStack];
        for (int x = stack.x0; x < stack.x1; ++x) {
            for (int i = 0; i < stack.count; ++i) {
                const Tile& tile = stack.tiles[i];
                common[i].add(m_bitPlane[x] + tile.y0, tile.rows());
            }
        }
        for (int i = 0; i < stack.count; ++i) {
            const Tile& tile = stack.tiles[i];
            const bool full = (common[i].all & bit) != 0;
            const bool mixed = !full && (common[i].any & bit) != 0;
            for (int y = tile.y0; y < tile.y1; ++y) {
                std::uint8_t* row = rowOf(mask.get(), y);
                if (!mixed) {
                    std::memset(row + tile.x0, full ? 255 : 0, tile.columns());
                    continue;
                }
                for (int x = tile.x0; x < tile.x1; ++x) {
                    row[x] = (m_bitPlane[x][y] & bit) != 0 ? 255 : 0;
                }
            }
        }
    });
    return mask.release();
}

void VORNSEManageUndoRedo::setMask(int slot, const IplImage* image) {
    const std::uint32_t bit = std::uint32_t{1} << slot;
    forEachStack([&](const TileStack& stack) {
        Content content[kTilesInStack];
        for (int i = 0; i < stack.count; ++i) {
            content[i] = contentOf(image, stack.tiles[i]);
        }
        for (int x = stack.x0; x < stack.x1; ++x) {
            std::uint32_t* const column = m_bitPlane[x];
            for (int i = 0; i < stack.count; ++i) {
                const Tile& tile = stack.tiles[i];
                if (content[i] != Content::kMixed) {
                    setRun(column + tile.y0, tile.rows(), bit,
                           content[i] == Content::kFull ? bit : 0U);
                    continue;
                }
                for (int y = tile.y0; y < tile.y1; ++y) {
                    column[y] = (column[y] & ~bit) | (rowOf(image, y)[x] != 0 ? bit : 0U);
                }
            }
        }
    });
}

void VORNSEManageUndoRedo::updateBitPlane(const IplImage* image) {
    setMask(m_current, image);
    m_current = nextSlot(m_current);
    m_top = m_current;
    if (m_bottom == m_current) {
        m_bottom = nextSlot(m_current);
    }
}

IplImage* VORNSEManageUndoRedo::prevMask() {
    return m_current == m_bottom ? nullptr : getMask(prevSlot(m_current));
}

IplImage* VORNSEManageUndoRedo::undo() {
    if (m_current == m_bottom) {
        return nullptr;
    }
    m_current = prevSlot(m_current);
    return prevMask();
}

IplImage* VORNSEManageUndoRedo::redo() {
    if (m_current != m_top) {
        m_current = nextSlot(m_current);
    }
    return getMask(prevSlot(m_current));
}

bool VORNSEManageUndoRedo::canUndo() {
    return m_current != m_bottom && prevSlot(m_current) != m_bottom;
}

bool VORNSEManageUndoRedo::canRedo() {
    return m_current != m_top;
}
