// The formats of picture files.
#pragma once

#include <string>

enum class PictureContent {
    kMask,     // needs a format without loss: its two values have to come back
    kCutOut,   // needs a format that keeps transparency
    kPicture,  // any
};

// "JPEG, PNG or BMP", for messages.
std::string readableFormats();

// The ending, ".png" for instance, by which the content is encoded for a file of this name; the
// case of its letters does not matter. Throws PictureError when the name has none, an unknown one, or
// one whose format cannot hold the content.
std::string formatFor(const std::string& fileName, PictureContent content);
