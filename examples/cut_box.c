/* Cuts the object in a box out of a photograph: cut_box IN.ppm LEFT TOP RIGHT BOTTOM MASK.pgm */
#include <segmentation_core.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

int main(int argc, char** argv) {
    int width = 0, height = 0;
    FILE* in = argc == 7 ? fopen(argv[1], "rb") : NULL;
    if (in == NULL || fscanf(in, "P6 %d %d 255", &width, &height) != 2 || fgetc(in) == EOF)
        return fprintf(stderr, "usage: cut_box IN.ppm LEFT TOP RIGHT BOTTOM MASK.pgm\n"), 1;
    const size_t count = (size_t)width * (size_t)height;
    uint32_t* photo = calloc(count, sizeof *photo); /* one word a pixel: alpha, red, green, blue */
    uint8_t* mask = malloc(count);
    for (size_t i = 0; i < count; ++i)
        for (int shift = 16; shift >= 0; shift -= 8)
            photo[i] |= (uint32_t)fgetc(in) << shift;
    memset(mask, 255, count);
    doSegmentationBB(width, height, photo, atoi(argv[2]), atoi(argv[3]), atoi(argv[4]),
                     atoi(argv[5]), mask);
    deinitSegmentation();
    FILE* out = fopen(argv[6], "wb");
    fprintf(out, "P5 %d %d 255\n", width, height);
    fwrite(mask, 1, count, out); /* 0 object, 255 the rest */
    return fclose(out);
}
