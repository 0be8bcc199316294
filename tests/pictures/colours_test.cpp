// Colours are compared as they look: through the profiles, in floating point.
#include <gtest/gtest.h>
#include <lcms2.h>

#include <opencv2/imgproc.hpp>

#include "picture_files.h"
#include "pictures/compose.h"
#include "pictures/engine_colours.h"
#include "pictures/read_picture.h"
#include "pictures/write_picture.h"

namespace {

Bytes bytesOf(cmsHPROFILE profile) {
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    Bytes bytes(size);
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    cmsCloseProfile(profile);
    return bytes;
}

// The primaries of Display P3 with the curve of sRGB, IEC 61966-2-1.
Bytes displayP3() {
    const cmsCIExyY white{0.3127, 0.3290, 1.0};
    const cmsCIExyYTRIPLE primaries{{0.680, 0.320, 1.0}, {0.265, 0.690, 1.0}, {0.150, 0.060, 1.0}};
    const double curve[] = {2.4, 1.0 / 1.055, 0.055 / 1.055, 1.0 / 12.92, 0.04045};
    cmsToneCurve* const tone = cmsBuildParametricToneCurve(nullptr, 4, curve);
    cmsToneCurve* const tones[] = {tone, tone, tone};
    const Bytes bytes = bytesOf(cmsCreateRGBProfile(&white, &primaries, tones));
    cmsFreeToneCurve(tone);
    return bytes;
}

Bytes adobeRgb() {
    return bytesIn("/usr/share/color/icc/compatibleWithAdobeRGB1998.icc");
}

Bytes srgb() {
    return bytesOf(cmsCreate_sRGBProfile());
}

// Red, green, blue as floats from 0 to 1.
cv::Mat asNumbers(const cv::Mat& pixels) {
    cv::Mat numbers;
    pixels.convertTo(numbers, CV_32F, pixels.depth() == CV_16U ? 1.0 / 65535 : 1.0 / 255);
    cv::cvtColor(numbers, numbers, cv::COLOR_BGR2RGB);
    return numbers;
}

cv::Mat through(const Bytes& from, cmsHPROFILE to, cmsUInt32Number layout, const cv::Mat& numbers) {
    const cmsHPROFILE source =
        cmsOpenProfileFromMem(from.data(), static_cast<cmsUInt32Number>(from.size()));
    const cmsHTRANSFORM transform =
        cmsCreateTransform(source, TYPE_RGB_FLT, to, layout, INTENT_RELATIVE_COLORIMETRIC,
                           cmsFLAGS_BLACKPOINTCOMPENSATION | cmsFLAGS_NOOPTIMIZE);
    cv::Mat result(numbers.size(), CV_32FC3);
    cmsDoTransform(transform, numbers.data, result.data,
                   static_cast<cmsUInt32Number>(numbers.total()));
    cmsDeleteTransform(transform);
    cmsCloseProfile(source);
    cmsCloseProfile(to);
    return result;
}

// The largest distance in CIELAB between two pictures with profiles.
double visibleDifference(const cv::Mat& a, const Bytes& aProfile, const cv::Mat& b,
                         const Bytes& bProfile) {
    const cv::Mat labA =
        through(aProfile, cmsCreateLab4Profile(nullptr), TYPE_Lab_FLT, asNumbers(a));
    const cv::Mat labB =
        through(bProfile, cmsCreateLab4Profile(nullptr), TYPE_Lab_FLT, asNumbers(b));
    double largest = 0.0;
    for (int y = 0; y < a.rows; ++y) {
        for (int x = 0; x < a.cols; ++x) {
            largest =
                std::max(largest, cv::norm(labA.at<cv::Vec3f>(y, x) - labB.at<cv::Vec3f>(y, x)));
        }
    }
    return largest;
}

// The sample in the colours of a profile.
Picture photograph(const Bytes& profile, int depth) {
    const cmsHPROFILE target =
        cmsOpenProfileFromMem(profile.data(), static_cast<cmsUInt32Number>(profile.size()));
    cv::Mat numbers = through(srgb(), target, TYPE_RGB_FLT, asNumbers(samplePart()));
    Picture picture;
    picture.notes.profile = profile;
    cv::cvtColor(numbers, numbers, cv::COLOR_RGB2BGR);
    numbers.convertTo(picture.pixels, depth, depth == CV_16U ? 65535.0 : 255.0);
    return picture;
}

TEST(Profiles, OfWideGamutsBecomeSrgbForTheEngineAlone) {
    for (const Bytes& profile : {displayP3(), adobeRgb()}) {
        ASSERT_FALSE(profile.empty());
        for (const int depth : {CV_8U, CV_16U}) {
            const Picture photo = photograph(profile, depth);
            const Picture read = readPicture(encodePicture(photo, ".png"), "photo");
            const cv::Mat seen = engineColours(read, Colours::kSrgb);
            EXPECT_LE(largestDifference(seen, samplePart()), depth == CV_8U ? 3.0 : 1.0);
            EXPECT_LT(cv::norm(seen, samplePart(), cv::NORM_L1) / 96 / 64 / 3, 0.5);
            // As they are stored they look pale.
            EXPECT_GT(largestDifference(engineColours(read, Colours::kAsStored), samplePart()),
                      20.0);
        }
    }
}

TEST(Profiles, ThatAreSrgbInEffectChangeNothing) {
    Picture photo;
    photo.pixels = samplePart();
    Bytes cut = srgb();
    cut.resize(200);
    for (const Bytes& profile : {srgb(), bytesIn("/usr/share/color/icc/sRGB.icc"), cut,
                                 bytesIn("/usr/share/color/icc/Gray.icc")}) {
        photo.notes.profile = profile;
        EXPECT_EQ(largestDifference(engineColours(photo, Colours::kSrgb), photo.pixels), 0.0);
    }
}

TEST(Profiles, OfGreyPicturesAreFollowed) {
    const double gamma = 1.0;
    cmsToneCurve* const tone = cmsBuildGamma(nullptr, gamma);
    Picture photo;
    photo.notes.profile = bytesOf(cmsCreateGrayProfile(cmsD50_xyY(), tone));
    cmsFreeToneCurve(tone);
    photo.pixels = cv::Mat(4, 4, CV_8UC1, cv::Scalar(55));
    // sRGB of the linear 55 / 255: 255 (1.055 x^(1 / 2.4) - 0.055) = 128.2.
    EXPECT_EQ(engineColours(photo, Colours::kSrgb).at<cv::Vec3b>(0, 0), cv::Vec3b(128, 128, 128));
}

TEST(Profiles, OfInksAreFollowed) {
    const Bytes profile = bytesIn("/usr/share/color/icc/ghostscript/default_cmyk.icc");
    cv::Mat inks(1, 1, CV_8UC4, cv::Scalar(255, 0, 0, 0));  // cyan
    const auto colourOf = [](const Bytes& file) {
        return readPicture(file, "inks").pixels.at<cv::Vec3b>(0, 0);
    };
    const cv::Vec3b cyan = colourOf(writtenByVips(inks, ".tif"));
    EXPECT_GT(cyan[0], 180);
    EXPECT_LT(cyan[2], 90);
    inks.setTo(cv::Scalar::all(0));
    EXPECT_EQ(colourOf(writtenByVips(inks, ".jpg")), cv::Vec3b(255, 255, 255));
}

TEST(CutOuts, LookLikeTheirPhotographs) {
    for (const Bytes& profile : {displayP3(), adobeRgb()}) {
        for (const int depth : {CV_8U, CV_16U}) {
            Picture cut = photograph(profile, depth);
            cut.alpha = ramp(cut.pixels.size(), depth);
            for (const char* ending : {".png", ".tif", ".webp", ".avif"}) {
                const Picture read = readPicture(encodePicture(cut, ending), ending);
                EXPECT_EQ(read.notes.profile, profile) << ending;
                const int opaque = cut.pixels.cols - 4;  // where no alpha hides colours
                const cv::Rect part(opaque, 0, 4, cut.pixels.rows);
                const bool loses = std::string(ending) == ".avif";
                const bool narrows = std::string(ending) == ".webp" && depth == CV_16U;
                EXPECT_LT(visibleDifference(read.pixels(part).clone(), profile,
                                            cut.pixels(part).clone(), profile),
                          loses     ? 12.0
                          : narrows ? 1.0
                                    : 1e-9)
                    << ending;
            }
        }
    }
}

TEST(Grounds, LookThroughAnotherPicturesProfileAsTheyDid) {
    Picture top = photograph(adobeRgb(), CV_16U);
    top.alpha = ramp(top.pixels.size(), CV_8U);
    Picture ground = photograph(displayP3(), CV_8U);
    cv::flip(ground.pixels, ground.pixels, 1);
    const Picture whole = over(top, ground);
    EXPECT_EQ(whole.notes.profile, top.notes.profile);
    EXPECT_TRUE(whole.alpha.empty());
    const cv::Rect left(0, 0, 8, 64);  // transparent there
    const cv::Rect right(88, 0, 8, 64);
    EXPECT_LT(visibleDifference(whole.pixels(left).clone(), top.notes.profile,
                                ground.pixels(left).clone(), ground.notes.profile),
              0.5);
    EXPECT_EQ(largestDifference(whole.pixels(right), top.pixels(right)), 0.0);
    // A colour of sRGB.
    const Picture red = plainPicture(top.pixels.size(), {20, 30, 200});
    EXPECT_LT(visibleDifference(over(top, red).pixels(left).clone(), top.notes.profile,
                                red.pixels(left).clone(), srgb()),
              0.5);
    // Nothing goes under the picture twice, and what nothing covers stays transparent.
    const Picture half = over(top, top);
    EXPECT_EQ(half.alpha.at<std::uint16_t>(0, 0), 0);
    const auto alpha = static_cast<double>(top.alpha.at<std::uint8_t>(0, 30)) / 255;
    EXPECT_NEAR(half.alpha.at<std::uint16_t>(0, 30), 65535 * (alpha + (1 - alpha) * alpha), 1.0);
    EXPECT_EQ(covering(ground, {20, 64}).pixels.size(), cv::Size(20, 64));
    EXPECT_EQ(largestDifference(covering(ground, {20, 64}).pixels, ground.pixels.colRange(38, 58)),
              0.0);
}

}  // namespace
