/* What a JPEG file lacks or holds wrongly. In C, since the format's library leaves a failed call by a
 * jump, which objects of C++ would not survive. */
#ifndef SEGCORE_JPEG_DAMAGE_H
#define SEGCORE_JPEG_DAMAGE_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define SEGCORE_DAMAGE_TEXT_SIZE 200

/* Reads the whole picture, an eighth of its size. Returns 1 and the library's words for the first
 * fault in `text` when the picture is damaged, 0 when it is whole. From any thread. */
int segcore_jpeg_damage(const uint8_t* bytes, size_t size, char text[SEGCORE_DAMAGE_TEXT_SIZE]);

#ifdef __cplusplus
}
#endif
#endif
