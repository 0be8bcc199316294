// Nearest-neighbour resizing as the imaging library does it, without an image: the row or
// column of the source that each row or column of the target takes its values from. Rows do
// not depend on columns.
#pragma once

#include <cstddef>
#include <numeric>
#include <opencv2/imgproc.hpp>
#include <vector>

// `to` positions in 0 .. from - 1, ascending; both sizes at least 1. They are found by letting the
// imaging library resize a row of indices, so that its rounding holds.
inline std::vector<int> nearestPositions(int from, int to) {
    std::vector<int> indices(static_cast<std::size_t>(from));
    std::iota(indices.begin(), indices.end(), 0);
    std::vector<int> positions(static_cast<std::size_t>(to));
    cv::Mat source(1, from, CV_32SC1, indices.data());
    cv::Mat target(1, to, CV_32SC1, positions.data());
    cv::resize(source, target, target.size(), 0, 0, cv::INTER_NEAREST);
    return positions;
}
