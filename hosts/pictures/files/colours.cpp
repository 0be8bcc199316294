#include "pictures/files/colours.h"

#include <lcms2.h>

#include <memory>
#include <stdexcept>

#include "pictures/files/vips_library.h"

namespace {

struct CloseProfile {
    void operator()(void* profile) const { cmsCloseProfile(profile); }
};
using ProfilePtr = std::unique_ptr<void, CloseProfile>;

struct DeleteTransform {
    void operator()(void* transform) const { cmsDeleteTransform(transform); }
};
using TransformPtr = std::unique_ptr<void, DeleteTransform>;

// sRGB for no profile; null for a broken one.
ProfilePtr opened(const Profile& profile) {
    return ProfilePtr(
        profile.empty()
            ? cmsCreate_sRGBProfile()
            : cmsOpenProfileFromMem(profile.data(), static_cast<cmsUInt32Number>(profile.size())));
}

// The library's name of pixels in memory; 0 where the profile is not for such.
cmsUInt32Number layoutOf(int type, void* profile) {
    // A file can hold any number, also one that the enumeration does not.
    const std::uint32_t space =
        profile == nullptr ? 0U : static_cast<std::uint32_t>(cmsGetColorSpace(profile));
    switch (type) {
        case CV_8UC1:
            return space == cmsSigGrayData ? TYPE_GRAY_8 : 0;
        case CV_16UC1:
            return space == cmsSigGrayData ? TYPE_GRAY_16 : 0;
        case CV_8UC3:
            return space == cmsSigRgbData ? TYPE_BGR_8 : 0;
        case CV_16UC3:
            return space == cmsSigRgbData ? TYPE_BGR_16 : 0;
        case CV_8UC4:
            return space == cmsSigCmykData ? TYPE_CMYK_8 : 0;
        case CV_16UC4:
            return space == cmsSigCmykData ? TYPE_CMYK_16 : 0;
        default:
            return 0;
    }
}

// Null when one of the profiles is not for such pixels.
TransformPtr transformOf(const Profile& from, int fromType, const Profile& to, int toType) {
    const ProfilePtr source = opened(from);
    const ProfilePtr target = opened(to);
    const cmsUInt32Number sourceLayout = layoutOf(fromType, source.get());
    const cmsUInt32Number targetLayout = layoutOf(toType, target.get());
    if (sourceLayout == 0 || targetLayout == 0) {
        return nullptr;
    }
    return TransformPtr(cmsCreateTransform(
        source.get(), sourceLayout, target.get(), targetLayout, INTENT_RELATIVE_COLORIMETRIC,
        cmsFLAGS_BLACKPOINTCOMPENSATION | cmsFLAGS_HIGHRESPRECALC));
}

cv::Mat transformed(const cv::Mat& pixels, void* transform, int type) {
    cv::Mat result(pixels.size(), type);
    for (int y = 0; y < pixels.rows; ++y) {
        cmsDoTransform(transform, pixels.ptr(y), result.ptr(y),
                       static_cast<cmsUInt32Number>(pixels.cols));
    }
    return result;
}

// Colours evenly over all that there are, the corners included.
cv::Mat lattice(int channels) {
    constexpr int kStep = 15;  // a divisor of 255
    constexpr int kSide = 255 / kStep + 1;
    cv::Mat colours(kSide, channels == 1 ? 1 : kSide * kSide, CV_8UC(channels));
    for (int y = 0; y < colours.rows; ++y) {
        for (int x = 0; x < colours.cols; ++x) {
            std::uint8_t* const colour = colours.ptr(y, x);
            colour[0] = static_cast<std::uint8_t>(y * kStep);
            if (channels == 3) {
                colour[1] = static_cast<std::uint8_t>(x / kSide * kStep);
                colour[2] = static_cast<std::uint8_t>(x % kSide * kStep);
            }
        }
    }
    return colours;
}

bool isSrgbInEffect(const Profile& profile, int channels) {
    const cv::Mat colours = lattice(channels);
    const TransformPtr transform = transformOf(profile, colours.type(), {}, CV_8UC3);
    if (!transform) {
        return true;
    }
    cv::Mat same = colours;
    if (channels == 1) {
        cv::merge(std::vector<cv::Mat>{colours, colours, colours}, same);
    }
    return cv::norm(transformed(colours, transform.get(), CV_8UC3), same, cv::NORM_INF) <= 1.0;
}

// Of the depth and with the channels of `type`, whatever the colours.
cv::Mat inForm(const cv::Mat& pixels, int type) {
    cv::Mat result = pixels;
    if (pixels.channels() < CV_MAT_CN(type)) {
        cv::merge(std::vector<cv::Mat>(3, pixels), result);
    }
    constexpr double kToWide = 257.0;
    if (result.depth() != CV_MAT_DEPTH(type)) {
        const double scale = CV_MAT_DEPTH(type) == CV_16U ? kToWide : 1.0 / kToWide;
        result.convertTo(result, CV_MAT_DEPTH(type), scale);
    }
    return result;
}

Profile usualInks() {
    VipsBlob* blob = nullptr;
    if (vips_profile_load("cmyk", &blob, nullptr) != 0) {
        throw std::runtime_error(
            "the profile of a usual printer is missing; install libvips again");
    }
    std::size_t size = 0;
    const auto* const data = static_cast<const std::uint8_t*>(vips_blob_get(blob, &size));
    Profile profile(data, data + size);
    vips_area_unref(VIPS_AREA(blob));
    return profile;
}

}  // namespace

cv::Mat inSrgb(const cv::Mat& pixels, const Profile& profile) {
    if (isSrgbInEffect(profile, pixels.channels())) {
        return {};
    }
    const TransformPtr transform = transformOf(profile, pixels.type(), {}, CV_8UC3);
    return transform ? transformed(pixels, transform.get(), CV_8UC3) : cv::Mat();
}

cv::Mat converted(const cv::Mat& pixels, const Profile& from, const Profile& to, int type) {
    if (from == to) {
        return inForm(pixels, type);
    }
    if (const TransformPtr transform = transformOf(from, pixels.type(), to, type)) {
        return transformed(pixels, transform.get(), type);
    }
    const cv::Mat formed = inForm(pixels, type);
    const TransformPtr fromSrgb = transformOf({}, type, to, type);
    return fromSrgb ? transformed(formed, fromSrgb.get(), type) : formed;
}

cv::Mat coloursOfInks(const cv::Mat& inks, const Profile& profile) {
    const int type = inks.depth() == CV_16U ? CV_16UC3 : CV_8UC3;
    TransformPtr transform =
        profile.empty() ? nullptr : transformOf(profile, inks.type(), {}, type);
    if (!transform) {
        transform = transformOf(usualInks(), inks.type(), {}, type);
    }
    if (!transform) {
        throw std::runtime_error("no colours for the inks of a picture; convert it to RGB");
    }
    return transformed(inks, transform.get(), type);
}
