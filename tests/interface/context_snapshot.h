// What a host can tell of the editing context, for tests of calls that must not change it.
#pragma once

#include <cstdint>
#include <vector>

#include "history/undo_redo_history.h"
#include "interface/engine_state.h"
#include "interface/segmentation_core.h"

inline std::vector<std::uint8_t> bytesOf(const IplImage* image) {
    std::vector<std::uint8_t> bytes;
    for (int y = 0; image != nullptr && y < image->height; ++y) {
        const std::uint8_t* row = rowOf(image, y);
        bytes.insert(bytes.end(), row, row + image->width * image->nChannels);
    }
    return bytes;
}

struct ContextSnapshot {
    std::vector<std::uint32_t> photo;      // empty without one
    const VORNSEHybrid* engine = pHybrid;  // an engine that is made again counts as changed
    float resizeFactor = g_imageResizeFactor;
    std::vector<std::uint8_t> working = bytesOf(VORNSEMarker::m_srcImage);
    int undoSteps = VORNSEManageUndoRedo::m_current - VORNSEManageUndoRedo::m_bottom;
    bool undoable = canUndo();
    bool redoable = canRedo();
    std::vector<std::uint8_t> shown = bytesOf(ImagePtr(VORNSEManageUndoRedo::prevMask()).get());
    bool outlineReady = g_contoursReady;

    ContextSnapshot() {
        if (VORNSEMarker::m_originalImage != nullptr) {
            photo.resize(bytesOf(VORNSEMarker::m_originalImage).size() / kChannels);
            copySourceImage(photo.data());
        }
    }
    bool operator==(const ContextSnapshot& other) const {
        return photo == other.photo && engine == other.engine &&
               resizeFactor == other.resizeFactor && working == other.working &&
               undoSteps == other.undoSteps && undoable == other.undoable &&
               redoable == other.redoable && shown == other.shown &&
               outlineReady == other.outlineReady;
    }
};
