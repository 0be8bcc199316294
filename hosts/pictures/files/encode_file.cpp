// Pixels are handed to the library row by row as it asks for them, so that no second copy of the picture
// in the order of files is ever in memory.
#include "pictures/files/encode_file.h"

#include <algorithm>

#include "pictures/files/bmp.h"
#include "pictures/files/kept_notes.h"
#include "pictures/files/vips_library.h"
#include "pictures/picture_error.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

// What libvips takes for "not known" is a pixel a millimetre, 25 to the inch, at which a layout program
// would place a photograph metres wide.
constexpr double kUnknownResolution = 1.0;
constexpr double kUsualResolution = 72.0 / 25.4;  // pixels a millimetre

constexpr int kJpegQuality = 95;  // as the imaging library's
constexpr int kAvifQuality = 90;
constexpr int kAvifEffort = 3;  // of 0 to 9

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
                           VIPS_CODING_NONE, interpretationOf(samples), kUnknownResolution,
                           kUnknownResolution);
    if (vips_image_pipelinev(image.get(), VIPS_DEMAND_STYLE_THINSTRIP, nullptr) != 0 ||
        vips_image_generate(image.get(), nullptr, fillRegion, nullptr, &samples, nullptr) != 0) {
        fail(ending);
    }
    return image;
}

void addNotes(VipsImage* image, const PictureNotes& notes, bool strip) {
    if (notes.others && !strip) {
        notes.others->addTo(image);
    }
    if (!notes.profile.empty()) {
        vips_image_set_blob_copy(image, VIPS_META_ICC_NAME, notes.profile.data(),
                                 notes.profile.size());
    }
    if (image->Xres == kUnknownResolution && image->Yres == kUnknownResolution) {
        image->Xres = kUsualResolution;
        image->Yres = kUsualResolution;
    }
}

cv::Mat inDepth(const cv::Mat& image, int depth) {
    constexpr double kToWide = 257.0;
    cv::Mat result = image;
    if (!image.empty() && image.depth() != depth) {
        image.convertTo(result, depth, depth == CV_16U ? kToWide : 1.0 / kToWide);
    }
    return result;
}

bool holdsSixteenBits(const std::string& ending) {
    return ending == ".png" || ending == ".tif" || ending == ".tiff" || ending == ".avif";
}

Bytes taken(void* data, std::size_t size) {
    const auto* const start = static_cast<const std::uint8_t*>(data);
    Bytes bytes(start, start + size);
    g_free(data);
    return bytes;
}

Bytes save(VipsImage* image, const std::string& ending, bool isWide, const WriteOptions& options) {
    void* data = nullptr;
    std::size_t size = 0;
    int failed = 1;
    if (ending == ".png") {
        failed = vips_pngsave_buffer(image, &data, &size, "compression", options.compression,
                                     "filter", VIPS_FOREIGN_PNG_FILTER_SUB, nullptr);
    } else if (ending == ".jpg" || ending == ".jpeg") {
        failed = vips_jpegsave_buffer(image, &data, &size, "Q",
                                      options.quality.value_or(kJpegQuality), nullptr);
    } else if (ending == ".tif" || ending == ".tiff") {
        failed = vips_tiffsave_buffer(image, &data, &size, "compression",
                                      VIPS_FOREIGN_TIFF_COMPRESSION_DEFLATE, "predictor",
                                      VIPS_FOREIGN_TIFF_PREDICTOR_HORIZONTAL, nullptr);
    } else if (ending == ".webp") {
        failed = vips_webpsave_buffer(image, &data, &size, "lossless", !options.quality, "Q",
                                      options.quality.value_or(100), nullptr);
    } else if (ending == ".avif") {
        failed = vips_heifsave_buffer(
            image, &data, &size, "compression", VIPS_FOREIGN_HEIF_COMPRESSION_AV1, "Q",
            options.quality.value_or(kAvifQuality), "effort", kAvifEffort, "subsample_mode",
            VIPS_FOREIGN_SUBSAMPLE_OFF, "bitdepth", isWide ? 12 : 8, nullptr);
    }
    if (failed != 0) {
        fail(ending);
    }
    return taken(data, size);
}

}  // namespace

Bytes encodeFile(const Picture& picture, const std::string& ending, const WriteOptions& options) {
    takeVipsError();
    const int depth = holdsSixteenBits(ending) ? picture.pixels.depth() : CV_8U;
    const cv::Mat pixels = inDepth(picture.pixels, depth);
    if (ending == ".bmp") {
        return encodeBmp(pixels);
    }
    const bool hasAlpha = ending != ".jpg" && ending != ".jpeg";
    Samples samples{pixels, hasAlpha ? inDepth(picture.alpha, depth) : cv::Mat()};
    const VipsPtr image = imageOf(samples, ending);
    addNotes(image.get(), picture.notes, options.strip);
    return save(image.get(), ending, samples.isWide(), options);
}
