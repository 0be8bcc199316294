// What a file says beside its pixels, from and to the library's images.
#pragma once

#include "pictures/files/vips_library.h"
#include "pictures/picture.h"

PictureNotes notesOf(VipsImage* opened);

// EXIF and XMP say afterwards that the picture is upright, and all notes have lost the small pictures
// that cameras and programs add: they would show what was cut away. Without a resolution the image keeps
// its own. `strip` leaves all but the profile out.
void addNotes(const PictureNotes& notes, bool strip, VipsImage* written);
