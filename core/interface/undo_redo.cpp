// Steps through the mask history.
#include "history/history_transaction.h"
#include "interface/engine_state.h"
#include "interface/host_call.h"
#include "interface/outline_transaction.h"
#include "interface/segmentation_core.h"

namespace {

// Takes a step and delivers the mask that is then on display, or the plain photograph.
void step(IplImage* (*move)(), bool deliversMask, std::uint32_t* blended, std::uint8_t* mask) {
    requirePhoto();
    requireHistory();
    requireBuffer(blended, "blended buffer");
    if (deliversMask) {
        requireBuffer(mask, "mask buffer");
    }
    HistoryTransaction transaction(HistoryTransaction::Step::kMove);
    g_resultMask = move();
    if (g_resultMask != nullptr) {
        OutlineTransaction outlineTransaction;
        findOutline();
        const ImagePtr outline = drawOutline();
        outlineTransaction.commit();
        writeMask(mask);
        paintOutline(outline.get(), blended);
    } else {
        writePhoto(blended);
    }
    transaction.commit();
}

void finish() {
    releaseImage(g_resultMask);
    releaseImage(g_markerImage);
    tearDownIfExitPending();
    g_exitStatus = 0;
}

}  // namespace

void undo(std::uint32_t* blended, std::uint8_t* mask) {
    guardedCall(
        "undo",
        [&] {
            const bool isEmpty = VORNSEManageUndoRedo::m_current == VORNSEManageUndoRedo::m_bottom;
            step(VORNSEManageUndoRedo::stepBack, VORNSEManageUndoRedo::canUndo(), blended, mask);
            if (isEmpty) {
                call_status::set(SEGCORE_NOTHING_TO_DO);
            }
        },
        finish);
}

void redo(std::uint32_t* blended, std::uint8_t* mask) {
    guardedCall(
        "redo",
        [&] {
            const bool isNewest = !VORNSEManageUndoRedo::canRedo();
            step(VORNSEManageUndoRedo::stepForward, true, blended, mask);
            if (isNewest) {
                call_status::set(SEGCORE_NOTHING_TO_DO);
            }
        },
        finish);
}

bool canUndo() {
    return admitsCall("canUndo") && VORNSEManageUndoRedo::canUndo();
}

bool canRedo() {
    return admitsCall("canRedo") && VORNSEManageUndoRedo::canRedo();
}
