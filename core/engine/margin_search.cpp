#include "engine/margin_search.h"

cv::Rect searchMargins(const cv::Mat& magnitude, const cv::Mat& /*pixels*/,
                       const cv::Mat& /*labels*/) {
    return {0, 0, magnitude.cols, magnitude.rows};
}
