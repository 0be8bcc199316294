#include "pictures/files/vips_reader.h"

#include <opencv2/imgproc.hpp>
#include <optional>

#include "pictures/files/colours.h"
#include "pictures/files/notes.h"
#include "pictures/files/png_parts.h"
#include "pictures/files/quiet_standard_error.h"
#include "pictures/files/rows.h"
#include "pictures/files/tiff_parts.h"
#include "pictures/files/vips_library.h"
#include "pictures/picture_error.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

// From which fault on the library gives up. JPEG's warnings tell spoilt pixels; TIFF's are mostly about
// notes that the library does not know.
VipsFailOn strictnessFor(PictureFormat format) {
    return format == PictureFormat::kJpeg || format == PictureFormat::kPng ? VIPS_FAIL_ON_WARNING
                                                                           : VIPS_FAIL_ON_ERROR;
}

VipsPtr open(const Bytes& bytes, PictureFormat format, VipsFailOn strictness) {
    VipsImage* image = nullptr;
    void* const data = const_cast<std::uint8_t*>(bytes.data());
    const auto load = [&](auto loader) {
        loader(data, bytes.size(), &image, "access", VIPS_ACCESS_SEQUENTIAL, "fail_on", strictness,
               nullptr);
    };
    switch (format) {
        case PictureFormat::kJpeg:
            load(vips_jpegload_buffer);
            break;
        case PictureFormat::kPng:
            load(vips_pngload_buffer);
            break;
        case PictureFormat::kWebp:
            load(vips_webpload_buffer);
            break;
        case PictureFormat::kTiff:
            load(vips_tiffload_buffer);
            break;
        case PictureFormat::kHeif:
            load(vips_heifload_buffer);
            break;
        case PictureFormat::kBmp:
        case PictureFormat::kPnm:
            break;
    }
    return VipsPtr(image);
}

// Samples in the file's order. `isWhole` becomes false when the library stopped on the way; what it had
// not written then is 0.
cv::Mat samplesOf(VipsImage* image, bool& isWhole) {
    const int depth = image->BandFmt == VIPS_FORMAT_USHORT ? CV_16U : CV_8U;
    cv::Mat samples = cv::Mat::zeros(image->Ysize, image->Xsize, CV_MAKETYPE(depth, image->Bands));
    const VipsPtr target(
        vips_image_new_from_memory(samples.data, samples.total() * samples.elemSize(), samples.cols,
                                   samples.rows, image->Bands, image->BandFmt));
    isWhole = target != nullptr && vips_image_write(image, target.get()) == 0;
    return samples;
}

bool isInks(const VipsImage* image) {
    return image->Type == VIPS_INTERPRETATION_CMYK && image->Bands >= 4;
}

// Floating point, colours of another sort or too many channels are for other programs.
void requirePhotographic(const PictureFile& file, const VipsImage* image) {
    const bool hasSamples =
        image->BandFmt == VIPS_FORMAT_UCHAR || image->BandFmt == VIPS_FORMAT_USHORT;
    const bool hasColours =
        image->Type == VIPS_INTERPRETATION_B_W || image->Type == VIPS_INTERPRETATION_GREY16 ||
        image->Type == VIPS_INTERPRETATION_sRGB || image->Type == VIPS_INTERPRETATION_RGB ||
        image->Type == VIPS_INTERPRETATION_RGB16 || isInks(image);
    if (!hasSamples || !hasColours || image->Coding != VIPS_CODING_NONE || image->Bands > 5) {
        throw PictureError(file.name +
                           " has pixels of a kind that is not read; store it in grey, RGB or CMYK "
                           "with 8 or 16 bits");
    }
}

// By EXIF's number: 2 to 4 mirror and turn by half, 5 to 8 also swap rows and columns.
void turnUpright(cv::Mat& image, int orientation) {
    if (image.empty() || orientation < 2 || orientation > 8) {
        return;
    }
    if (orientation > 4) {
        cv::transpose(image, image);
    }
    constexpr int kBoth = -1;
    constexpr int kUpsideDown = 0;
    constexpr int kMirrored = 1;
    switch (orientation) {
        case 2:
        case 6:
            cv::flip(image, image, kMirrored);
            break;
        case 3:
        case 7:
            cv::flip(image, image, kBoth);
            break;
        case 4:
        case 8:
            cv::flip(image, image, kUpsideDown);
            break;
        default:
            break;
    }
}

// Splits the samples into pixels, alpha and inks.
void takeSamples(Picture& picture, cv::Mat samples, bool areInks) {
    const int channels = samples.channels();
    const int colours = areInks ? 4 : channels < 3 ? 1 : 3;
    if (channels > colours) {
        cv::extractChannel(samples, picture.alpha, colours);
        constexpr int kSame[] = {0, 0, 1, 1, 2, 2, 3, 3};
        cv::Mat rest(samples.size(), CV_MAKETYPE(samples.depth(), colours));
        cv::mixChannels(&samples, 1, &rest, 1, kSame, static_cast<std::size_t>(colours));
        samples = rest;
    }
    if (colours == 3) {
        swapRedAndBlue(samples);
    }
    (areInks ? picture.stored.inks : picture.pixels) = samples;
}

// Inks are of no use to the engine, and few programs show a cut-out in them.
void replaceInks(Picture& picture) {
    cv::Mat& inks = picture.stored.inks;
    picture.pixels = coloursOfInks(inks, picture.notes.profile);
    picture.notes.profile.clear();
    if (inks.depth() != CV_8U) {
        inks.release();
    }
}

Picture pictureOf(VipsImage* image, const cv::Mat& samples) {
    Picture picture;
    const bool areInks = isInks(image);
    takeSamples(picture, samples, areInks);
    picture.notes = notesOf(image);
    if (areInks) {
        replaceInks(picture);
    }
    const int orientation = vips_image_get_orientation(image);
    for (cv::Mat* const part : {&picture.pixels, &picture.alpha, &picture.stored.inks}) {
        turnUpright(*part, orientation);
    }
    return picture;
}

// Those that take nothing from the picture.
bool isAboutNotes(const std::string& error) {
    for (const char* const part : {"Adobe color transform", "JFIF revision", "ICC profile"}) {
        if (error.find(part) != std::string::npos) {
            return true;
        }
    }
    return false;
}

struct Reading {
    VipsPtr image;  // null when not even the size can be told
    cv::Mat samples;
    std::string fault;  // empty for a whole picture
};

Reading read(const PictureFile& file, PictureFormat format, VipsFailOn strictness) {
    takeVipsError();
    std::optional<QuietStandardError> quiet;
    if (format == PictureFormat::kHeif) {
        quiet.emplace();  // the decoders of AV1 and HEVC print
    }
    Reading reading;
    reading.image = open(file.bytes, format, strictness);
    bool isWhole = false;
    if (reading.image) {
        requireFewPixels(file, reading.image->Xsize, reading.image->Ysize);
        requirePhotographic(file, reading.image.get());
        reading.samples = samplesOf(reading.image.get(), isWhole);
    }
    const std::string error = takeVipsError();
    if (!isWhole) {
        reading.fault = error.empty() ? "its pixels cannot be decoded" : error;
    }
    return reading;
}

Reading readWhole(const PictureFile& file, PictureFormat format) {
    if (format == PictureFormat::kPng) {
        if (const std::optional<std::string> damage = pngDamage(file.bytes)) {
            failAsDamaged(file, *damage);
        }
    }
    if (format == PictureFormat::kTiff && isTiffCutOff(file.bytes)) {
        failAsDamaged(file, "the file ends before what its directory names");
    }
    Reading reading = read(file, format, strictnessFor(format));
    if (isAboutNotes(reading.fault)) {
        reading = read(file, format, VIPS_FAIL_ON_ERROR);
    }
    if (!reading.fault.empty()) {
        failAsDamaged(file, reading.fault);
    }
    return reading;
}

Reading readDamaged(const PictureFile& file, PictureFormat format) {
    Reading reading = read(file, format, VIPS_FAIL_ON_NONE);
    const bool isNothing = !reading.image || (!reading.fault.empty() &&
                                              cv::countNonZero(reading.samples.reshape(1)) == 0);
    if (isNothing) {
        failAsNoPicture(file);
    }
    return reading;
}

}  // namespace

Picture readByVips(const PictureFile& file, PictureFormat format) {
    const bool isMended = file.takesDamaged() && format == PictureFormat::kPng;
    // The library's image refers to it until the notes are taken.
    const Bytes mended = isMended ? withRightCheckSums(file.bytes) : Bytes();
    const PictureFile given{isMended ? mended : file.bytes, file.name, file.options};
    const Reading reading =
        file.takesDamaged() ? readDamaged(given, format) : readWhole(given, format);
    Picture picture = pictureOf(reading.image.get(), reading.samples);
    if (format == PictureFormat::kTiff) {
        picture.stored.timesAlpha = !picture.alpha.empty() && tiffTellsAlpha(file.bytes);
        picture.notes.exif = exifOfTiff(file.bytes);
    }
    return picture;
}
