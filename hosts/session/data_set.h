// Photographs with their true masks and marks, as research data sets for interactive segmentation lay
// them out in a folder:
//
//   NAME.{jpg,jpeg,png,bmp}  the photograph
//   NAME.gt.png              the true mask: 255 object, 0 background, 128 does not count
//   NAME.box.txt             left top right bottom, right and bottom exclusive
//   NAME.lasso.txt           a closed loop around the object, one "x y" a line
//   NAME.s1.png, .s2.png     painted scribbles: 0 none, 1 background, 2 object
//
// Everything but the photograph may be missing.
#pragma once

#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <vector>

// How a host reaches the files of a data set. Names are those of files, without folders.
class DataFolder {
  public:
    DataFolder() = default;
    virtual ~DataFolder() = default;
    DataFolder(const DataFolder&) = delete;
    DataFolder& operator=(const DataFolder&) = delete;

    virtual std::vector<std::string> fileNames() const = 0;  // in any order
    // None for a file that is not there.
    virtual std::optional<std::string> text(const std::string& file) const = 0;
    // Decoded, CV_8UC3 in the order blue, green, red, or CV_8UC1; empty for a file that is not there.
    // Throws UserError for one that is not an image.
    virtual cv::Mat colourPicture(const std::string& file) const = 0;
    virtual cv::Mat greyPicture(const std::string& file) const = 0;
};

// One photograph of a data set. Each call reads its file, as large sets do not fit memory; an empty
// result stands for a missing file, and UserError is thrown for one that cannot be understood.
class DataPhoto {
  public:
    // The folder outlives it.
    DataPhoto(const DataFolder& folder, std::string file);

    const std::string& file() const { return m_file; }
    const std::string& name() const { return m_name; }  // the file's without its ending

    cv::Mat image() const;  // CV_8UC3, blue green red
    cv::Mat truth() const;  // CV_8UC1
    cv::Rect box() const;
    std::vector<cv::Point> lasso() const;
    cv::Mat scribbles(const std::string& set) const;  // CV_8UC1; set is "s1" or "s2"

  private:
    std::vector<int> numbers(const char* ending) const;

    const DataFolder* m_folder;
    std::string m_file;
    std::string m_name;
};

// The photographs of the folder in the order of their names.
std::vector<DataPhoto> photosIn(const DataFolder& folder);
