#include "pictures/files/kept_notes.h"

#include <cstring>

namespace {

constexpr const char* kOfSmallPicture = "exif-ifd1";
constexpr const char* kSmallPicture = "jpeg-thumbnail-data";

// The others are about the file or its pixels, not for another file.
bool isKept(const char* field) {
    const auto beginsWith = [field](const char* start) {
        return std::strncmp(field, start, std::strlen(start)) == 0;
    };
    return (beginsWith("exif-") && !beginsWith(kOfSmallPicture)) || beginsWith("xmp-data") ||
           beginsWith("iptc-data") || beginsWith("resolution-unit");
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
    if (knowsResolution()) {
        written->Xres = m_fields->Xres;
        written->Yres = m_fields->Yres;
    }
    copyFields(m_fields.get(), written);
    vips_image_set_int(written, VIPS_META_ORIENTATION, 1);
    // The EXIF block still holds it. It is written without it only after this call, though the image has
    // no such field.
    vips_image_remove(written, kSmallPicture);
}

bool KeptNotes::knowsResolution() const {
    constexpr double kUnknown = 1.0;  // the library's, pixels a millimetre
    return m_fields->Xres != kUnknown || m_fields->Yres != kUnknown;
}

std::vector<std::uint8_t> KeptNotes::exif() const {
    const void* data = nullptr;
    std::size_t size = 0;
    if (vips_image_get_typeof(m_fields.get(), VIPS_META_EXIF_NAME) == 0 ||
        vips_image_get_blob(m_fields.get(), VIPS_META_EXIF_NAME, &data, &size) != 0) {
        return {};
    }
    const auto* const bytes = static_cast<const std::uint8_t*>(data);
    return {bytes, bytes + size};
}
