// Files that lie, end early or are none.
#include <gtest/gtest.h>
#include <vips/vips.h>
#include <zlib.h>

#include <algorithm>
#include <random>

#include "picture_files.h"
#include "pictures/picture_error.h"
#include "pictures/read_picture.h"
#include "pictures/write_picture.h"

namespace {

using namespace std::string_literals;

Bytes bytesOf(const std::string& text) {
    return {text.begin(), text.end()};
}

std::string errorOf(const Bytes& bytes, const ReadOptions& options = {}) {
    try {
        readPicture(bytes, "it", options);
    } catch (const DamagedPicture& error) {
        return std::string("damaged: ") + error.what();
    } catch (const PictureError& error) {
        return error.what();
    }
    return "";
}

// A PNG header for so many pixels, with a right check sum, and nothing behind it.
Bytes pngBomb(std::uint8_t high, std::uint8_t low) {
    const std::string size{0, 0, static_cast<char>(high), static_cast<char>(low)};
    const std::string header = "IHDR" + size + size + "\x08\x02\0\0\0"s;
    const auto sum = crc32_z(0, reinterpret_cast<const Bytef*>(header.data()), header.size());
    std::string file = "\x89PNG\r\n\x1A\n\0\0\0\x0D"s + header;
    for (int shift = 24; shift >= 0; shift -= 8) {
        file += static_cast<char>(sum >> shift);
    }
    return bytesOf(file + "\0\0\0\0IDAT\x35\xAF\x06\x1E\0\0\0\0IEND\xAE\x42\x60\x82"s);
}

TEST(Bombs, AreRefusedBeforeTheyAreDecoded) {
    const Bytes bombs[] = {
        pngBomb(0xEA, 0x60),  // 60,000 x 60,000
        bytesOf("P6 60000 60000 255\n"),
        bytesOf("P1 999999999999 999999999999\n"),
        bytesOf(
            "BM\0\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\x60\xEA\0\0\x60\xEA\0\0\x01\0\x18\0\0\0\0\0"s +
            std::string(20, '\0')),
    };
    for (const Bytes& bomb : bombs) {
        for (const Damaged damaged : {Damaged::kRefused, Damaged::kAccepted}) {
            EXPECT_NE(errorOf(bomb, {damaged, kMostPixels}).find(" pixels and at most"),
                      std::string::npos)
                << errorOf(bomb);
        }
    }
}

TEST(Bombs, AreMeasuredByTheGivenNumberOfPixels) {
    for (const char* ending : {".png", ".jpg", ".webp", ".tif", ".avif", ".bmp"}) {
        const Bytes bytes = encodePicture(samplePart(), ending);
        EXPECT_EQ(errorOf(bytes, {Damaged::kRefused, 96 * 64}), "") << ending;
        EXPECT_EQ(errorOf(bytes, {Damaged::kRefused, 96 * 64 - 1}),
                  "it has 96 x 64 pixels and at most 6143 are taken; reduce it first")
            << ending;
    }
}

TEST(Strangers, AreNotLetIn) {
    VIPS_INIT("tests");
    const cv::Mat image = samplePart();
    const Bytes strangers[] = {
        {},
        bytesOf("x"),
        bytesOf("P"),
        bytesOf("P9 1 1 255\n0"),
        bytesOf("PF 1 1 -1.0\n0123"),
        bytesOf("<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>"),
        bytesOf("%PDF-1.4\n"),
        bytesOf("push graphic-context\nviewbox 0 0 9 9\n"),
        writtenByVips(image, ".gif"),
        writtenByVips(image, ".hdr"),
        writtenByVips(image, ".jp2")};
    for (const Bytes& stranger : strangers) {
        EXPECT_NE(errorOf(stranger).find("is not an image"), std::string::npos)
            << errorOf(stranger);
    }
    // Whoever asks the library itself is refused, too.
    const Bytes gif = writtenByVips(image, ".gif");
    EXPECT_EQ(vips_image_new_from_buffer(gif.data(), gif.size(), "", nullptr), nullptr);
    vips_error_clear();
}

// Bytes changed, left out and cut off at places of chance: an error in one line or a picture, and no
// more pixels than asked for.
TEST(Damage, NeverGoesUnnoticedByTheCaller) {
    constexpr int kTries = 60;
    std::mt19937 random(11);
    for (const char* ending : {".png", ".jpg", ".webp", ".tif", ".avif", ".bmp"}) {
        const Bytes whole = encodePicture(samplePart(), ending);
        for (int i = 0; i < kTries; ++i) {
            Bytes bytes = whole;
            const std::size_t header = 64;  // half of the faults are in it
            const std::size_t at = random() % (i % 2 == 0 ? header : bytes.size());
            bytes[at] = static_cast<std::uint8_t>(random());
            if (i % 3 == 0) {
                bytes.resize(random() % bytes.size());
            }
            for (const Damaged damaged : {Damaged::kRefused, Damaged::kAccepted}) {
                try {
                    const Picture picture = readPicture(bytes, "it", {damaged, 100 * 100});
                    EXPECT_LE(picture.pixels.total(), 100U * 100U);
                } catch (const PictureError& error) {
                    EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos);
                }
            }
        }
        Bytes half(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(whole.size() / 2));
        EXPECT_EQ(errorOf(half).rfind("damaged: it is damaged (", 0), 0U)
            << ending << errorOf(half);
    }
}

// libtiff goes on without values that it does not find; here the last one in the file is the profile.
TEST(Damage, IsNoticedWhereTiffLosesItsProfile) {
    for (const char* ending : {".tif", ".tif[bigtiff]"}) {
        SCOPED_TRACE(ending);
        Bytes tiff = writtenByVips(samplePart(), ending, [](VipsImage* image) {
            const Bytes bytes = bytesIn("/usr/share/color/icc/compatibleWithAdobeRGB1998.icc");
            vips_image_set_blob_copy(image, VIPS_META_ICC_NAME, bytes.data(), bytes.size());
        });
        EXPECT_EQ(errorOf(tiff), "");
        EXPECT_FALSE(readPicture(tiff, "it").notes.profile.empty());
        tiff.resize(tiff.size() - 50);
        EXPECT_NE(errorOf(tiff).find("damaged: it is damaged (the file ends"), std::string::npos)
            << errorOf(tiff);
    }
}

// The decoder has something to say of pixels that begin with what is none of their parts.
TEST(Damage, IsNotPrintedByLibraries) {
    Bytes avif = encodePicture(samplePart(), ".avif");
    const std::string name = "mdat";
    const auto pixels = std::search(avif.begin(), avif.end(), name.begin(), name.end()) + 4;
    ASSERT_LT(pixels + 2, avif.end());
    pixels[0] = 0x02;
    pixels[1] = 0x7F;
    testing::internal::CaptureStderr();
    errorOf(avif);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

// Notes that are wrong take nothing from a picture.
TEST(Damage, OfNotesIsOverlookedInJpeg) {
    Bytes jpeg = writtenByOpenCv(samplePart(), ".jpg");
    ASSERT_EQ(jpeg[6], 'J');
    jpeg[11] = 7;  // of no known version
    EXPECT_EQ(errorOf(jpeg), "");
}

}  // namespace
