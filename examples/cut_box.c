/* Cuts the object in a box out of a photograph: cut_box IN.ppm LEFT TOP RIGHT BOTTOM MASK.pgm */
#include <segmentation_core.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static int fail(const char* why) {
    fprintf(stderr, "%s\n", why);
    return 1;
}

int main(int argc, char** argv) {
    if (argc != 7)
        return fail("usage: cut_box IN.ppm LEFT TOP RIGHT BOTTOM MASK.pgm");
    int width = 0, height = 0;
    FILE* in = fopen(argv[1], "rb");
    if (in == NULL || fscanf(in, "P6 %d %d 255", &width, &height) != 2 || fgetc(in) == EOF ||
        width < 1 || height < 1 || width > SEGCORE_MAX_PIXELS / height)
        return fail("cut_box: not a binary PPM of 8 bits, or too large");
    const size_t count = (size_t)width * (size_t)height;
    uint32_t* photo = calloc(count, sizeof *photo); /* one word a pixel: alpha, red, green, blue */
    uint8_t* mask = malloc(count);
    FILE* out = fopen(argv[6], "wb");
    if (photo == NULL || mask == NULL || out == NULL)
        return fail("cut_box: out of memory, or the mask's file cannot be written");
    for (size_t i = 0; i < count; ++i)
        for (int shift = 16; shift >= 0; shift -= 8)
            photo[i] |= (uint32_t)(fgetc(in) & 0xFF) << shift;
    memset(mask, 255, count);
    doSegmentationBB(width, height, photo, atoi(argv[2]), atoi(argv[3]), atoi(argv[4]),
                     atoi(argv[5]), mask);
    deinitSegmentation();
    fprintf(out, "P5 %d %d 255\n", width, height);
    fwrite(mask, 1, count, out); /* 0 object, 255 the rest */
    return fclose(out) == 0 ? 0 : fail("cut_box: the mask's file cannot be written");
}
