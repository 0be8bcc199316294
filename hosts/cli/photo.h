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

// What the engine is given of it.
Photo photoOf(const Picture& picture, Colours colours, const std::string& path);

// The picture in a file with all its channels, eight bits each.
cv::Mat readImageUnchanged(const std::string& path);
