// The borders of a mask's object, along the edges of pixels: filled by the even-odd rule (or by the
// non-zero rule) they give exactly the mask.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

// A closed line through pixel corners, x from 0 to the mask's width and y from 0 to its height; the
// corner (x, y) is the upper left one of pixel (x, y). Only where the line turns is there a point; its
// sides run right and down, left and up by turns, the last one back to the first point.
struct Contour {
    std::vector<cv::Point> corners;
    // The contour right around this one in the list, which stands before it; -1 for none. An object
    // has none or a hole around it, a hole an object.
    int parent = -1;
    bool isHole = false;
};

// `mask` is CV_8UC1, 0 or not. Pixels of the object that touch at a corner alone belong together, those
// of the background do not, as in the outline that the library paints. Objects run clockwise as seen on
// a screen, holes the other way. Ordered by the topmost, then leftmost pixel. From any thread.
std::vector<Contour> contoursOf(const cv::Mat& mask);
