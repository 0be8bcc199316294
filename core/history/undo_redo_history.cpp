// The ring of mask slots. Notation: next and prev step around the ring. Invariant: slot numbers lie
// in 0 .. m_maxSize - 1, and the slots from m_bottom up to m_top (exclusive) hold masks.
#include "history/undo_redo_history.h"

#include <limits>

#include "history/marker.h"
#include "history/slot_store.h"
#include "support/log.h"

namespace {
constexpr int kSlots = 32;
static_assert(kSlots == std::numeric_limits<std::uint32_t>::digits, "a slot is a bit of a word");
}  // namespace

BitPlanes VORNSEManageUndoRedo::m_bitPlane;
int VORNSEManageUndoRedo::m_maxSize = kSlots;  // never 0: the ring's arithmetic divides by it
int VORNSEManageUndoRedo::m_bottom = 0;
int VORNSEManageUndoRedo::m_current = 0;
int VORNSEManageUndoRedo::m_top = 0;
int VORNSEManageUndoRedo::width = 0;
int VORNSEManageUndoRedo::height = 0;

using History = VORNSEManageUndoRedo;
using slot_store::Source;

namespace {

int nextSlot(int slot) {
    return (slot + 1) % History::m_maxSize;
}

int prevSlot(int slot) {
    const int size = History::m_maxSize;
    return ((slot < 1 ? slot + size : slot) - 1) % size;
}

IplImage* maskOf(int slot, Source source) {
    checkImageSize(VORNSEMarker::m_originalWidth, VORNSEMarker::m_originalHeight, "getMask", 92);
    const bool hasPlanes = History::m_bitPlane != nullptr;
    return hasPlanes ? slot_store::load(slot, source).release() : nullptr;
}

void recordFrom(const IplImage* image, Source source) {
    slot_store::store(History::m_current, image, source);
    History::m_current = nextSlot(History::m_current);
    History::m_top = History::m_current;
    if (History::m_bottom == History::m_current) {
        History::m_bottom = nextSlot(History::m_current);
    }
}

IplImage* shownFrom(Source source) {
    const bool isEmpty = History::m_current == History::m_bottom;
    return isEmpty ? nullptr : maskOf(prevSlot(History::m_current), source);
}

IplImage* stepBackFrom(Source source) {
    if (History::m_current == History::m_bottom) {
        return nullptr;
    }
    History::m_current = prevSlot(History::m_current);
    return shownFrom(source);
}

IplImage* stepForwardFrom(Source source) {
    if (History::m_current != History::m_top) {
        History::m_current = nextSlot(History::m_current);
    }
    return maskOf(prevSlot(History::m_current), source);
}

}  // namespace

void VORNSEManageUndoRedo::allocate() {
    m_bitPlane = makePlanes(VORNSEMarker::m_originalWidth, VORNSEMarker::m_originalHeight);
    width = VORNSEMarker::m_originalWidth;
    height = VORNSEMarker::m_originalHeight;
    m_top = m_bottom = m_current = 0;
    m_maxSize = kSlots;
}

void VORNSEManageUndoRedo::deallocate() {
    releasePlanes(m_bitPlane, width);
    reset();
    width = height = 0;
}

void VORNSEManageUndoRedo::reset() {
    m_top = m_bottom = m_current = 0;
}

IplImage* VORNSEManageUndoRedo::getMask(int slot) {
    return slot < 0 ? nullptr : maskOf(slot, Source::kWords);
}

void VORNSEManageUndoRedo::setMask(int slot, const IplImage* image) {
    slot_store::store(slot, image, Source::kWords);
}

void VORNSEManageUndoRedo::updateBitPlane(const IplImage* image) {
    recordFrom(image, Source::kWords);
}

void VORNSEManageUndoRedo::record(const IplImage* image) {
    recordFrom(image, Source::kRemembered);
}

IplImage* VORNSEManageUndoRedo::prevMask() {
    return shownFrom(Source::kWords);
}

IplImage* VORNSEManageUndoRedo::shown() {
    return shownFrom(Source::kRemembered);
}

IplImage* VORNSEManageUndoRedo::undo() {
    return stepBackFrom(Source::kWords);
}

IplImage* VORNSEManageUndoRedo::stepBack() {
    return stepBackFrom(Source::kRemembered);
}

IplImage* VORNSEManageUndoRedo::redo() {
    return stepForwardFrom(Source::kWords);
}

IplImage* VORNSEManageUndoRedo::stepForward() {
    return stepForwardFrom(Source::kRemembered);
}

bool VORNSEManageUndoRedo::canUndo() {
    return m_current != m_bottom && prevSlot(m_current) != m_bottom;
}

bool VORNSEManageUndoRedo::canRedo() {
    return m_current != m_top;
}
