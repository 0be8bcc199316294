#include "png_rows.h"

#include <png.h>
#include <setjmp.h>
#include <string.h>

typedef struct {
    const uint8_t* next;
    size_t left;
} Source;

static void take(png_structp png, png_bytep to, size_t count) {
    Source* source = (Source*)png_get_io_ptr(png);
    if (count > source->left) {
        png_error(png, "the file ends early");
    }
    memcpy(to, source->next, count);
    source->next += count;
    source->left -= count;
}

static void ignore(png_structp png, png_const_charp words) {
    (void)png;
    (void)words;
}

static void give_up(png_structp png, png_const_charp words) {
    (void)words;
    png_longjmp(png, 1);
}

/* Eight bits a sample, no palette; the same conversions as the imaging library's. */
static void choose_samples(png_structp png, png_infop info, int as_colour) {
    const int colour = png_get_color_type(png, info);
    png_set_strip_16(png);
    if (colour == PNG_COLOR_TYPE_GRAY) {
        png_set_expand_gray_1_2_4_to_8(png);
    } else {
        png_set_expand(png);
    }
    if (as_colour) {
        png_set_strip_alpha(png);
    }
    if (as_colour || colour == PNG_COLOR_TYPE_GRAY_ALPHA) {
        png_set_gray_to_rgb(png);
    }
    png_set_bgr(png);
}

static void read_rows(png_structp png, png_infop info, int as_colour,
                      uint8_t* (*room)(void*, uint32_t, uint32_t, int), void* data,
                      volatile int* rows) {
    png_read_info(png, info);
    choose_samples(png, info, as_colour);
    const int passes = png_set_interlace_handling(png);
    png_read_update_info(png, info);
    const uint32_t height = png_get_image_height(png, info);
    uint8_t* pixels =
        room(data, png_get_image_width(png, info), height, png_get_channels(png, info));
    const size_t stride = png_get_rowbytes(png, info);
    for (int pass = 0; pixels != NULL && pass < passes; ++pass) {
        for (uint32_t y = 0; y < height; ++y) {
            png_read_row(png, pixels + y * stride, NULL);
            *rows = 1;
        }
    }
}

int segcore_png_rows(const uint8_t* bytes, size_t size, int as_colour,
                     uint8_t* (*room)(void*, uint32_t, uint32_t, int), void* data) {
    Source source = {bytes, size};
    volatile int rows = 0;
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, NULL, give_up, ignore);
    png_infop info = png != NULL ? png_create_info_struct(png) : NULL;
    if (info != NULL && setjmp(png_jmpbuf(png)) == 0) {
        png_set_read_fn(png, &source, take);
        png_set_crc_action(png, PNG_CRC_WARN_USE, PNG_CRC_WARN_DISCARD);
        read_rows(png, info, as_colour, room, data, &rows);
    }
    png_destroy_read_struct(&png, &info, NULL);
    return rows;
}
