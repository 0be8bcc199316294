#include "photo_set.h"

#include <algorithm>
#include <fstream>
#include <opencv2/imgcodecs.hpp>
#include <stdexcept>

namespace fs = std::filesystem;

namespace {

cv::Mat readImage(const fs::path& file, cv::ImreadModes mode) {
    if (!fs::exists(file)) {
        return {};
    }
    cv::Mat image = cv::imread(file.string(), mode);
    if (image.empty()) {
        throw std::runtime_error(file.string() + ": not an image that can be read");
    }
    return image;
}

std::vector<int> readNumbers(const fs::path& file) {
    std::ifstream stream(file);
    std::vector<int> numbers;
    for (int number = 0; stream >> number;) {
        numbers.push_back(number);
    }
    if (stream.is_open() && !stream.eof()) {
        throw std::runtime_error(file.string() + ": only whole numbers are expected");
    }
    return numbers;
}

bool isPhotograph(const fs::path& file) {
    const std::string ending = file.extension().string();
    // A true mask or a scribble has a second ending.
    return (ending == ".jpg" || ending == ".png" || ending == ".bmp") &&
           file.stem().extension().empty();
}

}  // namespace

fs::path Photo::sibling(const std::string& ending) const {
    return file.parent_path() / (name + ending);
}

cv::Mat Photo::image() const {
    return readImage(file, cv::IMREAD_COLOR);
}

cv::Mat Photo::truth() const {
    return readImage(sibling(".gt.png"), cv::IMREAD_GRAYSCALE);
}

cv::Rect Photo::box() const {
    const std::vector<int> edges = readNumbers(sibling(".box.txt"));
    if (edges.empty()) {
        return {};
    }
    if (edges.size() != 4) {
        throw std::runtime_error(sibling(".box.txt").string() + ": four numbers are expected");
    }
    return {cv::Point(edges[0], edges[1]), cv::Point(edges[2], edges[3])};
}

std::vector<cv::Point> Photo::lasso() const {
    const std::vector<int> numbers = readNumbers(sibling(".lasso.txt"));
    std::vector<cv::Point> loop;
    for (std::size_t i = 0; i + 1 < numbers.size(); i += 2) {
        loop.emplace_back(numbers[i], numbers[i + 1]);
    }
    return loop;
}

cv::Mat Photo::scribbles(const std::string& set) const {
    return readImage(sibling("." + set + ".png"), cv::IMREAD_GRAYSCALE);
}

std::vector<Photo> findPhotos(const fs::path& folder) {
    std::vector<Photo> photos;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        if (isPhotograph(entry.path())) {
            Photo photo;
            photo.name = entry.path().stem().string();
            photo.file = entry.path();
            photos.push_back(std::move(photo));
        }
    }
    std::sort(photos.begin(), photos.end(),
              [](const Photo& a, const Photo& b) { return a.name < b.name; });
    return photos;
}
