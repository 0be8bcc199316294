// What notes tell of the whole photograph and is not so, or not to be seen, in what was cut from it.
#pragma once

#include <cstdint>
#include <vector>

// XMP that says that the picture is upright, without small pictures (xmp:Thumbnails). Empty when it cannot
// be looked through: in UTF-16, which photographs do not have, or with a small picture without an end.
std::vector<std::uint8_t> xmpOfCutOut(const std::vector<std::uint8_t>& xmp);

// Of Photoshop's block of resources only captions, author and rights are left; small pictures, paths and
// further copies of EXIF and XMP are among the others. A plain block of IPTC stays as it is.
std::vector<std::uint8_t> iptcOfCutOut(const std::vector<std::uint8_t>& iptc);
