// Soft edges for a cut-out: from a photograph and a hard mask to alpha, and from a picture and alpha to
// the colours of the object alone. Any mask will do, from wherever. Results are the same bits on every
// machine. Every call may come from any thread, several at a time.
#pragma once

#include <functional>
#include <opencv2/core.hpp>

// Alpha, CV_16UC1, 0 to 65535.
//   photograph   CV_8UC3 or CV_8UC4: blue, green, red and anything
//   mask         CV_8UC1 of the photograph's size: 0 surroundings, others object
//   width        pixels that the soft edge may reach to either side of the outline; 0: as measured. Edges
//                sharper than that stay sharp. At most 11 for crisp edges, in proportion more for
//                blurred ones
//   checkpoint   called at least every 50 ms or so, may be empty; what it throws ends the work
// Throws std::invalid_argument when types or sizes are others, or the width negative.
cv::Mat softAlpha(const cv::Mat& photograph, const cv::Mat& mask, double width,
                  const std::function<void()>& checkpoint = {});

// Alpha blurred by a Gaussian of a deviation of 0 to 100 pixels, for a taste softer than the photograph.
// Only for the eye: foregroundColours needs alpha as it was found. Throws as above.
cv::Mat feathered(const cv::Mat& alpha, double sigma, const std::function<void()>& checkpoint = {});

// What the colours of pixels are that show nothing of the object (alpha 0).
enum class Unseen {
    kNearest,  // that of the nearest pixel that does, so that scaling brings no dark seam
    kZero,
};

// The object's own colours, without what shines through from behind it. Type and size of the picture.
//   picture      CV_8U or CV_16U with 1 to 4 channels, in any colour space
//   alpha        CV_16UC1 of its size
cv::Mat foregroundColours(const cv::Mat& picture, const cv::Mat& alpha, Unseen unseen,
                          const std::function<void()>& checkpoint = {});
