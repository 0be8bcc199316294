// The formats that libvips reads: JPEG, PNG, WebP, TIFF, HEIC and AVIF.
#pragma once

#include "pictures/files/read_file.h"

Picture readByVips(const PictureFile& file, PictureFormat format);
