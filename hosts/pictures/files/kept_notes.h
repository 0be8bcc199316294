// What a file says beside its pixels and profile, in the library's own form: no other keeps all of it.
#pragma once

#include <memory>

#include "pictures/files/vips_library.h"
#include "pictures/picture.h"

class KeptNotes {
  public:
    // Of a picture that was opened. The orientation is left out, since pixels are turned upright on
    // reading, and so is the small picture that cameras add: it would show what was cut away.
    explicit KeptNotes(VipsImage* opened);

    // Where no resolution is known, the image keeps its own.
    void addTo(VipsImage* written) const;

    bool knowsResolution() const;
    // As the file held it, empty for none.
    std::vector<std::uint8_t> exif() const;

  private:
    VipsPtr m_fields;
};
