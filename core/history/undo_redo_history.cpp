// The ring of mask slots. Notation: next and prev step around the ring. Invariant: slot numbers lie
// in 0 .. m_maxSize - 1, and the slots from m_bottom up to m_top (exclusive) hold masks.
//
// All columns lie in one block, made zeroed so that the system hands out its pages only when a mask is
// written.
#include "history/undo_redo_history.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <new>

#include "history/marker.h"
#include "history/slot_store.h"
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

using History = VORNSEManageUndoRedo;

namespace {

struct FreeBlock {
    void operator()(std::uint32_t* block) const { std::free(block); }
};

int nextSlot(int slot) {
    return (slot + 1) % History::m_maxSize;
}

int prevSlot(int slot) {
    const int size = History::m_maxSize;
    return ((slot < 1 ? slot + size : slot) - 1) % size;
}

IplImage* recordedMask(int slot) {
    checkImageSize(VORNSEMarker::m_originalWidth, VORNSEMarker::m_originalHeight, "getMask", 92);
    const bool hasPlanes = History::m_bitPlane != nullptr;
    return hasPlanes ? slot_store::load(slot).release() : nullptr;
}

using Load = IplImage* (*)(int slot);

IplImage* shownBy(Load load) {
    return History::m_current == History::m_bottom ? nullptr : load(prevSlot(History::m_current));
}

IplImage* stepBackBy(Load load) {
    if (History::m_current == History::m_bottom) {
        return nullptr;
    }
    History::m_current = prevSlot(History::m_current);
    return shownBy(load);
}

IplImage* stepForwardBy(Load load) {
    if (History::m_current != History::m_top) {
        History::m_current = nextSlot(History::m_current);
    }
    return load(prevSlot(History::m_current));
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
    const std::size_t words =
        slot_store::wordsFor(VORNSEMarker::m_originalWidth, VORNSEMarker::m_originalHeight);
    auto pointers = std::make_unique<std::uint32_t*[]>(std::max<std::size_t>(columns, 1));
    std::unique_ptr<std::uint32_t, FreeBlock> block(static_cast<std::uint32_t*>(
        std::calloc(std::max<std::size_t>(words, 1), sizeof(std::uint32_t))));
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    preferLargePages(block.get(), words * sizeof(std::uint32_t));
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
    if (m_bitPlane != nullptr) {
        slot_store::examine(slot);
    }
    return recordedMask(slot);
}

void VORNSEManageUndoRedo::setMask(int slot, const IplImage* image) {
    slot_store::examine(slot);
    slot_store::store(slot, image);
}

void VORNSEManageUndoRedo::updateBitPlane(const IplImage* image) {
    slot_store::examine(m_current);
    record(image);
}

void VORNSEManageUndoRedo::record(const IplImage* image) {
    slot_store::store(m_current, image);
    m_current = nextSlot(m_current);
    m_top = m_current;
    if (m_bottom == m_current) {
        m_bottom = nextSlot(m_current);
    }
}

IplImage* VORNSEManageUndoRedo::prevMask() {
    return shownBy(getMask);
}

IplImage* VORNSEManageUndoRedo::shown() {
    return shownBy(recordedMask);
}

IplImage* VORNSEManageUndoRedo::undo() {
    return stepBackBy(getMask);
}

IplImage* VORNSEManageUndoRedo::stepBack() {
    return stepBackBy(recordedMask);
}

IplImage* VORNSEManageUndoRedo::redo() {
    return stepForwardBy(getMask);
}

IplImage* VORNSEManageUndoRedo::stepForward() {
    return stepForwardBy(recordedMask);
}

bool VORNSEManageUndoRedo::canUndo() {
    return m_current != m_bottom && prevSlot(m_current) != m_bottom;
}

bool VORNSEManageUndoRedo::canRedo() {
    return m_current != m_top;
}
