#include "folder_on_disk.h"

#include <fstream>
#include <iterator>
#include <opencv2/imgcodecs.hpp>

#include "session/errors.h"

namespace fs = std::filesystem;

std::vector<std::string> FolderOnDisk::fileNames() const {
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(m_folder)) {
        names.push_back(entry.path().filename().string());
    }
    return names;
}

std::optional<std::string> FolderOnDisk::text(const std::string& file) const {
    std::ifstream stream(m_folder / file, std::ios::binary);
    if (!stream) {
        return std::nullopt;
    }
    return std::string{std::istreambuf_iterator<char>(stream), {}};
}

cv::Mat FolderOnDisk::colourPicture(const std::string& file) const {
    return picture(file, cv::IMREAD_COLOR);
}

cv::Mat FolderOnDisk::greyPicture(const std::string& file) const {
    return picture(file, cv::IMREAD_GRAYSCALE);
}

cv::Mat FolderOnDisk::picture(const std::string& file, int mode) const {
    const fs::path path = m_folder / file;
    if (!fs::exists(path)) {
        return {};
    }
    cv::Mat image = cv::imread(path.string(), mode);
    if (image.empty()) {
        throw UserError(path.string() + " is not an image that can be read; replace it");
    }
    return image;
}
