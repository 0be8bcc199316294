#include "score.h"

Score scoreOf(const cv::Mat& mask, const cv::Mat& truth) {
    CV_Assert(mask.size() == truth.size());
    const cv::Mat object = mask == 255;
    const cv::Mat trueObject = truth == 255;
    const cv::Mat trueBackground = truth == 0;
    const int both = cv::countNonZero(object & trueObject);
    const int missed = cv::countNonZero(~object & trueObject);
    const int added = cv::countNonZero(object & trueBackground);
    const int either = both + missed + added;
    return {static_cast<double>(missed + added) / static_cast<double>(mask.total()),
            either == 0 ? 1.0 : static_cast<double>(both) / static_cast<double>(either)};
}
