// What tidies a mask: smoother outlines, no small holes, no specks. A host applies it to the mask that it
// delivers; marks and steps know nothing of it.
//
// Masks are CV_8UC1, 0 or not; results are new, CV_8UC1, 255 object and 0 the rest. As in the outlines
// of mask_contours.h, pixels of the object that touch at a corner belong together (8 neighbours), those
// of the background do not (4 neighbours). Arguments out of range end in std::invalid_argument.
// Threads: any, on masks that nobody changes.
#pragma once

#include <functional>
#include <opencv2/core.hpp>

constexpr int kLargestSmoothing = 100;  // pixels; beyond that an outline is a blob

// Makes object of each hole of at most `pixels` pixels (0 or more). A hole is a piece of background that
// does not reach the border of the mask.
cv::Mat withHolesFilled(const cv::Mat& mask, int pixels);

// Makes background of each piece of the object of at most `pixels` pixels (0 or more), the last one too.
cv::Mat withoutIslands(const cv::Mat& mask, int pixels);

// The piece of the object with the most pixels, of several the one met first, row by row from the top.
cv::Mat largestPiece(const cv::Mat& mask);

// Each pixel becomes what most pixels around it are: those no farther than `radius` (0 to
// kLargestSmoothing), distances taken between the middles of pixels, itself included, as far as they lie
// in the mask. With as many of both kinds it stays. A straight edge stays where it is; of a line, and of
// a gap, nothing stays when it is thinner than about 0.8 of the radius. `checkpoint` may be empty; it is
// called for each row, and what it throws ends the work.
cv::Mat smoothed(const cv::Mat& mask, int radius, const std::function<void()>& checkpoint = {});

// What is wanted of them; as it stands, nothing.
struct MaskHygiene {
    int smooth = 0;       // radius
    int fillHoles = 0;    // pixels
    int dropIslands = 0;  // pixels
    bool keepLargest = false;

    bool isWanted() const { return smooth > 0 || fillHoles > 0 || dropIslands > 0 || keepLargest; }
};

// In the order of the fields: so the result has no hole and no island of the sizes named, whatever the
// smoothing leaves, and the largest piece is the largest with its holes filled.
cv::Mat tidied(const cv::Mat& mask, const MaskHygiene& wanted,
               const std::function<void()>& checkpoint = {});
