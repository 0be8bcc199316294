// The undo/redo history of masks: a ring of 32 slots kept as bit planes, one bit a mask in one
// 32-bit word per photo pixel. The mask on display is in the slot before m_current; at most 31
// masks are reachable, the oldest drop off.
//
// Threads: one. Masks handed out are 8-bit one-channel images of photo size with bytes 0 and 255,
// owned by the caller.
#pragma once

#include <opencv2/core/core_c.h>

#include "history/bit_planes.h"
#include "support/export.h"

class SEGCORE_DATA_API VORNSEManageUndoRedo {
  public:
    // An array of columns: word [x][y] holds pixel (x, y) of every mask, bit k that of slot k. A
    // host may put planes of its own here, the array and each column made with new.
    static BitPlanes m_bitPlane;
    static int m_maxSize;  // slots of the ring
    static int m_bottom;   // oldest boundary; nothing to show when m_current equals it
    static int m_current;  // slot that the next mask goes to
    static int m_top;      // one past the newest mask
    static int width;   // size of the planes; masks have the size of the photograph in the marker
    static int height;  // store, whatever these say

    // Makes cleared planes for the photograph in the marker store and empties the ring. What was
    // there is not released. Throws std::bad_alloc without memory, and then changes nothing.
    static void allocate();
    static void deallocate();
    // Empties the ring; planes and bits stay.
    static void reset();

    // Null for a slot below 0, or without planes.
    static IplImage* getMask(int slot);
    // Stores image byte != 0 as the slot's bits.
    static void setMask(int slot, const IplImage* image);
    // Records a mask: the display moves to it, any redo branch is dropped.
    static void updateBitPlane(const IplImage* image);
    // The mask on display; null when there is none.
    static IplImage* prevMask();
    // A step back, null when that leaves nothing to show. Nothing is taken from an empty history.
    static IplImage* undo();
    // A step forward, or the mask on display again. Only hosts that ask canRedo first should call
    // it: on an empty history it shows the cleared last slot.
    static IplImage* redo();
    static bool canUndo();
    static bool canRedo();

    // updateBitPlane, prevMask, undo and redo as host calls make them. Unless m_bitPlane was read
    // or replaced from outside, they skip the words of tiles that are known to be all alike, and
    // take a fraction of the time. Otherwise the words are read here, too, until the next allocate.
    static void record(const IplImage* image);
    static IplImage* shown();
    static IplImage* stepBack();
    static IplImage* stepForward();
};
