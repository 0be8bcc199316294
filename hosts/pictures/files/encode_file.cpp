// Pixels are handed to the library row by row as it asks for them, so that no second copy of the picture
// in the order of files is ever in memory.
#include "pictures/files/encode_file.h"

#include <algorithm>

#include "pictures/files/bmp.h"
#include "pictures/files/notes.h"
#include "pictures/files/png_parts.h"
#include "pictures/files/tiff_parts.h"
#include "pictures/files/vips_library.h"
#include "pictures/picture_error.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

// For formats that have to name one: the library's own, a pixel a millimetre, would place a photograph
// metres wide in a layout.
constexpr double kUsualResolution = 72.0 / 25.4;  // pixels a millimetre

constexpr int kJpegQuality = 95;  // as the imaging library's
constexpr int kAvifQuality = 90;
// Without loss the number, of 0 to 100, says how hard to look for a small form. Eleven megapixels take
// three seconds; with 75 it is six, for a file smaller by two thousandths. With 25 alpha of many levels
// can make a file a third larger.
constexpr int kWebpEffort = 30;
// Of 0 to 9. Twelve megapixels take two seconds; with 3 it is six and with 4 thirty, for files of the
// same size.
constexpr int kAvifEffort = 1;

// The samples of a file: those of the pixels and of alpha, in the depth of the pixels.
struct Samples {
    const cv::Mat& pixels;
    cv::Mat alpha;  // empty or of the pixels' depth
    bool isWide() const { return pixels.depth() == CV_16U; }
    int bands() const { return pixels.channels() + (alpha.empty() ? 0 : 1); }
};

template <class Sample>
void fillRow(const Samples& from, int left, int width, int y, Sample* to) {
    const int channels = from.pixels.channels();
    const Sample* pixel = from.pixels.ptr<Sample>(y) + std::ptrdiff_t{left} * channels;
    const Sample* alpha = from.alpha.empty() ? nullptr : from.alpha.ptr<Sample>(y) + left;
    for (int x = 0; x < width; ++x, pixel += channels) {
        for (int c = channels; c-- > 0;) {
            *to++ = pixel[c];
        }
        if (alpha != nullptr) {
            *to++ = *alpha++;
        }
    }
}

int fillRegion(VipsRegion* region, void* /*sequence*/, void* samples, void* /*unused*/,
               gboolean* /*stop*/) {
    const Samples& from = *static_cast<const Samples*>(samples);
    const VipsRect& valid = region->valid;
    for (int y = valid.top; y < VIPS_RECT_BOTTOM(&valid); ++y) {
        void* const row = VIPS_REGION_ADDR(region, valid.left, y);
        if (from.isWide()) {
            fillRow(from, valid.left, valid.width, y, static_cast<std::uint16_t*>(row));
        } else {
            fillRow(from, valid.left, valid.width, y, static_cast<std::uint8_t*>(row));
        }
    }
    return 0;
}

[[noreturn]] void fail(const std::string& ending) {
    const std::string why = takeVipsError();
    throw PictureError("the image cannot be encoded as " + ending +
                       (why.empty() ? "" : ": " + why) +
                       "; reduce the photograph or choose another format");
}

VipsInterpretation interpretationOf(const Samples& samples) {
    if (samples.pixels.channels() == 1) {
        return samples.isWide() ? VIPS_INTERPRETATION_GREY16 : VIPS_INTERPRETATION_B_W;
    }
    return samples.isWide() ? VIPS_INTERPRETATION_RGB16 : VIPS_INTERPRETATION_sRGB;
}

VipsPtr imageOf(Samples& samples, const std::string& ending) {
    VipsPtr image(vips_image_new());
    vips_image_init_fields(image.get(), samples.pixels.cols, samples.pixels.rows, samples.bands(),
                           samples.isWide() ? VIPS_FORMAT_USHORT : VIPS_FORMAT_UCHAR,
                           VIPS_CODING_NONE, interpretationOf(samples), kUsualResolution,
                           kUsualResolution);
    if (vips_image_pipelinev(image.get(), VIPS_DEMAND_STYLE_THINSTRIP, nullptr) != 0 ||
        vips_image_generate(image.get(), nullptr, fillRegion, nullptr, &samples, nullptr) != 0) {
        fail(ending);
    }
    return image;
}

cv::Mat inDepth(const cv::Mat& image, int depth) {
    constexpr double kToWide = 257.0;
    cv::Mat result = image;
    if (!image.empty() && image.depth() != depth) {
        image.convertTo(result, depth, depth == CV_16U ? kToWide : 1.0 / kToWide);
    }
    return result;
}

// Without alpha the colours would come to light that it hides.
void requireOpaque(const cv::Mat& alpha, const std::string& ending) {
    double least = UINT8_MAX;
    if (!alpha.empty()) {
        cv::minMaxLoc(inDepth(alpha, CV_8U), &least);
    }
    if (least < UINT8_MAX) {
        throw PictureError("the image is transparent in places, which " + ending +
                           " files cannot be; lay it on an opaque background or choose another "
                           "format, such as .png");
    }
}

// A picture on its way to a file.
struct Written {
    VipsImage* image;
    const WriteOptions& options;
    bool isWide;
    void* data = nullptr;
    std::size_t size = 0;
};

int savePng(Written& file) {
    // The filter that gave the smallest files in the shortest time on photographs; at this level trying
    // all of them takes twice as long and gains nothing.
    return vips_pngsave_buffer(file.image, &file.data, &file.size, "compression",
                               file.options.compression, "filter", VIPS_FOREIGN_PNG_FILTER_UP,
                               nullptr);
}

int saveJpeg(Written& file) {
    return vips_jpegsave_buffer(file.image, &file.data, &file.size, "Q",
                                file.options.quality.value_or(kJpegQuality), nullptr);
}

int saveTiff(Written& file) {
    const bool isPlain = file.options.compression == 0;
    return vips_tiffsave_buffer(
        file.image, &file.data, &file.size, "compression",
        isPlain ? VIPS_FOREIGN_TIFF_COMPRESSION_NONE : VIPS_FOREIGN_TIFF_COMPRESSION_DEFLATE,
        "predictor", VIPS_FOREIGN_TIFF_PREDICTOR_HORIZONTAL, nullptr);
}

int saveWebp(Written& file) {
    const bool isWhole = !file.options.quality.has_value();
    return vips_webpsave_buffer(file.image, &file.data, &file.size, "lossless", isWhole ? 1 : 0,
                                "Q", file.options.quality.value_or(kWebpEffort), nullptr);
}

int saveAvif(Written& file) {
    return vips_heifsave_buffer(
        file.image, &file.data, &file.size, "compression", VIPS_FOREIGN_HEIF_COMPRESSION_AV1, "Q",
        file.options.quality.value_or(kAvifQuality), "effort", kAvifEffort, "subsample_mode",
        VIPS_FOREIGN_SUBSAMPLE_OFF, "bitdepth", file.isWide ? 12 : 8, nullptr);
}

struct Writer {
    std::vector<std::string> endings;
    int (*save)(Written& file);
    bool holdsSixteenBits;
    bool holdsAlpha;
};

const Writer& writerFor(const std::string& ending) {
    static const std::vector<Writer> writers{{{".png"}, savePng, true, true},
                                             {{".jpg", ".jpeg"}, saveJpeg, false, false},
                                             {{".tif", ".tiff"}, saveTiff, true, true},
                                             {{".webp"}, saveWebp, false, true},
                                             {{".avif"}, saveAvif, true, true}};
    const auto found = std::find_if(writers.begin(), writers.end(), [&](const Writer& writer) {
        return std::count(writer.endings.begin(), writer.endings.end(), ending) > 0;
    });
    if (found == writers.end()) {
        fail(ending);
    }
    return *found;
}

Bytes saved(Written& file, const Writer& writer, const std::string& ending) {
    if (writer.save(file) != 0) {
        fail(ending);
    }
    const auto* const start = static_cast<const std::uint8_t*>(file.data);
    Bytes bytes(start, start + file.size);
    g_free(file.data);
    return bytes;
}

// What the library cannot say.
Bytes withFurtherNotes(Bytes bytes, const Writer& writer, const Picture& picture,
                       const WriteOptions& options) {
    const PictureNotes notes = options.strip ? PictureNotes() : picture.notes;
    if (writer.save == savePng) {
        if (notes.resolution.empty()) {
            bytes = pngWithoutResolution(std::move(bytes));
        }
        return options.offset ? pngWithPosition(std::move(bytes), *options.offset) : bytes;
    }
    if (writer.save == saveTiff) {
        if (!notes.exif.empty()) {
            bytes = tiffWithExif(std::move(bytes), notes.exif);
        }
        const bool isInside = options.offset && options.offset->x >= 0 && options.offset->y >= 0;
        return isInside ? tiffWithPosition(std::move(bytes), *options.offset) : bytes;
    }
    return bytes;
}

}  // namespace

Bytes encodeFile(const Picture& picture, const std::string& ending, const WriteOptions& options) {
    takeVipsError();
    if (ending == ".bmp") {
        requireOpaque(picture.alpha, ending);
        return encodeBmp(inDepth(picture.pixels, CV_8U));
    }
    const Writer& writer = writerFor(ending);
    if (!writer.holdsAlpha) {
        requireOpaque(picture.alpha, ending);
    }
    const int depth = writer.holdsSixteenBits ? picture.pixels.depth() : CV_8U;
    const cv::Mat pixels = inDepth(picture.pixels, depth);
    Samples samples{pixels, writer.holdsAlpha ? inDepth(picture.alpha, depth) : cv::Mat()};
    const VipsPtr image = imageOf(samples, ending);
    addNotes(picture.notes, options.strip, image.get());
    Written file{image.get(), options, samples.isWide()};
    return withFurtherNotes(saved(file, writer, ending), writer, picture, options);
}
