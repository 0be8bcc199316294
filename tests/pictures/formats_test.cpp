#include <gtest/gtest.h>
#include <libheif/heif.h>

#include <vips/vips.h>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "picture_files.h"
#include "pictures/compose.h"
#include "pictures/engine_colours.h"
#include "pictures/picture_error.h"
#include "pictures/read_picture.h"
#include "pictures/write_picture.h"

namespace {

cv::Mat grey(const cv::Mat& image) {
    cv::Mat result;
    cv::cvtColor(image, result, cv::COLOR_BGR2GRAY);
    return result;
}

cv::Mat withRamp(const cv::Mat& image) {
    cv::Mat result;
    cv::merge(std::vector<cv::Mat>{image, ramp(image.size(), image.depth())}, result);
    return result;
}

Bytes bytesOf(const std::string& text) {
    return {text.begin(), text.end()};
}

// Runs of one byte, a move, plain pixels of an odd number, ends of rows; two entries of the palette.
Bytes runLengthBmp() {
    using namespace std::string_literals;
    return bytesOf(
        "BM\0\0\0\0\0\0\0\0\x3E\0\0\0\x28\0\0\0\x06\0\0\0\x03\0\0\0\x01\0\x08\0\x01\0\0\0"s +
        std::string(12, '\0') + "\x02\0\0\0\0\0\0\0\x10\x20\x30\0\xA0\xB0\xC0\0"s +
        "\x04\x01\x02\0\0\0\0\x02\x01\0\x03\x01\0\0\0\x03\x01\0\x01\0\x01\x01\0\x01"s);
}

std::vector<std::pair<std::string, Bytes>> filesOfAllKinds() {
    const cv::Mat narrow = samplePart();
    const cv::Mat wide = wideSamplePart();
    cv::Mat inks;
    cv::merge(std::vector<cv::Mat>{255 - narrow, grey(narrow) / 3}, inks);
    std::vector<std::pair<std::string, Bytes>> files;
    for (const auto& [colour, single] :
         {std::pair{".png", ".png"}, {".tif", ".tif"}, {".ppm", ".pgm"}}) {
        for (const cv::Mat& image : {narrow, wide, grey(narrow), grey(wide)}) {
            const char* const ending = image.channels() == 1 ? single : colour;
            files.emplace_back(ending, writtenByOpenCv(image, ending));
        }
    }
    for (const char* ending : {".jpg", ".bmp"}) {
        files.emplace_back(ending, writtenByOpenCv(narrow, ending));
        files.emplace_back(ending, writtenByOpenCv(grey(narrow), ending));
    }
    for (const char* ending : {".png", ".tif", ".webp", ".bmp"}) {
        files.emplace_back(std::string("alpha") + ending,
                           writtenByOpenCv(withRamp(narrow), ending));
    }
    files.emplace_back("alpha that the file calls so", encodePicture(withRamp(narrow), ".tif"));
    files.emplace_back("wide alpha", writtenByOpenCv(withRamp(wide), ".png"));
    for (const char* ending : {".png[palette]", ".png[interlace]", ".tif[tile,compression=lzw]",
                               ".tif[compression=jpeg]", ".jpg[interlace]", ".webp[lossless]"}) {
        files.emplace_back(ending, writtenByVips(narrow, ending));
    }
    files.emplace_back("two bits", writtenByVips(grey(narrow), ".png[bitdepth=2]"));
    files.emplace_back("one bit", writtenByVips(grey(narrow), ".tif[bitdepth=1]"));
    files.emplace_back("JPEG of inks", writtenByVips(inks, ".jpg[Q=98]"));
    files.emplace_back("TIFF of inks", writtenByVips(inks, ".tif"));
    files.emplace_back("text of bits", bytesOf("P1\n# odd\n3 2\n101\n0 1 0\n"));
    files.emplace_back("bits", bytesOf("P4 10 2 \xA5\x40\x3C\x80"));
    files.emplace_back("text of greys", bytesOf("P2 3 2 255 0 17 255 3 4 5\n"));
    files.emplace_back("text of colours", bytesOf("P3 2 1 255 1 2 3 40 50 60\n"));
    files.emplace_back("run lengths", runLengthBmp());
    return files;
}

TEST(Formats, AreReadAsAnotherReaderReadsThem) {
    for (const auto& [name, bytes] : filesOfAllKinds()) {
        SCOPED_TRACE(name);
        const cv::Mat expected = cv::imdecode(bytes, cv::IMREAD_COLOR);
        ASSERT_FALSE(expected.empty());
        const Picture picture = readPicture(bytes, name);
        EXPECT_EQ(largestDifference(engineColours(picture, Colours::kAsStored), expected), 0.0);
        const bool isWide = cv::imdecode(bytes, cv::IMREAD_UNCHANGED).depth() == CV_16U;
        EXPECT_EQ(picture.pixels.depth(), isWide ? CV_16U : CV_8U);
    }
}

TEST(Formats, OfSamplesAreReadAsAnotherReaderReadsThem) {
    for (const char* name : {"astronaut.png", "coffee.png", "rocket.jpg"}) {
        const Bytes bytes = bytesIn(std::string(SEGCORE_SAMPLES "/") + name);
        EXPECT_EQ(largestDifference(engineColours(readPicture(bytes, name), Colours::kAsStored),
                                    cv::imdecode(bytes, cv::IMREAD_COLOR)),
                  0.0)
            << name;
    }
}

TEST(Formats, WithLossComeClose) {
    for (const char* ending : {".avif[Q=95]", ".heic[Q=95,compression=hevc]", ".webp[Q=95]"}) {
        const Picture picture = readPicture(writtenByVips(samplePart(), ending), ending);
        EXPECT_LT(cv::norm(picture.pixels, samplePart(), cv::NORM_L1) / 96 / 64 / 3, 4) << ending;
    }
}

TEST(Formats, OfHeifFilesHaveManyBrands) {
    Bytes heic = writtenByVips(samplePart(), ".heic[compression=hevc]");
    const cv::Mat expected = readPicture(heic, "heic").pixels;
    for (const std::string brand : {"heix", "heim", "heis", "hevc", "hevm", "mif1"}) {
        SCOPED_TRACE(brand);
        std::copy(brand.begin(), brand.end(), heic.begin() + 8);
        EXPECT_EQ(largestDifference(readPicture(heic, brand).pixels, expected), 0.0);
    }
}

// A cut-out over its own photograph is the photograph again.
TEST(RoundTrip, GivesThePhotographBack) {
    for (const char* ending : {".png", ".tif", ".webp"}) {
        for (const cv::Mat& image : {samplePart(), wideSamplePart(), grey(samplePart())}) {
            SCOPED_TRACE(ending + std::to_string(image.type()));
            Picture photograph;
            photograph.pixels = image;
            Picture cut = photograph;
            cut.alpha = ramp(image.size(), CV_16U);
            const Picture read = readPicture(encodePicture(cut, ending), ending);
            const bool keepsDepth = std::string(ending) != ".webp";
            EXPECT_EQ(read.pixels.depth(), keepsDepth ? image.depth() : CV_8U);
            ASSERT_FALSE(read.alpha.empty());
            cv::Mat alpha;
            read.alpha.convertTo(alpha, CV_16U, read.alpha.depth() == CV_8U ? 257.0 : 1.0);
            EXPECT_LE(largestDifference(alpha, cut.alpha), read.alpha.depth() == CV_8U ? 129 : 0);
            const cv::Mat whole = engineColours(over(read, photograph), Colours::kSrgb);
            EXPECT_LE(largestDifference(whole, engineColours(photograph, Colours::kSrgb)), 1.0);
        }
    }
}

TEST(RoundTrip, KeepsTransparencyWhereColoursLoseALittle) {
    Picture cut;
    cut.pixels = wideSamplePart();
    cut.alpha = ramp(cut.pixels.size(), CV_16U);
    const Picture read = readPicture(encodePicture(cut, ".avif"), "avif");
    ASSERT_EQ(read.pixels.type(), CV_16UC3);
    EXPECT_LT(cv::norm(read.pixels, cut.pixels, cv::NORM_L1) / 96 / 64 / 3, 3 * 257);
    EXPECT_LT(largestDifference(read.alpha, cut.alpha), 4 * 257);
    for (const char* ending : {".jpg", ".bmp"}) {
        EXPECT_THROW(encodePicture(cut, ending), PictureError) << ending;
    }
    cut.alpha.setTo(65535);
    EXPECT_TRUE(readPicture(encodePicture(cut, ".jpg"), "jpg").alpha.empty());
    const cv::Mat bmp = engineColours(readPicture(encodePicture(cut, ".bmp"), "bmp"), {});
    EXPECT_EQ(largestDifference(bmp, engineColours(cut, Colours::kSrgb)), 0.0);
}

// Where the pixel in a column and row of a file belongs, by EXIF's description of each number.
cv::Point uprightPlace(int orientation, cv::Point p, cv::Size stored) {
    const int right = stored.width - 1;
    const int bottom = stored.height - 1;
    const cv::Point places[] = {
        p,          {right - p.x, p.y},  {right - p.x, bottom - p.y}, {p.x, bottom - p.y},
        {p.y, p.x}, {bottom - p.y, p.x}, {bottom - p.y, right - p.x}, {p.y, right - p.x}};
    return places[orientation - 1];
}

// An EXIF block that tells nothing else.
std::string exifOf(int orientation) {
    const char exif[] = "Exif\0\0II*\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0?\0\0\0\0\0\0\0";
    std::string note(exif, sizeof exif - 1);
    note[note.find('?')] = static_cast<char>(orientation);
    return note;
}

// Large squares that no two orientations show alike.
cv::Mat squares() {
    cv::Mat small = (cv::Mat_<std::uint8_t>(2, 3) << 20, 60, 100, 140, 180, 220);
    cv::Mat image;
    cv::resize(small, image, {}, 16, 16, cv::INTER_NEAREST);
    cv::merge(std::vector<cv::Mat>(3, image), image);
    return image;
}

void expectTurned(const cv::Mat& read, int orientation, double loss) {
    const cv::Mat stored = squares();
    cv::Mat expected(orientation > 4 ? cv::Size(stored.rows, stored.cols) : stored.size(), CV_8UC3);
    for (int y = 0; y < stored.rows; ++y) {
        for (int x = 0; x < stored.cols; ++x) {
            expected.at<cv::Vec3b>(uprightPlace(orientation, {x, y}, stored.size())) =
                stored.at<cv::Vec3b>(y, x);
        }
    }
    EXPECT_LE(largestDifference(read, expected), loss) << orientation;
}

TEST(Orientation, IsFollowedInAllFormats) {
    for (const char* ending : {".jpg[Q=100]", ".png", ".webp[lossless]", ".tif"}) {
        SCOPED_TRACE(ending);
        for (int orientation = 1; orientation <= 8; ++orientation) {
            const Bytes bytes = writtenByVips(squares(), ending, [&](VipsImage* image) {
                const std::string note = exifOf(orientation);
                vips_image_set_blob_copy(image, VIPS_META_EXIF_NAME, note.data(), note.size());
                vips_image_set_int(image, VIPS_META_ORIENTATION, orientation);
            });
            const Picture picture = readPicture(bytes, ending);
            expectTurned(picture.pixels, orientation, 6.0);
            // Written upright, and not to be turned again.
            expectTurned(readPicture(encodePicture(picture, ".png"), "again").pixels, orientation,
                         6.0);
        }
    }
}

// Cameras tell HEIC files' orientation twice: as the format's own turns and in EXIF.
Bytes turnedHeif(int orientation) {
    heif_context* const context = heif_context_alloc();
    heif_encoder* encoder = nullptr;
    heif_context_get_encoder_for_format(context, heif_compression_AV1, &encoder);
    heif_image* image = nullptr;
    const cv::Mat pixels = squares();
    heif_image_create(pixels.cols, pixels.rows, heif_colorspace_RGB, heif_chroma_interleaved_RGB,
                      &image);
    heif_image_add_plane(image, heif_channel_interleaved, pixels.cols, pixels.rows, 8);
    int stride = 0;
    std::uint8_t* const plane = heif_image_get_plane(image, heif_channel_interleaved, &stride);
    pixels.copyTo(cv::Mat(pixels.size(), CV_8UC3, plane, static_cast<std::size_t>(stride)));
    heif_encoding_options* const options = heif_encoding_options_alloc();
    options->image_orientation = static_cast<heif_orientation>(orientation);
    heif_image_handle* handle = nullptr;
    heif_context_encode_image(context, image, encoder, options, &handle);
    const std::string note = exifOf(orientation);
    heif_context_add_exif_metadata(context, handle, note.data(), static_cast<int>(note.size()));
    Bytes bytes;
    heif_writer writer{1, [](heif_context*, const void* data, std::size_t size, void* to) {
                           const auto* const start = static_cast<const std::uint8_t*>(data);
                           static_cast<Bytes*>(to)->assign(start, start + size);
                           return heif_error{heif_error_Ok, heif_suberror_Unspecified, ""};
                       }};
    heif_context_write(context, &writer, &bytes);
    heif_image_handle_release(handle);
    heif_encoding_options_free(options);
    heif_image_release(image);
    heif_encoder_release(encoder);
    heif_context_free(context);
    return bytes;
}

TEST(Orientation, IsFollowedOnceInHeif) {
    for (int orientation = 1; orientation <= 8; ++orientation) {
        expectTurned(readPicture(turnedHeif(orientation), "heif").pixels, orientation, 12.0);
    }
}

}  // namespace
