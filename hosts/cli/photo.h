// Image files.
#pragma once

#include <opencv2/core.hpp>
#include <string>

#include "pictures/engine_colours.h"
#include "pictures/read_picture.h"
#include "session/photo.h"

// The picture in a file or on standard input, turned upright as its camera noted, so that coordinates
// are those of the displayed photograph.
Picture readPhoto(const std::string& path, const ReadOptions& options);

// A picture that goes with the photograph, such as a mask. It has to be whole: what is missing of it would
// pass for something that it says.
Picture readCompanion(const std::string& path, std::uint64_t maxPixels);

// What the engine is given of it.
Photo photoOf(const Picture& picture, Colours colours, const std::string& path);

// Likewise, with all its channels, eight bits each.
cv::Mat readImageUnchanged(const std::string& path, std::uint64_t maxPixels);
