// What a host can tell of the editing context, for tests of calls that must not change it.
#pragma once

#include <tuple>

#include "history/undo_redo_history.h"
#include "interface/engine_state.h"
#include "interface/segmentation_core.h"
#include "support/image_bytes.h"

// Compares equal as long as nothing changed; an engine that is made again counts as a change.
inline auto editingContext() {
    using History = VORNSEManageUndoRedo;
    // As requests read them, and before getMask looks at the words of the planes anew.
    const auto shown = bytesOf(ImagePtr(History::shown()));
    const int current = History::m_current;
    const auto next = bytesOf(ImagePtr(canRedo() ? History::stepForward() : nullptr));
    History::m_current = current;
    return std::tuple(bytesOf(VORNSEMarker::m_originalImage), VORNSEMarker::m_originalWidth,
                      pHybrid, g_imageResizeFactor, bytesOf(VORNSEMarker::m_srcImage),
                      History::m_current - History::m_bottom, canUndo(), canRedo(), shown, next,
                      bytesOf(ImagePtr(History::prevMask())),
                      bytesOf(ImagePtr(canRedo() ? History::getMask(History::m_current) : nullptr)),
                      g_contoursReady);
}
