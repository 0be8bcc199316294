// A data set's folder on disk.
#pragma once

#include <filesystem>

#include "pictures/read_picture.h"
#include "session/data_set.h"

class FolderOnDisk : public DataFolder {
  public:
    explicit FolderOnDisk(std::filesystem::path folder) : m_folder(std::move(folder)) {}

    std::vector<std::string> fileNames() const override;
    std::optional<std::string> text(const std::string& file) const override;
    cv::Mat colourPicture(const std::string& file) const override;
    cv::Mat greyPicture(const std::string& file) const override;

  private:
    std::optional<Picture> picture(const std::string& file) const;

    std::filesystem::path m_folder;
};
