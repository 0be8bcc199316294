// What a file says beside its pixels, from and to the library's images.
#pragma once

#include "pictures/files/vips_library.h"
#include "pictures/picture.h"

PictureNotes notesOf(VipsImage* opened);

// EXIF says afterwards that the picture is upright, and has lost the small picture that cameras add: it
// would show what was cut away. Without a resolution the image keeps its own. `strip` leaves all but the
// profile out.
void addNotes(const PictureNotes& notes, bool strip, VipsImage* written);
