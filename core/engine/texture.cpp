// Texture of a grey photograph: absolute differences to the right and upper neighbour, as the
// second and third component of its colour samples. Only channel 0 is read.
#include <cstdlib>

#include "engine/hybrid.h"
#include "history/marker.h"
#include "support/image.h"
#include "support/log.h"

namespace {

std::uint8_t difference(std::uint8_t a, std::uint8_t b) {
    return static_cast<std::uint8_t>(std::abs(a - b));
}

IplImage* replaceCleared(IplImage*& image, int width, int height, int line) {
    checkImageSize(width, height, "computeTexture", line);
    releaseImage(image);
    image = createImage(width, height, 1).release();
    cvSetZero(image);
    return image;
}

}  // namespace

void VORNSEHybrid::computeTexture() {
    const IplImage* source = VORNSEMarker::m_srcImage;
    const int width = source->width;
    const int height = source->height;
    IplImage* horizontal = replaceCleared(VORNSEMarker::m_texHor, width, height, 2817);
    IplImage* vertical = replaceCleared(VORNSEMarker::m_texVer, width, height, 2818);

    // The first row and the last column take their differences from the one neighbour that they
    // have; an image one pixel wide or high has no neighbour that way and keeps 0.
    const auto c0 = [source](int x, int y) { return rowOf(source, y)[kChannels * x]; };
    for (int y = 0; y < height; ++y) {
        const int otherRow = y > 0 ? y - 1 : 1;
        for (int x = 0; x < width - 1; ++x) {
            rowOf(horizontal, y)[x] = difference(c0(x + 1, y), c0(x, y));
            if (otherRow < height) {
                rowOf(vertical, y)[x] = difference(c0(x, otherRow), c0(x, y));
            }
        }
    }
    const int last = width - 1;
    for (int y = 1; y < height; ++y) {
        if (width >= 2) {
            rowOf(horizontal, y)[last] = difference(c0(last - 1, y), c0(last, y));
        }
        // Byte `last` of the row, which is a channel of an inner pixel. Results depend on it.
        rowOf(vertical, y)[last] = difference(rowOf(source, y - 1)[last], rowOf(source, y)[last]);
    }
}
