// The photographs that the benchmarks run on, as a host holds them.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

// Left, top, right, bottom in photograph pixels, corners included.
struct Box {
    int left;
    int top;
    int right;
    int bottom;
};

struct Photograph {
    std::string name;
    int width;
    int height;
    std::vector<std::uint32_t> words;  // pixel words, row by row
    Box box;                           // around the object
    std::vector<cv::Point> loop;       // a loose closed line around it

    std::size_t pixels() const { return words.size(); }
    double megapixels() const { return static_cast<double>(pixels()) / 1e6; }
};

// Reads an image file. The object's box comes from NAME.box.txt beside it ("left top right bottom",
// the last two exclusive), else from the table of the sample photographs, else it leaves a tenth of
// each side free; the loop from NAME.lasso.txt ("x y" a line), else it is the box's ellipse. Throws
// std::runtime_error for a file that is not an image.
Photograph loadPhotograph(const std::string& file);

// The image files of a folder that are photographs, sorted by name.
std::vector<std::string> photographsIn(const std::string& folder);

// The photograph at another size, with its box and loop.
Photograph resized(const Photograph& photo, int width, int height);

// Enlarged to about `megapixels` at its own proportions. Seeded noise of a camera's strength is
// added, since a smooth enlargement would have no contrast between neighbours at full size.
Photograph enlarged(const Photograph& photo, double megapixels);

// The photograph as a three-channel image.
cv::Mat imageOf(const Photograph& photo);
