// What --background says of the ground behind a cut-out.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "pictures/picture.h"

// The photograph itself: a cut-out over the photograph that it was cut from is that photograph.
constexpr const char* kPhotoAsGround = "photo";

// Whether it names a file, which a colour and the photograph do not.
bool isGroundFile(const std::string& background);

// None for no background and for the photograph itself. Reads the file; throws UserError when it is
// neither that nor a colour, or the picture has more pixels than that.
std::optional<Picture> readGround(const std::string& background, std::uint64_t maxPixels);
