#include "photo_choice.h"

#include <algorithm>

namespace {
constexpr std::size_t kLargePhotoPixels = 1'000'000;
}

std::vector<DataPhoto> chosenPhotos(const DataFolder& folder,
                                    const std::vector<std::string>& only) {
    std::vector<DataPhoto> photos = photosIn(folder);
    if (!only.empty()) {
        const auto isLeftOut = [&](const DataPhoto& photo) {
            return std::find(only.begin(), only.end(), photo.name()) == only.end();
        };
        photos.erase(std::remove_if(photos.begin(), photos.end(), isLeftOut), photos.end());
    }
    return photos;
}

bool isLarge(const cv::Mat& image) {
    return image.total() > kLargePhotoPixels;
}
