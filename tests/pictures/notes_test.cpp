// What files say beside their pixels.
#include <gtest/gtest.h>
#include <tiffio.h>
#include <unistd.h>
#include <vips/vips.h>

#include <cmath>
#include <cstdlib>
#include <fstream>

#include "picture_files.h"
#include "pictures/read_picture.h"
#include "pictures/write_picture.h"

namespace {

constexpr const char* kXmp = "<x:xmpmeta xmlns:x='adobe:ns:meta/'/>";

// With a camera's model, owner, exposure and place, the small picture, XMP and 300 pixels an inch; stored
// turned by a quarter.
Bytes cameraFile() {
    const Bytes profile = bytesIn("/usr/share/color/icc/compatibleWithAdobeRGB1998.icc");
    const Bytes small = writtenByVips(samplePart(), ".jpg[strip]");
    return writtenByVips(samplePart(), ".jpg", [&](VipsImage* image) {
        const auto text = [&](const char* field, const char* value) {
            vips_image_set_string(image, field, value);
        };
        text("exif-ifd0-Model", "Box (Box, ASCII, 4 components, 4 bytes)");
        text("exif-ifd0-Copyright", "Kim (Kim, ASCII, 4 components, 4 bytes)");
        text("exif-ifd2-ExposureTime", "1/50 (1/50, Rational, 1 components, 8 bytes)");
        text("exif-ifd3-GPSLatitudeRef", "N (N, ASCII, 2 components, 2 bytes)");
        vips_image_set_blob_copy(image, "jpeg-thumbnail-data", small.data(), small.size());
        vips_image_set_blob_copy(image, VIPS_META_XMP_NAME, kXmp, std::strlen(kXmp));
        vips_image_set_blob_copy(image, VIPS_META_ICC_NAME, profile.data(), profile.size());
        vips_image_set_int(image, VIPS_META_ORIENTATION, 6);
        image->Xres = 300 / 25.4;
        image->Yres = 300 / 25.4;
    });
}

// The library's names of what it finds in a file, a line each.
class Fields {
  public:
    explicit Fields(Bytes bytes, const std::string& loader) : m_bytes(std::move(bytes)) {
        m_image = vips_image_new_from_buffer(m_bytes.data(), m_bytes.size(), "", nullptr);
        EXPECT_NE(m_image, nullptr) << loader << vips_error_buffer();
    }
    ~Fields() { g_object_unref(m_image); }
    Fields(const Fields&) = delete;
    Fields& operator=(const Fields&) = delete;

    std::string text(const char* field) const {
        const char* value = "";
        if (vips_image_get_typeof(m_image, field) != 0) {
            vips_image_get_string(m_image, field, &value);
        }
        return value;
    }
    bool has(const char* field) const { return vips_image_get_typeof(m_image, field) != 0; }
    double resolution() const { return m_image->Xres * 25.4; }
    int orientation() const { return vips_image_get_orientation(m_image); }

  private:
    Bytes m_bytes;
    VipsImage* m_image;
};

TEST(Notes, GoIntoTheCutOut) {
    const Picture photo = readPicture(cameraFile(), "photo");
    EXPECT_EQ(photo.pixels.size(), cv::Size(64, 96));
    for (const char* ending : {".png", ".jpg", ".webp", ".avif"}) {
        SCOPED_TRACE(ending);
        const Fields fields(encodePicture(photo, ending), ending);
        EXPECT_EQ(fields.text("exif-ifd0-Model").substr(0, 3), "Box");
        EXPECT_EQ(fields.text("exif-ifd0-Copyright").substr(0, 3), "Kim");
        EXPECT_EQ(fields.text("exif-ifd2-ExposureTime").substr(0, 4), "1/50");
        EXPECT_EQ(fields.text("exif-ifd3-GPSLatitudeRef").substr(0, 1), "N");
        EXPECT_NE(fields.text("exif-ifd0-XResolution").find("(300"), std::string::npos);
        EXPECT_TRUE(fields.has(VIPS_META_XMP_NAME));
        EXPECT_TRUE(fields.has(VIPS_META_ICC_NAME));
        EXPECT_EQ(fields.orientation(), 1);
        EXPECT_FALSE(fields.has("jpeg-thumbnail-data"));
        if (ending == std::string(".png") || ending == std::string(".jpg")) {
            EXPECT_NEAR(fields.resolution(), 300, 0.1);
        }
    }
}

TEST(Notes, AreLeftOutOnRequest) {
    const Picture photo = readPicture(cameraFile(), "photo");
    WriteOptions options;
    options.strip = true;
    for (const char* ending : {".png", ".jpg", ".webp", ".avif", ".tif"}) {
        SCOPED_TRACE(ending);
        const Fields fields(encodePicture(photo, ending, options), ending);
        for (const char* field :
             {"exif-ifd0-Model", "exif-ifd0-Copyright", "exif-ifd2-ExposureTime",
              "exif-ifd3-GPSLatitudeRef", "jpeg-thumbnail-data", VIPS_META_XMP_NAME}) {
            EXPECT_FALSE(fields.has(field)) << field;
        }
        EXPECT_TRUE(fields.has(VIPS_META_ICC_NAME));
    }
}

// Programs look at XMP's orientation too. Its small picture and Photoshop's show the whole photograph.
TEST(Notes, DoNotShowOrTurnTheWholePhotograph) {
    using namespace std::string_literals;
    const auto bytesOf = [](const std::string& text) { return Bytes(text.begin(), text.end()); };
    const std::string spaces =
        "xmlns:t='http://ns.adobe.com/tiff/1.0/' xmlns:xmp=\"http://ns.adobe.com/xap/1.0/\"";
    const std::string small = "<xmp:Thumbnails><rdf:Alt>UNCUT</rdf:Alt></xmp:Thumbnails>";
    const std::string others = "t:OrientationX='6' u:Orientation='6'";
    const std::string rating = "<xmp:Rating>6</xmp:Rating>";
    const std::string copyright = "8BIM\x04\x04\x01n\0\0\0\x05\x1C\x02\x74\0\0\0"s;  // odd
    const std::string preview = "8BIM\x04\x0C\0\0\0\0\0\x06UNCUT!"s;
    const std::string start = "Photoshop 3.0\0"s;
    Picture photo;
    photo.pixels = samplePart();
    photo.notes.xmp = bytesOf("<d " + spaces + " t:Orientation = \"6\" " + others + ">" + small +
                              rating + "<t:Orientation>8</t:Orientation></d>");
    photo.notes.iptc = bytesOf(start + preview + copyright + preview + "8BIM\x04\x04\0");
    const Picture read = readPicture(encodePicture(photo, ".jpg"), "jpg");
    EXPECT_EQ(std::string(read.notes.xmp.begin(), read.notes.xmp.end()),
              "<d " + spaces + " t:Orientation = \"1\" " + others + ">" + rating +
                  "<t:Orientation>1</t:Orientation></d>");
    EXPECT_EQ(read.notes.iptc, bytesOf(start + copyright));
    photo.notes.xmp = bytesOf("<d " + spaces + "><xmp:Thumbnails>UNCUT</d>");
    photo.notes.iptc = bytesOf(start + preview);
    const Bytes without = encodePicture(photo, ".jpg");
    EXPECT_EQ(std::string(without.begin(), without.end()).find("UNCUT"), std::string::npos);
}

// By the format's own library.
class TiffOnDisk {
  public:
    explicit TiffOnDisk(const Bytes& bytes) {
        const int fd = mkstemp(m_path.data());
        EXPECT_EQ(write(fd, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
        close(fd);
        file = TIFFOpen(m_path.c_str(), "r");
    }
    ~TiffOnDisk() {
        TIFFClose(file);
        unlink(m_path.c_str());
    }
    TiffOnDisk(const TiffOnDisk&) = delete;
    TiffOnDisk& operator=(const TiffOnDisk&) = delete;

    TIFF* file;

  private:
    std::string m_path = "/tmp/segcore-XXXXXX";
};

// EXIF blocks come in both byte orders.
TEST(Notes, GoIntoTiffFilesWithThePosition) {
    const Picture photo = readPicture(cameraFile(), "photo");
    WriteOptions options;
    options.offset = cv::Point(30, 70);
    const Bytes bytes = encodePicture(photo, ".tif", options);
    EXPECT_EQ(largestDifference(readPicture(bytes, "tif").pixels, photo.pixels), 0.0);
    const Fields again(encodePicture(readPicture(bytes, "tif"), ".png"), "png");
    EXPECT_EQ(again.text("exif-ifd0-Copyright").substr(0, 3), "Kim");
    EXPECT_EQ(again.text("exif-ifd2-ExposureTime").substr(0, 4), "1/50");
    const TiffOnDisk tiff(bytes);
    const char* text = nullptr;
    ASSERT_EQ(TIFFGetField(tiff.file, TIFFTAG_MODEL, &text), 1);
    EXPECT_STREQ(text, "Box");
    float x = 0.0F;
    float y = 0.0F;
    float resolution = 0.0F;
    TIFFGetField(tiff.file, TIFFTAG_XPOSITION, &x);
    TIFFGetField(tiff.file, TIFFTAG_YPOSITION, &y);
    TIFFGetField(tiff.file, TIFFTAG_XRESOLUTION, &resolution);
    EXPECT_NEAR(resolution, 300.0F, 0.1F);
    EXPECT_NEAR(x * resolution, 30.0F, 1e-3F);
    EXPECT_NEAR(y * resolution, 70.0F, 1e-3F);
    toff_t place = 0;
    float exposure = 0.0F;
    ASSERT_EQ(TIFFGetField(tiff.file, TIFFTAG_GPSIFD, &place), 1);
    ASSERT_EQ(TIFFGetField(tiff.file, TIFFTAG_EXIFIFD, &place), 1);
    ASSERT_EQ(TIFFReadEXIFDirectory(tiff.file, place), 1);
    ASSERT_EQ(TIFFGetField(tiff.file, EXIFTAG_EXPOSURETIME, &exposure), 1);
    EXPECT_NEAR(exposure, 0.02F, 1e-6F);
}

TEST(Positions, AreWrittenIntoPng) {
    Picture picture;
    picture.pixels = samplePart();
    WriteOptions options;
    options.offset = cv::Point(258, -3);
    const Bytes bytes = encodePicture(picture, ".png", options);
    EXPECT_EQ(largestDifference(readPicture(bytes, "png").pixels, picture.pixels), 0.0);
    const std::string text(bytes.begin(), bytes.end());
    using namespace std::string_literals;
    const std::string part = "\0\0\0\x09oFFs\0\0\x01\x02\xFF\xFF\xFF\xFD\0"s;
    EXPECT_EQ(text.find(part), 33U);                  // right behind the header
    EXPECT_EQ(text.find("pHYs"), std::string::npos);  // no resolution is known
}

}  // namespace
