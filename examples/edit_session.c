/*
 * A whole editing session, as an editor makes it step by step:
 *
 *     edit_session IN.ppm LEFT TOP RIGHT BOTTOM MASK.pgm
 *
 * A box around an object that covers the box's middle, a dab of the brush that makes a hole there,
 * back and forward again, a direct edit that fills the hole, the object's outline, the mask into a
 * file. Whatever comes back is checked, so that this is a test of the library, too; the first
 * surprise ends the program.
 */
#include <segmentation_core.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* The editor's side of a session: the photograph, and the buffers that results arrive in. */
typedef struct {
    int width, height;
    size_t count;      /* pixels */
    uint32_t* photo;   /* pixel words: alpha, red, green, blue from the top */
    uint32_t* blended; /* what the editor shows: the photograph with the outline on it */
    uint8_t* mask;     /* 0 object, 255 the rest */
    int* marks;        /* marker codes of the next request */
} Editor;

typedef struct {
    int left, top, right, bottom; /* corners included */
} Box;

static void check(int holds, const char* what) {
    if (!holds) {
        fprintf(stderr, "edit_session: %s\n", what);
        exit(1);
    }
}

static void readPhoto(Editor* editor, const char* path) {
    FILE* in = fopen(path, "rb");
    check(in != NULL, "the photograph cannot be opened");
    check(fscanf(in, "P6 %d %d 255", &editor->width, &editor->height) == 2 && fgetc(in) != EOF &&
              editor->width >= 1 && editor->height >= 1 &&
              editor->width <= SEGCORE_MAX_PIXELS / editor->height,
          "the photograph is not a binary PPM of 8 bits, or too large");
    editor->count = (size_t)editor->width * (size_t)editor->height;
    editor->photo = calloc(editor->count, sizeof *editor->photo);
    editor->blended = calloc(editor->count, sizeof *editor->blended);
    editor->mask = malloc(editor->count);
    editor->marks = calloc(editor->count, sizeof *editor->marks);
    check(editor->photo && editor->blended && editor->mask && editor->marks, "out of memory");
    for (size_t i = 0; i < editor->count; ++i) {
        for (int shift = 16; shift >= 0; shift -= 8) {
            editor->photo[i] |= (uint32_t)(fgetc(in) & 0xFF) << shift;
        }
    }
    check(!feof(in), "the photograph ends too early");
    fclose(in);
    memset(editor->mask, 255, editor->count);
}

static size_t pixelAt(const Editor* editor, int x, int y) {
    return (size_t)y * (size_t)editor->width + (size_t)x;
}

/* Marks a box, and nothing else. */
static void markBox(Editor* editor, Box box, int code, int strokeType) {
    memset(editor->marks, 0, editor->count * sizeof *editor->marks);
    for (int y = box.top; y <= box.bottom; ++y) {
        for (int x = box.left; x <= box.right; ++x) {
            editor->marks[pixelAt(editor, x, y)] = code;
        }
    }
    setMarkerImage(editor->width, editor->height, editor->marks, strokeType);
}

/* Results paint the outline over what the buffer holds, so it gets the photograph first. */
static void showPhoto(Editor* editor) {
    copySourceImage(editor->blended);
}

static void request(Editor* editor, int* points, int count) {
    setCurrentMarkerVector(count, points);
    showPhoto(editor);
    check(processSegment(0, 0, 0, editor->blended, editor->mask) == 0, "the request failed");
}

/* How many pixels of a box belong to the object. */
static int objectPixels(const Editor* editor, Box box) {
    int object = 0;
    for (int y = box.top; y <= box.bottom; ++y) {
        for (int x = box.left; x <= box.right; ++x) {
            object += editor->mask[pixelAt(editor, x, y)] == 0;
        }
    }
    return object;
}

static int areaOf(Box box) {
    return (box.right - box.left + 1) * (box.bottom - box.top + 1);
}

static uint8_t* copyOfMask(const Editor* editor) {
    uint8_t* copy = malloc(editor->count);
    check(copy != NULL, "out of memory");
    memcpy(copy, editor->mask, editor->count);
    return copy;
}

/* Fetches the outline: n, then for each of n contours T, T points and -1. */
static void checkOutline(const Editor* editor) {
    int* path = NULL;
    int length = 0;
    fetch_path_array(&path, &length);
    check(path != NULL && length > 1 && path[0] > 0, "there is no outline");
    int at = 1;
    for (int contour = 0; contour < path[0]; ++contour) {
        const int points = path[at++];
        check(points > 0 && at + 2 * points < length, "a contour is longer than the outline");
        for (int i = 0; i < points; ++i, at += 2) {
            check(path[at] >= 0 && path[at] < editor->width && path[at + 1] >= 0 &&
                      path[at + 1] < editor->height,
                  "the outline leaves the photograph");
        }
        check(path[at++] == -1, "a contour does not end in -1");
    }
    check(at == length, "the outline has another length than it says");
    release_path_array(path);

    fetch_path_array(&path, &length);
    check(path != NULL && length == 1 && path[0] == 0, "the outline came a second time");
    release_path_array(path);
}

static void checkYellowOutline(const Editor* editor) {
    size_t yellow = 0;
    for (size_t i = 0; i < editor->count; ++i) {
        const uint32_t word = editor->blended[i];
        yellow += word == 0xFFFFFF00u;
        check(word == 0xFFFFFF00u || word == (editor->photo[i] | 0xFF000000u),
              "something else than the outline is drawn");
    }
    check(yellow > 0, "no outline is drawn");
}

static void runSession(Editor* editor, Box box) {
    check(setSourceImage(editor->width, editor->height, editor->photo) == 0, "no photograph");
    check(initSegmentationEngine(0) == 0, "no engine");
    check(!canUndo() && !canRedo(), "the history does not start empty");

    /* The box: candidates inside of it, its corners as a closed loop. */
    int corners[] = {box.left,  box.top,    box.right, box.top,
                     box.right, box.bottom, box.left,  box.bottom};
    markBox(editor, box, SEGCORE_MARK_CANDIDATE, SEGCORE_LOOP_ADD);
    request(editor, corners, 8);
    const Box all = {0, 0, editor->width - 1, editor->height - 1};
    const int found = objectPixels(editor, box);
    check(found > 0 && found == objectPixels(editor, all), "the object is not in the box");
    checkYellowOutline(editor);
    uint8_t* afterBox = copyOfMask(editor);

    /* A dab of the brush on the middle of the box takes what is under it away. Its stroke is the one
     * point where the brush went down; a longer one would list the points of its path. */
    const int x = (box.left + box.right) / 2;
    const int y = (box.top + box.bottom) / 2;
    const Box dab = {x - 3, y - 3, x + 3, y + 3};
    check(objectPixels(editor, dab) == areaOf(dab), "the object does not cover the box's middle");
    int touched[] = {x, y};
    markBox(editor, dab, SEGCORE_MARK_BACKGROUND, SEGCORE_BRUSH_REMOVE);
    request(editor, touched, 2);
    check(objectPixels(editor, dab) == 0, "the dab's pixels are still in the object");
    check(objectPixels(editor, all) < found, "the dab took nothing away");
    uint8_t* afterBrush = copyOfMask(editor);

    /* Back and forward again: the same masks, to the byte. */
    check(canUndo() && !canRedo(), "the brush cannot be undone");
    showPhoto(editor);
    undo(editor->blended, editor->mask);
    check(memcmp(editor->mask, afterBox, editor->count) == 0, "undo shows another mask");
    check(!canUndo() && canRedo(), "the undo cannot be taken back");
    showPhoto(editor);
    redo(editor->blended, editor->mask);
    check(memcmp(editor->mask, afterBrush, editor->count) == 0, "redo shows another mask");

    /* A direct edit: exactly the marked pixels change. */
    markBox(editor, dab, SEGCORE_MARK_OBJECT, SEGCORE_BRUSH_ADD);
    showPhoto(editor);
    cutOutImage(0, 0, 0, editor->blended, editor->mask);
    check(objectPixels(editor, dab) == areaOf(dab), "the edit missed pixels");
    for (size_t i = 0; i < editor->count; ++i) {
        check(editor->marks[i] != 0 || editor->mask[i] == afterBrush[i], "the edit took more");
    }
    checkOutline(editor);
    free(afterBox);
    free(afterBrush);
    deinitSegmentation();
}

static void writeMask(const Editor* editor, const char* path) {
    FILE* out = fopen(path, "wb");
    check(out != NULL, "the mask's file cannot be written");
    fprintf(out, "P5 %d %d 255\n", editor->width, editor->height);
    fwrite(editor->mask, 1, editor->count, out);
    check(fclose(out) == 0, "the mask's file cannot be written");
}

int main(int argc, char** argv) {
    if (argc != 7) {
        fprintf(stderr, "usage: edit_session IN.ppm LEFT TOP RIGHT BOTTOM MASK.pgm\n");
        return 1;
    }
    Editor editor;
    readPhoto(&editor, argv[1]);
    const Box box = {atoi(argv[2]), atoi(argv[3]), atoi(argv[4]), atoi(argv[5])};
    check(box.left >= 0 && box.top >= 0 && box.right < editor.width && box.bottom < editor.height,
          "the box leaves the photograph");
    check(box.right - box.left >= 8 && box.bottom - box.top >= 8, "the box is too small");
    runSession(&editor, box);
    writeMask(&editor, argv[6]);
    free(editor.photo);
    free(editor.blended);
    free(editor.mask);
    free(editor.marks);
    return 0;
}
