// The PNM family: PGM and PPM, and PBM with its single bit, as bytes or as text. libvips does not trust
// its own reader of them, and the format is small.
#pragma once

#include "pictures/files/read_file.h"

Picture readPnm(const PictureFile& file);
