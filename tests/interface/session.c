/* A whole editing session as a host written in C makes it. Gives the line of the first check that
 * fails, 0 when all hold. */
#include <stdlib.h>
#include <string.h>

#include "interface/segmentation_core.h"

#define WIDTH 96
#define HEIGHT 72
#define PIXELS (WIDTH * HEIGHT)
#define CHECK(condition)     \
    do {                     \
        if (!(condition)) {  \
            return __LINE__; \
        }                    \
    } while (0)

int runSessionInC(void);

static uint32_t photo[PIXELS];
static uint32_t blended[PIXELS];
static uint8_t mask[PIXELS];
static uint8_t kept[PIXELS];
static int markers[PIXELS];

/* A bright rectangle, x 30..65 and y 20..50, on a dark ground. */
static int isObject(int x, int y) {
    return x >= 30 && x <= 65 && y >= 20 && y <= 50;
}

static void paintPhoto(void) {
    int x, y;
    for (y = 0; y < HEIGHT; ++y) {
        for (x = 0; x < WIDTH; ++x) {
            const uint32_t shade = (uint32_t)(x * 7 + y * 13) % 11U;
            photo[y * WIDTH + x] = (isObject(x, y) ? 0xFFC8B428U : 0xFF142850U) + shade * 0x010101U;
        }
    }
}

static void markBox(int left, int top, int right, int bottom, int code) {
    int x, y;
    memset(markers, 0, sizeof markers);
    for (y = top; y <= bottom; ++y) {
        for (x = left; x <= right; ++x) {
            markers[y * WIDTH + x] = code;
        }
    }
}

static int wrongPixels(void) {
    int x, y, wrong = 0;
    for (y = 0; y < HEIGHT; ++y) {
        for (x = 0; x < WIDTH; ++x) {
            wrong += (mask[y * WIDTH + x] == 0) != isObject(x, y);
        }
    }
    return wrong;
}

int runSessionInC(void) {
    int loop[] = {22, 12, 74, 12, 74, 58, 22, 58};
    int inner[] = {42, 24, 58, 24, 58, 36, 42, 36};
    int* outline = NULL;
    int count = 0;

    paintPhoto();
    memcpy(blended, photo, sizeof photo);
    CHECK(setSourceImage(WIDTH, HEIGHT, photo) == 0);
    CHECK(initSegmentationEngine(0) == 0);

    CHECK(setCurrentMarkerVector(8, loop) == 0);
    markBox(22, 12, 74, 58, SEGCORE_MARK_CANDIDATE);
    CHECK(setMarkerImage(WIDTH, HEIGHT, markers, SEGCORE_LOOP_ADD) == 0);
    CHECK(processSegment(WIDTH, HEIGHT, 0, blended, mask) == 0);
    CHECK(wrongPixels() < PIXELS / 100);
    CHECK(memcmp(blended, photo, sizeof photo) != 0);
    CHECK(!canUndo() && !canRedo());
    memcpy(kept, mask, sizeof mask);

    fetch_path_array(&outline, &count);
    CHECK(outline != NULL && count > 9 && outline[0] == 1 && outline[count - 1] == -1);
    release_path_array(outline);

    CHECK(setCurrentMarkerVector(8, inner) == 0);
    markBox(42, 24, 58, 36, SEGCORE_MARK_BACKGROUND);
    CHECK(setMarkerImage(WIDTH, HEIGHT, markers, SEGCORE_LOOP_REMOVE) == 0);
    memcpy(blended, photo, sizeof photo);
    CHECK(processSegment(WIDTH, HEIGHT, 0, blended, mask) == 0);
    CHECK(mask[30 * WIDTH + 50] == 255 && canUndo());

    memcpy(blended, photo, sizeof photo);
    undo(blended, mask);
    CHECK(memcmp(mask, kept, sizeof mask) == 0 && canRedo());
    redo(blended, mask);
    CHECK(mask[30 * WIDTH + 50] == 255 && !canRedo());

    markBox(30, 20, 65, 50, SEGCORE_MARK_OBJECT);
    CHECK(setMarkerImage(WIDTH, HEIGHT, markers, SEGCORE_BRUSH_ADD) == 0);
    memcpy(blended, photo, sizeof photo);
    cutOutImage(WIDTH, HEIGHT, 0, blended, mask);
    CHECK(mask[30 * WIDTH + 50] == 0);

    CHECK(resetSegmentationInterface() == 0);
    CHECK(doSegmentationBB(WIDTH, HEIGHT, photo, 22, 12, 74, 58, mask) == 0);
    CHECK(wrongPixels() < PIXELS / 100);

    cancelSegmentation();
    exitSegmentation();
    CHECK(processSegment(WIDTH, HEIGHT, 0, blended, mask) == -1);
    CHECK(freeLocalBuffers() == 0);
    CHECK(deinitSegmentation() == 0);
    return 0;
}
