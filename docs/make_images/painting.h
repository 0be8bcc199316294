// Turns what the engine works on into pictures for people. All pictures are CV_8UC3.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

// A photograph under the codes of a label image of the same size: red fixed background, green
// fixed object, paler shades for the probable ones; free pixels show the photograph.
cv::Mat paintLabels(const cv::Mat& photo, const cv::Mat& labels);

// A one-channel float image in grey, `darkest` black and `brightest` white.
cv::Mat paintGrey(const cv::Mat& values, double darkest, double brightest);

// A signed float image: green above 0, red below, full colour from `strongest` on, white at 0.
cv::Mat paintSigned(const cv::Mat& values, double strongest);

// The photograph where the mask is not 0, a chequerboard elsewhere.
cv::Mat paintCutOut(const cv::Mat& photo, const cv::Mat& mask);

// The mask's outline in yellow on the photograph.
cv::Mat paintOutline(const cv::Mat& photo, const cv::Mat& mask);

// Enlarged by a whole factor with its pixels visible.
cv::Mat enlarged(const cv::Mat& image, int factor);

// Pictures of one height next to each other, a white gap between them.
cv::Mat sideBySide(const std::vector<cv::Mat>& pictures);

// Writes FOLDER/NAME.jpg; throws std::runtime_error when it cannot.
void writePicture(const std::string& folder, const std::string& name, const cv::Mat& picture);
