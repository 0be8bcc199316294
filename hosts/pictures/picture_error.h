// A picture file that cannot be read or written.
#pragma once

#include <stdexcept>

// One line that says what is wrong and what to do about it.
class PictureError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Says what is wrong alone: whether a damaged file may be accepted, and how, is up to the host.
class DamagedPicture : public PictureError {
  public:
    using PictureError::PictureError;
};
