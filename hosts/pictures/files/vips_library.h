// libvips as the pictures use it: which of its loaders may run, and its objects and errors in C++ form.
#pragma once

#include <vips/vips.h>

#include <memory>
#include <string>

struct ReleaseVips {
    void operator()(VipsImage* image) const { g_object_unref(image); }
};
using VipsPtr = std::unique_ptr<VipsImage, ReleaseVips>;

// Makes the library ready and shuts all loaders but those of kAllowedLoaders. Throws PictureError. Again
// it does nothing.
void startVips();

// The first of the library's messages since it was last asked, without the name of its origin.
std::string takeVipsError();
