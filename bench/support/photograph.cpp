#include "support/photograph.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "measure/folder_on_disk.h"
#include "session/photo.h"
#include "session/strokes.h"

namespace {

constexpr double kNoiseSigma = 4.0;  // levels; about ISO 800 of a small sensor
constexpr std::uint64_t kNoiseSeed = 2004;
constexpr int kDefaultMargin = 10;  // a side's tenth stays outside the box
constexpr int kLoopPoints = 72;     // an ellipse point every five degrees

const std::map<std::string, Box>& sampleBoxes() {
    static const std::map<std::string, Box> boxes = {
        {"astronaut", {15, 2, 469, 509}},
        {"coffee", {70, 20, 489, 394}},
        {"rocket", {300, 120, 344, 424}},
    };
    return boxes;
}

Box boxOf(const DataPhoto& photo, const cv::Size& size) {
    const cv::Rect given = photo.box();
    Box box;
    if (!given.empty()) {
        box = {given.x, given.y, given.br().x - 1, given.br().y - 1};
    } else if (const auto known = sampleBoxes().find(photo.name()); known != sampleBoxes().end()) {
        box = known->second;
    } else {
        const int marginX = size.width / kDefaultMargin;
        const int marginY = size.height / kDefaultMargin;
        box = {marginX, marginY, size.width - 1 - marginX, size.height - 1 - marginY};
    }
    return {std::max(box.left, 0), std::max(box.top, 0), std::min(box.right, size.width - 1),
            std::min(box.bottom, size.height - 1)};
}

// The ellipse through the middles of the box's sides, widened until it holds the box's corners.
std::vector<cv::Point> ellipseAround(const Box& box, const cv::Size& size) {
    constexpr double kCircumscribed = 1.4142135623730951;
    const double centreX = (box.left + box.right) / 2.0;
    const double centreY = (box.top + box.bottom) / 2.0;
    const double radiusX = (box.right - box.left) / 2.0 * kCircumscribed;
    const double radiusY = (box.bottom - box.top) / 2.0 * kCircumscribed;
    std::vector<cv::Point> loop;
    for (int i = 0; i < kLoopPoints; ++i) {
        const double angle = 2.0 * CV_PI * i / kLoopPoints;
        const auto x = static_cast<int>(centreX + radiusX * std::cos(angle));
        const auto y = static_cast<int>(centreY + radiusY * std::sin(angle));
        loop.emplace_back(std::clamp(x, 0, size.width - 1), std::clamp(y, 0, size.height - 1));
    }
    return loop;
}

}  // namespace

Photograph loadPhotograph(const std::string& file) {
    const std::filesystem::path path(file);
    const FolderOnDisk folder(path.parent_path());
    const DataPhoto photo(folder, path.filename().string());
    const cv::Mat image = photo.image();
    if (image.empty()) {
        throw std::runtime_error(file + ": no such file");
    }
    const Box box = boxOf(photo, image.size());
    const std::vector<cv::Point> loop = photo.lasso();
    return {photo.name(), image.cols,
            image.rows,   photoOf(image, file).words,
            box,          loop.size() >= kLoopCorners ? loop : ellipseAround(box, image.size())};
}

std::vector<std::string> photographsIn(const std::string& folder) {
    std::vector<std::string> files;
    if (std::filesystem::is_directory(folder)) {
        const FolderOnDisk dataSet(folder);
        for (const DataPhoto& photo : photosIn(dataSet)) {
            files.push_back((std::filesystem::path(folder) / photo.file()).string());
        }
    }
    return files;
}

cv::Mat imageOf(const Photograph& photo) {
    // The imaging library takes data to read through a pointer to writable bytes.
    const cv::Mat words(photo.height, photo.width, CV_8UC4,
                        const_cast<std::uint32_t*>(photo.words.data()));
    cv::Mat image;
    cv::cvtColor(words, image, cv::COLOR_BGRA2BGR);
    return image;
}

Photograph resized(const Photograph& photo, int width, int height) {
    const bool larger = width > photo.width;
    cv::Mat image;
    cv::resize(imageOf(photo), image, cv::Size(width, height), 0.0, 0.0,
               larger ? cv::INTER_CUBIC : cv::INTER_AREA);
    const double scaleX = static_cast<double>(width) / photo.width;
    const double scaleY = static_cast<double>(height) / photo.height;
    const auto x = [=](int value) { return std::min(static_cast<int>(value * scaleX), width - 1); };
    const auto y = [=](int value) {
        return std::min(static_cast<int>(value * scaleY), height - 1);
    };
    Photograph result{
        photo.name,
        width,
        height,
        photoOf(image, photo.name).words,
        {x(photo.box.left), y(photo.box.top), x(photo.box.right), y(photo.box.bottom)},
        {}};
    for (const cv::Point& point : photo.loop) {
        result.loop.emplace_back(x(point.x), y(point.y));
    }
    return result;
}

Photograph enlarged(const Photograph& photo, double megapixels) {
    const double scale = std::sqrt(megapixels * 1e6 / static_cast<double>(photo.pixels()));
    Photograph result = resized(photo, static_cast<int>(std::lround(photo.width * scale)),
                                static_cast<int>(std::lround(photo.height * scale)));
    cv::Mat image = imageOf(result);
    cv::Mat noise(image.size(), CV_16SC3);
    cv::RNG generator(kNoiseSeed);
    generator.fill(noise, cv::RNG::NORMAL, cv::Scalar::all(0.0), cv::Scalar::all(kNoiseSigma));
    cv::add(image, noise, image, cv::noArray(), CV_8U);
    result.words = photoOf(image, photo.name).words;
    return result;
}
