// Owning handles and row access for the imaging library's C image header.
#pragma once

#include <opencv2/core/core_c.h>

#include <cstdint>
#include <memory>

#include "support/large_pages.h"

struct ImageRelease {
    void operator()(IplImage* image) const { cvReleaseImage(&image); }
};
using ImagePtr = std::unique_ptr<IplImage, ImageRelease>;

// An 8-bit image; throws the library's exception for an impossible size or without memory.
inline ImagePtr createImage(int width, int height, int channels) {
    // In two steps, so that the header is released when there is no memory for the pixels.
    ImagePtr image(cvCreateImageHeader(cvSize(width, height), IPL_DEPTH_8U, channels));
    cvCreateData(image.get());
    preferLargePages(image->imageData, static_cast<std::size_t>(image->imageSize));
    return image;
}

inline ImagePtr cloneImage(const IplImage* image) {
    ImagePtr copy = createImage(image->width, image->height, image->nChannels);
    cvCopy(image, copy.get());
    return copy;
}

inline std::uint8_t* rowOf(IplImage* image, int y) {
    return reinterpret_cast<std::uint8_t*>(image->imageData) +
           static_cast<std::ptrdiff_t>(y) * image->widthStep;
}

inline const std::uint8_t* rowOf(const IplImage* image, int y) {
    return reinterpret_cast<const std::uint8_t*>(image->imageData) +
           static_cast<std::ptrdiff_t>(y) * image->widthStep;
}

// Releases the image, if any, and nulls the pointer.
inline void releaseImage(IplImage*& image) {
    if (image != nullptr) {
        cvReleaseImage(&image);
        image = nullptr;
    }
}
