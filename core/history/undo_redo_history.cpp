// The ring of mask slots. Notation: next and prev step around the ring. Invariant: slot numbers lie
// in 0 .. m_maxSize - 1, and the slots from m_bottom up to m_top (exclusive) hold masks.
//
// The planes are column-major while images are row-major, so both are walked in square tiles that
// fit the first-level cache. All columns lie in one block, made zeroed so that the system hands out
// its pages only when a mask is written.
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

constexpr int kTile = 32;  // 32 columns of 32 words: 4 KiB of planes beside 1 KiB of image

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
};

// Calls visit for every tile of the photograph, down one column of tiles after the other, as the
// planes lie in memory.
template <typename Visit>
void forEachTile(Visit visit) {
    const int width = VORNSEMarker::m_originalWidth;
    const int height = VORNSEMarker::m_originalHeight;
    for (int x = 0; x < width; x += kTile) {
        for (int y = 0; y < height; y += kTile) {
            visit(Tile{x, std::min(x + kTile, width), y, std::min(y + kTile, height)});
        }
    }
}

// Most tiles of a mask are all object or all background and need no transposing.
enum class Content { kEmpty, kFull, kMixed };

Content contentOf(const IplImage* image, const Tile& tile) {
    bool all = true;
    bool any = false;
    for (int y = tile.y0; y < tile.y1; ++y) {
        const std::uint8_t* row = rowOf(image, y);
        for (int x = tile.x0; x < tile.x1; ++x) {
            all &= row[x] != 0;
            any |= row[x] != 0;
        }
    }
    return all ? Content::kFull : any ? Content::kMixed : Content::kEmpty;
}

Content contentOf(std::uint32_t bit, const Tile& tile) {
    std::uint32_t all = bit;
    std::uint32_t any = 0;
    for (int x = tile.x0; x < tile.x1; ++x) {
        const std::uint32_t* column = VORNSEManageUndoRedo::m_bitPlane[x];
        for (int y = tile.y0; y < tile.y1; ++y) {
            all &= column[y];
            any |= column[y];
        }
    }
    return all != 0 ? Content::kFull : (any & bit) != 0 ? Content::kMixed : Content::kEmpty;
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
    forEachTile([&](const Tile& tile) {
        const Content content = contentOf(bit, tile);
        for (int y = tile.y0; y < tile.y1; ++y) {
            std::uint8_t* row = rowOf(mask.get(), y);
            if (content != Content::kMixed) {
                std::memset(row + tile.x0, content == Content::kFull ? 255 : 0, tile.columns());
                continue;
            }
            for (int x = tile.x0; x < tile.x1; ++x) {
                row[x] = (m_bitPlane[x][y] & bit) != 0 ? 255 : 0;
            }
        }
    });
    return mask.release();
}

void VORNSEManageUndoRedo::setMask(int slot, const IplImage* image) {
    const std::uint32_t bit = std::uint32_t{1} << slot;
    forEachTile([&](const Tile& tile) {
        const Content content = contentOf(image, tile);
        if (content != Content::kMixed && contentOf(bit, tile) == content) {
            return;  // also leaves memory alone that no mask has used yet
        }
        for (int x = tile.x0; x < tile.x1; ++x) {
            std::uint32_t* column = m_bitPlane[x];
            if (content != Content::kMixed) {
                const std::uint32_t value = content == Content::kFull ? bit : 0;
                for (int y = tile.y0; y < tile.y1; ++y) {
                    column[y] = (column[y] & ~bit) | value;
                }
                continue;
            }
            for (int y = tile.y0; y < tile.y1; ++y) {
                column[y] = (column[y] & ~bit) | (rowOf(image, y)[x] != 0 ? bit : 0U);
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
