#include "pictures/files/notes.h"

#include "pictures/files/whole_photograph.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

// A copy, since the memory of some loaders' fields ends with the loader.
Bytes blobOf(VipsImage* image, const char* field) {
    const void* data = nullptr;
    std::size_t size = 0;
    if (vips_image_get_typeof(image, field) == 0 ||
        vips_image_get_blob(image, field, &data, &size) != 0) {
        return {};
    }
    const auto* const bytes = static_cast<const std::uint8_t*>(data);
    return {bytes, bytes + size};
}

void setBlob(VipsImage* image, const char* field, const Bytes& bytes) {
    if (!bytes.empty()) {
        vips_image_set_blob_copy(image, field, bytes.data(), bytes.size());
    }
}

}  // namespace

PictureNotes notesOf(VipsImage* opened) {
    constexpr double kUnknown = 1.0;  // the library's
    PictureNotes notes;
    notes.profile = blobOf(opened, VIPS_META_ICC_NAME);
    notes.exif = blobOf(opened, VIPS_META_EXIF_NAME);
    notes.xmp = blobOf(opened, VIPS_META_XMP_NAME);
    notes.iptc = blobOf(opened, VIPS_META_IPTC_NAME);
    if (opened->Xres != kUnknown || opened->Yres != kUnknown) {
        notes.resolution = {opened->Xres, opened->Yres};
    }
    return notes;
}

void addNotes(const PictureNotes& notes, bool strip, VipsImage* written) {
    setBlob(written, VIPS_META_ICC_NAME, notes.profile);
    vips_image_set_string(written, VIPS_META_RESOLUTION_UNIT, "in");
    if (strip) {
        return;
    }
    if (notes.resolution.width > 0.0 && notes.resolution.height > 0.0) {
        written->Xres = notes.resolution.width;
        written->Yres = notes.resolution.height;
    }
    setBlob(written, VIPS_META_XMP_NAME, xmpOfCutOut(notes.xmp));
    setBlob(written, VIPS_META_IPTC_NAME, iptcOfCutOut(notes.iptc));
    // The library takes the block apart into fields, from which it makes another one for the file.
    setBlob(written, VIPS_META_EXIF_NAME, notes.exif);
    vips_image_set_int(written, VIPS_META_ORIENTATION, 1);
    vips_image_remove(written, "jpeg-thumbnail-data");
}
