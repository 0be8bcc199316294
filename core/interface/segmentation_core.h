/*
 * SegmentationCore: cuts the object out of a photograph. The only header that a host needs; plain
 * C.
 *
 * One editing context per process. Order of calls:
 *
 *     setSourceImage, initSegmentationEngine,
 *     then requests: setCurrentMarkerVector, setMarkerImage, processSegment (or cutOutImage),
 *     undo, redo in any number; resetSegmentationInterface starts afresh on the same photograph;
 *     deinitSegmentation ends it. doSegmentationBB does all of it from a rectangle.
 *
 * Conventions
 *   Size          width and height in pixels, each at least 1, width * height at most
 *                 SEGCORE_MAX_PIXELS. Calls without sizes take the photograph's.
 *   Pixel words   one uint32_t a pixel, row by row without padding: bits 0-7 channel 0 (blue), 8-15
 *                 channel 1 (green), 16-23 channel 2 (red), 24-31 alpha, ignored on input and 0xFF
 *                 on output.
 *   Mask bytes    one uint8_t a pixel, row by row: 0 object, 255 the rest.
 *   Blended words the photograph's pixel words as the host holds them; results overwrite the pixels
 *                 of the object's outline with opaque yellow (0xFFFFFF00) and touch nothing else,
 *                 or write the plain photograph where there is no result to show.
 *   Buffers       stay the host's and are used during the call only.
 *   Errors        a call that cannot be carried out (a bad size, a null buffer, the wrong order, no
 *                 memory) logs one line at error priority under the tag "Error", leaves photograph,
 *                 engine and history as they were, and returns as usual. No call throws.
 *   Threads       one host thread makes all calls, one at a time; cancelSegmentation alone may come
 *                 from any other thread at any time.
 *   Results       0 unless stated.
 */
#ifndef SEGMENTATION_CORE_H
#define SEGMENTATION_CORE_H

#include <stdbool.h>
#include <stdint.h>

#ifndef SEGCORE_API
#define SEGCORE_API __attribute__((visibility("default")))
#endif

/* Largest photograph: the engine numbers eight links a pixel with 32-bit integers. */
#define SEGCORE_MAX_PIXELS 201326592

/* Marker codes, one int a pixel. Other values up to 255 are neither object nor background. */
#define SEGCORE_MARK_NONE 0
#define SEGCORE_MARK_BACKGROUND 1
#define SEGCORE_MARK_OBJECT 2
#define SEGCORE_MARK_CANDIDATE 4 /* inside of a loop or box: may be object */

/* Stroke types. */
#define SEGCORE_LOOP_ADD 0     /* closed loop around what is to be added; also a box */
#define SEGCORE_LOOP_REMOVE 1  /* closed loop around what is to be removed */
#define SEGCORE_BRUSH_ADD 2    /* strokes over the object */
#define SEGCORE_BRUSH_REMOVE 3 /* strokes over the background */

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Life cycle ---- */

/*
 * Stores a copy of the photograph and starts an empty history for it. A photograph already there is
 * replaced; the engine has to be initialised again.
 *   width, height  size of the photograph
 *   pixels         width * height pixel words, not null
 */
SEGCORE_API int setSourceImage(int width, int height, const uint32_t* pixels);

/*
 * Creates the engine for the stored photograph: working image, texture, neighbour weights. An
 * engine already there is replaced. Clears a pending cancel. unused  not read
 */
SEGCORE_API int initSegmentationEngine(int unused);

/*
 * Writes the photograph's pixel words, alpha 0xFF.
 *   out  width * height words, not null
 */
SEGCORE_API void copySourceImage(uint32_t* out);

/* Releases the buffers of a pending request. */
SEGCORE_API int freeLocalBuffers(void);

/* Forgets marks, history and outline; photograph and engine stay. Clears a pending cancel. */
SEGCORE_API int resetSegmentationInterface(void);

/* Releases photograph, engine, history and outline. */
SEGCORE_API int deinitSegmentation(void);

/*
 * Asks a running request to stop; it then delivers no mask. From any thread. Stays in force, for
 * later requests too, until resetSegmentationInterface or a new engine clears it.
 */
SEGCORE_API void cancelSegmentation(void);

/*
 * After cancelSegmentation: has the next processSegment, cutOutImage, undo or redo end with the
 * release that deinitSegmentation makes.
 */
SEGCORE_API void exitSegmentation(void);

/* ---- Request ---- */

/*
 * Stores the stroke of the next request.
 *   count   number of ints, two a point; below 1 empties the stroke. An odd count reads one int
 * more. points  x, y, x, y, ... in photograph pixels, not null for a count above 0; points outside
 * the photograph are moved to its border, in this array too, and logged
 */
SEGCORE_API int setCurrentMarkerVector(int count, int* points);

/*
 * Stores the marks and the stroke type of the next request.
 *   width, height  size of the photograph
 *   values         width * height marker codes, saturated to 0..255, not null
 *   strokeType     one of the stroke types above; other values change nothing of a result on
 * display
 */
SEGCORE_API int setMarkerImage(int width, int height, const int* values, int strokeType);

/*
 * Runs the request and delivers its result, which becomes the newest entry of the history. The marks
 * are used up, also by a request that fails. Without marks, or when cancelled or out of time (10 s),
 * the blended buffer receives the plain photograph and the mask buffer is left alone.
 *   unused1..3  not read
 *   blended     blended words, not null
 *   mask        receives mask bytes, not null when marks are pending
 * Result: 0, or -1 after the release that exitSegmentation asked for.
 */
SEGCORE_API int processSegment(int unused1, int unused2, int unused3, uint32_t* blended,
                               uint8_t* mask);

/* ---- Result ---- */

/* Deliver the mask that is being handed over. Between calls there is none: use the calls around. */
SEGCORE_API void loadMaskImageInfo(uint8_t* out);
SEGCORE_API void loadBlendedImageInfo(uint32_t* out);

/*
 * Hands out the outline of the latest result, once: n, then for each of n contours its number of
 * points T, T pairs x, y in photograph pixels, and -1. The single int 0 when there is none to
 * fetch. array  receives the ints, to be released with release_path_array (delete[] in C++); not
 * null. Null is stored without memory, and the outline can be fetched again. count  receives their
 * number; not null
 */
SEGCORE_API void fetch_path_array(int** array, int* count);

/* Releases an array of fetch_path_array; null does nothing. From any thread. */
SEGCORE_API void release_path_array(int* array);

/*
 * Edits the mask on display by the pending marks without segmenting: background marks clear, object
 * marks set. The edit becomes the newest entry of the history.
 *   unused1..3  not read
 *   blended     blended words, or null
 *   mask        receives mask bytes, or null
 */
SEGCORE_API void cutOutImage(int unused1, int unused2, int unused3, uint32_t* blended,
                             uint8_t* mask);

/* ---- History (the last 31 masks) ---- */

/*
 * Steps back or forward and delivers the mask then on display. Stepping back past the first mask
 * writes the plain photograph and leaves the mask buffer alone; redo at the newest mask delivers it
 * again. Pending marks are dropped.
 *   blended  blended words, not null
 *   mask     receives mask bytes, not null when there is a mask to deliver
 */
SEGCORE_API void undo(uint32_t* blended, uint8_t* mask);
SEGCORE_API void redo(uint32_t* blended, uint8_t* mask);

/* Whether the host should offer the step; canUndo is false on the first mask. */
SEGCORE_API bool canUndo(void);
SEGCORE_API bool canRedo(void);

/* ---- Everything at once ---- */

/*
 * Replaces photograph, engine and history and segments the inside of a rectangle. Afterwards the
 * host may go on with any other call. width, height             size of the photograph pixels width
 * * height pixel words, not null, not modified left, top, right, bottom  the rectangle, its corners
 * included, clamped to the photograph; nothing is marked when right < left or bottom < top mask
 * receives width * height mask bytes, not null
 */
SEGCORE_API int doSegmentationBB(int width, int height, const uint32_t* pixels, int left, int top,
                                 int right, int bottom, uint8_t* mask);

#ifdef __cplusplus
}
#endif

#endif /* SEGMENTATION_CORE_H */
