// All columns of planes that are made here lie in one block. It comes zeroed, and the system hands
// out its pages only when a mask is written.
#include "history/bit_planes.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <new>

#include "support/large_pages.h"

namespace {

struct FreeBlock {
    void operator()(std::uint32_t* block) const { std::free(block); }
};

struct MadePlanes {
    std::unique_ptr<std::uint32_t*[]> pointers;
    std::unique_ptr<std::uint32_t, FreeBlock> block;
    TileMap tiles;
    MadePlanes* next;
};

// A list, because a call that may fail keeps the old planes beside the new ones. A plain pointer
// leads to it, so that hosts may still release planes while the program's objects are destroyed.
MadePlanes* newest = nullptr;

// The link that leads to the planes, or the null one at the end of the list.
MadePlanes*& linkTo(std::uint32_t* const* pointers) {
    MadePlanes** link = &newest;
    while (*link != nullptr && (*link)->pointers.get() != pointers) {
        link = &(*link)->next;
    }
    return *link;
}

std::size_t tilesAlong(int pixels) {
    return static_cast<std::size_t>(pixels / kTile + (pixels % kTile > 0 ? 1 : 0));
}

}  // namespace

TileMap::TileMap(int columns, int rows)
    : m_columns(columns),
      m_rows(rows),
      m_tilesInRow(tilesAlong(columns)),
      m_tiles(m_tilesInRow * tilesAlong(rows)) {}

BitPlanes makePlanes(int columns, int rows) {
    const auto width = static_cast<std::size_t>(columns);
    const auto height = static_cast<std::size_t>(rows);
    const std::size_t words = std::max<std::size_t>(width * height, 1);
    auto pointers = std::make_unique<std::uint32_t*[]>(std::max<std::size_t>(width, 1));
    std::unique_ptr<std::uint32_t, FreeBlock> block(
        static_cast<std::uint32_t*>(std::calloc(words, sizeof(std::uint32_t))));
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    preferLargePages(block.get(), words * sizeof(std::uint32_t));
    for (std::size_t x = 0; x < width; ++x) {
        pointers[x] = block.get() + x * height;
    }
    BitPlanes planes(pointers.get());
    planes.m_givenOut = false;
    newest = new MadePlanes{std::move(pointers), std::move(block), TileMap(columns, rows), newest};
    return planes;
}

TileMap* rememberedTiles(const BitPlanes& planes) {
    MadePlanes* const made = linkTo(planes.ownUse());
    return made != nullptr ? &made->tiles : nullptr;
}

void releasePlanes(BitPlanes& planes, int columns) {
    if (planes == nullptr) {
        return;
    }
    std::uint32_t** const pointers = planes.ownUse();
    MadePlanes*& link = linkTo(pointers);
    if (link != nullptr) {
        const std::unique_ptr<MadePlanes> made(link);
        link = made->next;
    } else {
        std::for_each(pointers, pointers + columns, [](std::uint32_t* column) { delete[] column; });
        delete[] pointers;
    }
    planes = nullptr;
}
