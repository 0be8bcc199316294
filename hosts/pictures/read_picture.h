// Picture files to pixels. Every call may come from any thread, one at a time: while a file is read,
// what the formats' libraries print on standard error is thrown away.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

enum class Channels {
    kColour,    // blue, green, red of eight bits, turned upright as the camera noted
    kGrey,      // one channel of eight bits, turned upright, too
    kAsStored,  // all that the file has, not turned
};

enum class Damaged {
    kRefused,
    kAccepted,  // as much as the file gives; what it lacks is grey or black
};

// The picture in the bytes of a file. `name` stands for the file in messages. Throws PictureError
// when it cannot be decoded and DamagedPicture when it is damaged and that is not accepted. Damage is
// seen in JPEG, PNG and BMP files; the imaging library itself refuses cut off files of other formats.
cv::Mat readPicture(const std::vector<std::uint8_t>& bytes, const std::string& name,
                    Channels channels, Damaged damaged);
