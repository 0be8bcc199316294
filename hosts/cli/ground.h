// What --background says of the ground behind a cut-out.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "pictures/picture.h"

// Whether it is the photograph itself, and the cut-out then nothing but that.
bool isPhotoAsGround(const std::string& background);

// Whether it names a file, which a colour and the photograph do not.
bool isGroundFile(const std::string& background);

// None for no background and for the photograph itself. Reads the file; throws UserError when it is
// neither that nor a colour, or the picture has more pixels than that.
std::optional<Picture> readGround(const std::string& background, std::uint64_t maxPixels);
