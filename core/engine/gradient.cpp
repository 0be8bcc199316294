#include "engine/gradient.h"

#include <opencv2/imgproc.hpp>

cv::Mat gradientMagnitude(const IplImage* image) {
    constexpr int kAperture = 3;
    cv::Mat grey;
    cv::cvtColor(cv::cvarrToMat(image), grey, cv::COLOR_BGR2GRAY);
    cv::Mat horizontal;
    cv::Mat vertical;
    cv::Sobel(grey, horizontal, CV_32F, 1, 0, kAperture, 1.0, 0.0);
    cv::Sobel(grey, vertical, CV_32F, 0, 1, kAperture, 1.0, 0.0);
    cv::Mat magnitude;
    cv::magnitude(horizontal, vertical, magnitude);
    return magnitude;
}
