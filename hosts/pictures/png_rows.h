/* The rows of a damaged PNG file as far as they can be read. In C, since the format's library leaves a
 * failed call by a jump, which objects of C++ would not survive. */
#ifndef SEGCORE_PNG_ROWS_H
#define SEGCORE_PNG_ROWS_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Reads as much as the file gives, past wrong check sums; rows that it lacks keep what the room held.
 * With `as_colour` every picture becomes blue, green, red, otherwise its channels stay. Returns 1 when
 * there was at least one row. From any thread.
 *   room  called once with `data`, before the first row, for memory of `height` rows of `width` pixels
 *         with `channels` samples of 1 byte: blue, green, red (and alpha), or grey. NULL gives up */
int segcore_png_rows(const uint8_t* bytes, size_t size, int as_colour,
                     uint8_t* (*room)(void* data, uint32_t width, uint32_t height, int channels),
                     void* data);

#ifdef __cplusplus
}
#endif
#endif
