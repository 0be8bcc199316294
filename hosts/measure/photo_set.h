// A folder of photographs with their true masks and marks, as research data sets for interactive
// segmentation lay them out:
//
//   NAME.{jpg,png,bmp}    the photograph
//   NAME.gt.png           the true mask: 255 object, 0 background, 128 does not count
//   NAME.box.txt          left top right bottom, right and bottom exclusive
//   NAME.lasso.txt        a closed loop around the object, one "x y" a line
//   NAME.s1.png, .s2.png  painted scribbles: 0 none, 1 background, 2 object
//
// Everything but the photograph may be missing.
#pragma once

#include <filesystem>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

struct Photo {
    std::string name;
    std::filesystem::path file;

    // Each reads its file when called, as large sets do not fit memory; an empty result stands for
    // a missing file, and std::runtime_error is thrown for an unreadable one.
    cv::Mat image() const;  // CV_8UC3, blue green red
    cv::Mat truth() const;  // CV_8UC1
    cv::Rect box() const;
    std::vector<cv::Point> lasso() const;
    cv::Mat scribbles(const std::string& set) const;  // CV_8UC1; set is "s1" or "s2"

  private:
    std::filesystem::path sibling(const std::string& ending) const;
};

// The photographs of the folder in the order of their names.
std::vector<Photo> findPhotos(const std::filesystem::path& folder);
