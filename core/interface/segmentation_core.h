/*
 * SegmentationCore: cuts the object out of a photograph. The only header that a host needs, in
 * plain C.
 *
 * There is one editing context per process. The order of calls:
 *
 *     setSourceImage, initSegmentationEngine                    a photograph, and its engine
 *     setCurrentMarkerVector, setMarkerImage, processSegment    a request, as often as wanted
 *     setMarkerImage, cutOutImage                               a direct edit of the mask
 *     undo, redo, fetch_path_array                              at any time in between
 *     resetSegmentationInterface                                a fresh start, same photograph
 *     deinitSegmentation                                        the end
 *
 * doSegmentationBB makes a photograph, an engine and a request in one call.
 *
 * Conventions, which the calls below do not repeat
 *   Size          width and height in pixels, each at least 1, width * height at most
 *                 SEGCORE_MAX_PIXELS. Calls without sizes take the photograph's.
 *   Coordinates   in photograph pixels: x from 0 at the left, y from 0 at the top.
 *   Pixel words   one uint32_t a pixel, row by row without padding: bits 0-7 channel 0 (blue), 8-15
 *                 channel 1 (green), 16-23 channel 2 (red), 24-31 alpha, ignored on input and 0xFF
 *                 on output.
 *   Mask bytes    one uint8_t a pixel, row by row without padding: 0 object, 255 the rest.
 *   Blended words the photograph's pixel words as the host holds them. A result overwrites the
 *                 pixels of the object's outline with opaque yellow (0xFFFFFF00) and touches
 *                 nothing else. Where there is no result to show, the plain photograph is written.
 *   Buffers       stay the host's and are used during the call only. Unless a comment says
 *                 otherwise, they are not null.
 *   Result        an int result is 0 unless a comment says otherwise.
 *   Bad arguments a call that cannot be carried out (a bad size, a null buffer, the wrong order, no
 *                 memory) logs one line at error priority under the tag "Error", leaves photograph,
 *                 engine, history and buffers as they were, and returns as usual. "Refused" below
 *                 means this. No call throws.
 *   Threads       one host thread makes the calls, one at a time. cancelSegmentation and
 *                 release_path_array alone may come from any thread at any time.
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

/*
 * Marker codes, one int a pixel, and stroke types, one a request. Together with the mask on display
 * they say what the engine takes a pixel for:
 *
 *                     no mask   LOOP_ADD, BRUSH_ADD        LOOP_REMOVE, BRUSH_REMOVE
 *     mark            on        on the      on the         on the      on the
 *                     display   object      background     object      background
 *     0 NONE             B         O           B              O           B
 *     1 BACKGROUND       B         O           B              B           B
 *     2 OBJECT           O         O           O              O           B
 *     3 (no name)        b         O           b              b           B
 *     4 CANDIDATE        o         O           o              o           B
 *     5 to 255           -         O           -              -           B
 *
 *     B background, O object: fixed         b, o: probably, the engine decides
 *     - neither object nor background; no host should use these codes
 *
 * Before the table applies, a brush marks the unmarked pixels around its own marks: with 4 around
 * OBJECT in BRUSH_ADD, with 3 around BACKGROUND in BRUSH_REMOVE. They reach a twentieth of the
 * square root of width * height. Other codes of a brush request would spread as far, the larger
 * code over the smaller, so give it its own code alone.
 * After it, a line along the points of setCurrentMarkerVector, closed to the first, is left for the
 * engine to decide. It is three pixels wide in the working image, to which large photographs are
 * reduced.
 *
 * Over a mask on display, the result goes the way of the stroke type only: adding never removes,
 * removing never adds, and of what a brush changed only the regions stay in which a point of
 * setCurrentMarkerVector lies. Other stroke types change nothing of a mask on display.
 */
#define SEGCORE_MARK_NONE 0
#define SEGCORE_MARK_BACKGROUND 1
#define SEGCORE_MARK_OBJECT 2
#define SEGCORE_MARK_CANDIDATE 4 /* inside of a loop or box: may be object */

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
 * replaced; the engine then has to be initialised again.
 *   width, height  size of the photograph
 *   pixels         width * height pixel words
 * Refused: a bad size, null, no memory.
 */
SEGCORE_API int setSourceImage(int width, int height, const uint32_t* pixels);

/*
 * Creates the engine for the stored photograph and prepares what all requests on it share. An
 * engine already there is replaced. Clears a pending cancel.
 *   unused  not read
 * Refused: no photograph, no memory.
 */
SEGCORE_API int initSegmentationEngine(int unused);

/*
 * Writes the stored photograph.
 *   out  receives width * height pixel words
 * Refused: null, no photograph.
 */
SEGCORE_API void copySourceImage(uint32_t* out);

/* Drops the marks of a pending request. */
SEGCORE_API int freeLocalBuffers(void);

/* Forgets marks, history and outline; photograph and engine stay. Clears a pending cancel. */
SEGCORE_API int resetSegmentationInterface(void);

/* Releases photograph, engine, history and outline. */
SEGCORE_API int deinitSegmentation(void);

/*
 * Asks a running request to stop. It delivers no mask then, and the history stays as it was.
 * Once the mask is found and only being enlarged to the photograph's size, it is delivered and
 * recorded all the same, in the state that it has at that moment: its border can be wrong, and undo
 * brings back the mask before. The time limit of a request works in the same way, and
 * segcore_last_status tells of both.
 * The cancel stays in force, for later requests too, until resetSegmentationInterface or
 * initSegmentationEngine clears it. A time limit that is reached can leave a cancel in force, too.
 * Thread: any.
 */
SEGCORE_API void cancelSegmentation(void);

/*
 * After cancelSegmentation: has the next processSegment, cutOutImage, undo or redo end with what
 * deinitSegmentation does. Without a cancel in force the call undoes an earlier one.
 */
SEGCORE_API void exitSegmentation(void);

/* ---- Request ---- */

/*
 * Stores the stroke of the next request: the line of a loop or box, or the path of a brush. It
 * stays for later requests, too, until this call replaces it.
 *   count   number of ints in points, two a point, so an even number; below 1 empties the stroke
 *   points  x, y, x, y, ...; may be null when count is below 1. Points outside the photograph are
 *           moved to its border, in this array too. With an odd count one int more is read and may
 *           be written
 * Refused: null, no photograph so far, no memory.
 */
SEGCORE_API int setCurrentMarkerVector(int count, int* points);

/*
 * Stores a copy of the marks, and the stroke type, of the next request. Marks already there are
 * replaced.
 *   width, height  size of the photograph
 *   values         width * height marker codes; below 0 counts as 0, above 255 as 255
 *   strokeType     a stroke type
 * Refused: another size than the photograph's, null, no photograph, no memory.
 */
SEGCORE_API int setMarkerImage(int width, int height, const int* values, int strokeType);

/*
 * Runs the request and delivers its result, which becomes the newest entry of the history. The
 * marks are used up, also by a request that is refused. Without marks, or when the request was
 * cancelled, out of time or ended by the observer, the blended buffer receives the plain
 * photograph and the mask buffer is left alone.
 *   unused1..3  not read
 *   blended     blended words
 *   mask        receives width * height mask bytes; may be null when no marks are pending
 * Result: 0, or -1 after the release that exitSegmentation asked for.
 * Refused: null, no photograph, no engine for a photograph of this size, no memory.
 */
SEGCORE_API int processSegment(int unused1, int unused2, int unused3, uint32_t* blended,
                               uint8_t* mask);

/* ---- Result ---- */

/*
 * Deliver the mask that a result call is handing over. Between calls there is none, so that a host
 * uses processSegment, cutOutImage, undo and redo instead.
 *   out  receives width * height mask bytes, or blended words
 * Refused: null, no mask.
 */
SEGCORE_API void loadMaskImageInfo(uint8_t* out);
SEGCORE_API void loadBlendedImageInfo(uint32_t* out);

/*
 * Hands out the outline of the latest result, once: the number n of contours, then for each of them
 * its number T of points, T pairs x, y, and -1. When there is no outline to fetch: the single
 * int 0.
 *   array  receives the address of the ints. They are the host's until it gives them to
 *          release_path_array (in C++, delete[] does the same). Null without memory; the outline
 *          can then be fetched again
 *   count  receives the number of ints, 0 without memory
 * Refused: null, no memory.
 */
SEGCORE_API void fetch_path_array(int** array, int* count);

/*
 * Releases an array of fetch_path_array or segcore_snap_path.
 *   array  the array; null does nothing
 * Thread: any.
 */
SEGCORE_API void release_path_array(int* array);

/*
 * Edits the mask on display by the pending marks without segmenting: BACKGROUND marks clear, OBJECT
 * marks set, others do nothing. The edit becomes the newest entry of the history; the marks are
 * used up, also by an edit that is refused.
 *   unused1..3  not read
 *   blended     blended words; may be null, and the outline is then not looked for
 *   mask        receives width * height mask bytes; may be null
 * Refused: no photograph, no marks, no memory.
 */
SEGCORE_API void cutOutImage(int unused1, int unused2, int unused3, uint32_t* blended,
                             uint8_t* mask);

/* ---- History (the last 31 masks) ---- */

/*
 * Step back or forward and deliver the mask then on display. Stepping back past the first mask
 * writes the plain photograph and leaves the mask buffer alone. redo at the newest mask delivers it
 * again; with an empty history it has no mask of any use, so ask canRedo first. Pending marks are
 * dropped, also by a step that is refused.
 *   blended  blended words
 *   mask     receives width * height mask bytes; in undo, may be null when canUndo is false
 * Refused: null, no photograph, no memory.
 */
SEGCORE_API void undo(uint32_t* blended, uint8_t* mask);
SEGCORE_API void redo(uint32_t* blended, uint8_t* mask);

/*
 * Whether a host should offer the step.
 * Result: canUndo is false on the first mask, although undo can still step back past it; canRedo is
 * false on the newest.
 */
SEGCORE_API bool canUndo(void);
SEGCORE_API bool canRedo(void);

/* ---- Everything at once ---- */

/*
 * Replaces photograph, engine and history, and segments the inside of a rectangle. Afterwards the
 * host may go on with any other call.
 *   width, height             size of the photograph
 *   pixels                    width * height pixel words, not modified
 *   left, top, right, bottom  the rectangle, its corners included, clamped to the photograph.
 *                             Nothing is marked when right < left or bottom < top
 *   mask                      receives width * height mask bytes. A request that is cancelled,
 *                             out of time or ended by the observer leaves it alone
 * Refused: a bad size, null, no memory.
 */
SEGCORE_API int doSegmentationBB(int width, int height, const uint32_t* pixels, int left, int top,
                                 int right, int bottom, uint8_t* mask);

/* ---- Paths along edges ---- */

/*
 * Finds the path between two pixels of an image that keeps to its edges, for a loop that snaps to
 * them. Of all paths over the eight neighbours of a pixel it is the one of least cost. A step costs
 * sqrt(alpha * squared length + (1 - alpha) * mean squared difference of the three channels).
 * The whole image is searched, so reduce a large one: 0.3 megapixels take about 0.2 s. Needs no
 * photograph, and leaves an edit as it is.
 *   width, height  size of the image
 *   pixels         width * height pixel words
 *   from_x, from_y the pixel to start at
 *   to_x, to_y     the pixel to end at
 *   alpha          0 (colours alone lead the path) to 1 (the shortest path)
 *   array          receives the address of the path's ints: x, y, x, y, ..., both ends included.
 *                  They are the host's until it gives them to release_path_array. Null when refused
 *   count          receives the number of ints, two a pixel of the path; 0 when refused
 * Refused: a bad size, null, a pixel outside the image, an alpha outside 0 to 1, no memory.
 */
SEGCORE_API void segcore_snap_path(int width, int height, const uint32_t* pixels, int from_x,
                                   int from_y, int to_x, int to_y, double alpha, int** array,
                                   int* count);

/* ---- What became of a call, how long it may take, and watching it ---- */

/*
 * What became of the latest call. cancelSegmentation, release_path_array, canUndo, canRedo and the
 * two calls that ask for the status leave it as it is.
 */
#define SEGCORE_DONE 0
#define SEGCORE_NOTHING_TO_DO 1     /* no marks, no step to take, no outline to fetch */
#define SEGCORE_CANCELLED 2         /* cancelSegmentation came during the request, or before it */
#define SEGCORE_OUT_OF_TIME 3       /* the request reached its time limit */
#define SEGCORE_ENDED_BY_OBSERVER 4 /* the observer returned something else than 0 */
#define SEGCORE_REFUSED 5           /* segcore_last_reason says why */
#define SEGCORE_OUT_OF_MEMORY 6

/*
 * The status of the latest call. A request that is cancelled or out of time while its mask is being
 * enlarged delivers and records that mask although it is not finished; the status says so all the
 * same. A host that wants the mask before it calls resetSegmentationInterface, which clears the
 * cancel, and writes back the mask that it kept, by setMarkerImage (OBJECT and BACKGROUND marks)
 * and cutOutImage.
 * Result: one of the codes above.
 */
SEGCORE_API int segcore_last_status(void);

/*
 * Why the latest call was refused or failed: the text of its log line without the call's name.
 * Result: the library's, valid until the next call; empty when there is nothing to say.
 */
SEGCORE_API const char* segcore_last_reason(void);

/*
 * Sets how long each later request may take, from the moment when its marks are read.
 *   seconds  0 for no limit; below 0 for the ten seconds that hold until this is called. They are
 *            counted on the clock of the day, a limit set here is counted on the monotonic clock
 */
SEGCORE_API void segcore_set_time_limit(double seconds);

/*
 * A host's log. Called for each line, one at a time, from any of the library's threads. Calls
 * of the library from inside it are refused, except for cancelSegmentation and release_path_array.
 *   level  4 information, 5 warning, 6 error
 *   tag    "Error" for what concerns the host; others for memory, timings and details
 *   text   the line, valid during the call
 *   user   what segcore_set_log was given
 */
typedef void (*segcore_log)(int level, const char* tag, const char* text, void* user);

/*
 * Hands the log to the host instead of the platform.
 *   receive      null for the platform's log again
 *   user         passed to every call of receive; not looked at
 *   least_level  lines below it are dropped
 */
SEGCORE_API void segcore_set_log(segcore_log receive, void* user, int least_level);

/* Stages of a request, in their order; MODELS, GRAPH and CUT come again in each of five passes. */
#define SEGCORE_STAGE_MARKS 0        /* marks to the labels of the working image */
#define SEGCORE_STAGE_REGION 1       /* the part of it that is looked at */
#define SEGCORE_STAGE_MODELS 2       /* colours of object and background */
#define SEGCORE_STAGE_GRAPH 3        /* weights of the cut */
#define SEGCORE_STAGE_CUT 4          /* the cut */
#define SEGCORE_STAGE_WORKING_MASK 5 /* what is found, not enlarged yet: the mask comes with it */
#define SEGCORE_STAGE_ENLARGEMENT 6 /* a second cut at the photograph's size, when it was reduced */
#define SEGCORE_STAGE_CLEANING 7    /* the stroke's rules, and the merge with the mask on display */
#define SEGCORE_STAGE_DELIVERY 8    /* the outline and the host's buffers */

typedef struct segcore_progress {
    int stage;
    double fraction; /* of the request's time, 0 to 1, estimated; never falls during a request */
    /*
     * At SEGCORE_STAGE_WORKING_MASK only, otherwise null and 0: a preview of the result. It is
     * cleaned and merged with the mask on display as the result will be, at the working image's
     * size. Working pixel (x, y) lies at photograph pixel (x * width / mask_width,
     * y * height / mask_height).
     */
    const uint8_t* mask; /* mask_width * mask_height mask bytes, valid during the call */
    int mask_width;
    int mask_height;
    int left; /* the rectangle of the mask that this request decided, corners included; */
    int top;  /* the rest is the mask on display */
    int right;
    int bottom;
} segcore_progress;

/*
 * A host's observer of requests, called as each stage begins, on the thread that makes the request.
 * Calls of the library from inside it are refused with a log line, except for cancelSegmentation
 * and release_path_array.
 *   progress  where the request is, valid during the call
 *   user      what segcore_set_observer was given
 * Result: 0 to go on. Anything else ends this one request: it delivers no mask and records nothing,
 * and engine and history are as before it. Unlike a cancel it leaves nothing in force. When a
 * cancel or the time limit came first, that stays in force and is what segcore_last_status tells.
 */
typedef int (*segcore_observer)(const segcore_progress* progress, void* user);

/*
 * Sets the observer of all later requests.
 *   observer  null for none
 *   user      passed to every call of observer; not looked at
 */
SEGCORE_API void segcore_set_observer(segcore_observer observer, void* user);

#ifdef __cplusplus
}
#endif

#endif /* SEGMENTATION_CORE_H */
