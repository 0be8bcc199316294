/*
 * A host whose own variables have the names of the library's exported data. It runs a session; both
 * sides keep what is theirs. The variables are as large as anything that the library keeps under
 * these names, so that a library that took them for its own would only be seen by what it wrote.
 */
#include <stdio.h>
#include <string.h>

#include "interface/segmentation_core.h"

#define OWN(name) char name[64] = #name;
#define CHANGED(name) changed += strcmp(name, #name) != 0;
/* clang-format off */
#define EACH(apply)                                                        \
    apply(contours) apply(gMemStack) apply(g_cancelTimer)                  \
    apply(g_contoursReady) apply(g_exitStatus) apply(g_imageResizeFactor)  \
    apply(g_markerImage) apply(g_maxVarDir) apply(g_resultMask)            \
    apply(g_t_TotalTime) apply(g_t_colEst) apply(g_t_colUpd)               \
    apply(g_t_maxflow) apply(g_t_nLinksComputation) apply(g_t_postProcess) \
    apply(g_t_preProcess) apply(g_t_tAndNLinks) apply(g_timer)             \
    apply(g_totalTimer) apply(pHybrid) apply(storage)
/* clang-format on */

EACH(OWN)

enum { kWidth = 80, kHeight = 60 };

static int isDisc(int x, int y) {
    return (x - 40) * (x - 40) + (y - 30) * (y - 30) <= 18 * 18;
}

static int wrongPixels(const uint8_t* mask) {
    int wrong = 0;
    for (int i = 0; i < kWidth * kHeight; ++i) {
        wrong += mask[i] != (isDisc(i % kWidth, i / kWidth) ? 0 : 255);
    }
    return wrong;
}

int main(void) {
    static uint32_t photo[kWidth * kHeight];
    static uint32_t blended[kWidth * kHeight];
    static uint8_t mask[kWidth * kHeight];
    static int marks[kWidth * kHeight];
    int loop[] = {14, 6, 66, 6, 66, 54, 14, 54};
    for (int i = 0; i < kWidth * kHeight; ++i) {
        const int x = i % kWidth, y = i / kWidth;
        const uint32_t grain = (uint32_t)(x * 7 + y * 13 + x * y) % 23;
        photo[i] = (isDisc(x, y) ? 0x1E3CB4u : 0xC88228u) + grain * 0x010101u;
        marks[i] = x >= 14 && x <= 66 && y >= 6 && y <= 54 ? SEGCORE_MARK_CANDIDATE : 0;
    }
    setSourceImage(kWidth, kHeight, photo);
    initSegmentationEngine(0);
    setCurrentMarkerVector(8, loop);
    setMarkerImage(kWidth, kHeight, marks, SEGCORE_LOOP_ADD);
    processSegment(0, 0, 0, blended, mask);
    const int afterBox = wrongPixels(mask);
    undo(blended, mask);
    memset(mask, 7, sizeof mask);
    redo(blended, mask);
    const int afterRedo = wrongPixels(mask);
    deinitSegmentation();

    int changed = 0;
    EACH(CHANGED)
    if (afterBox > 48 || afterRedo != afterBox || changed > 0) {
        printf("%d pixels wrong after the box, %d after redo, %d of the host's variables changed\n",
               afterBox, afterRedo, changed);
        return 1;
    }
    return 0;
}
