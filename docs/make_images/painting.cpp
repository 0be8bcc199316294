#include "painting.h"

#include <fstream>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "history/marker.h"
#include "pictures/write_picture.h"

namespace {

const cv::Vec3b kRed(40, 40, 220);
const cv::Vec3b kGreen(60, 190, 60);
const cv::Vec3b kWhite(255, 255, 255);
const cv::Scalar kYellow(0, 255, 255);

constexpr double kFixed = 0.7;  // how far a colour covers the photograph
constexpr double kProbable = 0.35;
constexpr int kSquare = 10;  // of the chequerboard
constexpr int kGap = 6;

cv::Vec3b mixed(const cv::Vec3b& under, const cv::Vec3b& over, double share) {
    cv::Vec3b result;
    for (int c = 0; c < 3; ++c) {
        result[c] = cv::saturate_cast<uchar>(under[c] + (over[c] - under[c]) * share);
    }
    return result;
}

}  // namespace

cv::Mat paintLabels(const cv::Mat& photo, const cv::Mat& labels) {
    cv::Mat picture = photo.clone();
    picture.forEach<cv::Vec3b>([&](cv::Vec3b& pixel, const int* at) {
        const uchar code = labels.at<uchar>(at);
        if (code != label::kFree) {
            const bool fixed = code == label::kBackground || code == label::kObject;
            pixel = mixed(pixel, label::isObject(code) ? kGreen : kRed, fixed ? kFixed : kProbable);
        }
    });
    return picture;
}

cv::Mat paintGrey(const cv::Mat& values, double darkest, double brightest) {
    cv::Mat picture;
    const double scale = 255.0 / (brightest - darkest);
    values.convertTo(picture, CV_8U, scale, -darkest * scale);
    cv::cvtColor(picture, picture, cv::COLOR_GRAY2BGR);
    return picture;
}

cv::Mat paintSigned(const cv::Mat& values, double strongest) {
    cv::Mat picture(values.size(), CV_8UC3);
    picture.forEach<cv::Vec3b>([&](cv::Vec3b& pixel, const int* at) {
        const double value = static_cast<double>(values.at<float>(at));
        pixel =
            mixed(kWhite, value > 0.0 ? kGreen : kRed, std::min(std::abs(value) / strongest, 1.0));
    });
    return picture;
}

cv::Mat paintCutOut(const cv::Mat& photo, const cv::Mat& mask) {
    cv::Mat picture = photo.clone();
    picture.forEach<cv::Vec3b>([&](cv::Vec3b& pixel, const int* at) {
        if (mask.at<uchar>(at) == 0) {
            const bool light = (at[0] / kSquare + at[1] / kSquare) % 2 == 0;
            pixel = light ? cv::Vec3b(245, 245, 245) : cv::Vec3b(215, 215, 215);
        }
    });
    return picture;
}

cv::Mat paintOutline(const cv::Mat& photo, const cv::Mat& mask) {
    cv::Mat picture = photo.clone();
    std::vector<std::vector<cv::Point>> contours;
    cv::findContours(mask.clone(), contours, cv::RETR_LIST, cv::CHAIN_APPROX_NONE);
    cv::drawContours(picture, contours, -1, kYellow, 2);
    return picture;
}

cv::Mat enlarged(const cv::Mat& image, int factor) {
    cv::Mat result;
    cv::resize(image, result, cv::Size(), factor, factor, cv::INTER_NEAREST);
    return result;
}

cv::Mat sideBySide(const std::vector<cv::Mat>& pictures) {
    cv::Mat row = pictures.front().clone();
    const cv::Mat gap(row.rows, kGap, CV_8UC3, cv::Scalar::all(255));
    for (std::size_t i = 1; i < pictures.size(); ++i) {
        cv::hconcat(std::vector<cv::Mat>{row, gap, pictures[i]}, row);
    }
    return row;
}

void writePicture(const std::string& folder, const std::string& name, const cv::Mat& picture) {
    constexpr int kQuality = 88;
    const std::string path = folder + "/" + name + ".jpg";
    WriteOptions options;
    options.quality = kQuality;
    const std::vector<std::uint8_t> bytes = encodePicture(picture, ".jpg", options);
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    if (!file.flush()) {
        throw std::runtime_error("cannot write " + path);
    }
}
