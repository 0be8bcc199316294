#include "pictures/files/kept_notes.h"

#include <cstring>

namespace {

// The others are about the file or its pixels, not for another file.
bool isKept(const char* field) {
    for (const char* const start : {"exif-", "xmp-data", "iptc-data", "resolution-unit"}) {
        if (std::strncmp(field, start, std::strlen(start)) == 0) {
            return true;
        }
    }
    return false;
}

void* copyField(VipsImage* /*from*/, const char* field, GValue* value, void* to) {
    if (isKept(field)) {
        vips_image_set(static_cast<VipsImage*>(to), field, value);
    }
    return nullptr;
}

void copyFields(VipsImage* from, VipsImage* to) {
    vips_image_map(from, copyField, to);
}

}  // namespace

KeptNotes::KeptNotes(VipsImage* opened) : m_fields(vips_image_new()) {
    m_fields->Xres = opened->Xres;
    m_fields->Yres = opened->Yres;
    copyFields(opened, m_fields.get());
    vips_image_remove(m_fields.get(), "exif-ifd0-Orientation");
}

void KeptNotes::addTo(VipsImage* written) const {
    written->Xres = m_fields->Xres;
    written->Yres = m_fields->Yres;
    copyFields(m_fields.get(), written);
    vips_image_set_int(written, VIPS_META_ORIENTATION, 1);
}
