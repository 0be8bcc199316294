// Image files.
#pragma once

#include <opencv2/core.hpp>
#include <string>

#include "pictures/read_picture.h"
#include "session/photo.h"

// The image in a file or on standard input: in colour without alpha, turned upright as its camera
// noted, so that coordinates are those of the displayed photograph.
Photo readPhoto(const std::string& path, Damaged damaged);

// The image as it is stored, with all its channels.
cv::Mat readImageUnchanged(const std::string& path);
