// A way to cut a photograph from marks, as the robot measures it.
#pragma once

#include <opencv2/core.hpp>

#include "session/step.h"

class Method {
  public:
    Method() = default;
    virtual ~Method() = default;
    Method(const Method&) = delete;
    Method& operator=(const Method&) = delete;

    // Takes a mark and makes the mask anew. A box or loop-add comes first, if at all; then brushes
    // with their radius given. Throws UserError for a mark that cannot be followed, and then the
    // mask stays.
    virtual void apply(const Step& mark) = 0;

    // CV_8UC1 of the photograph's size, 255 object, 0 the rest; all 0 before the first mark.
    virtual cv::Mat mask() const = 0;
};
