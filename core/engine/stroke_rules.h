// What a new mask shows: it is cleaned by the kind of the stroke and merged with the
// mask on display.
#pragma once

#include <opencv2/core/core_c.h>

#include <opencv2/core.hpp>

#include "history/marker.h"

// Changes `mask`, bytes 0 and 255. `previous` is the mask on display, of the same size; null
// without one. The stroke's points and `region`, the part that the request decided, are
// pixels of that size.
void applyStrokeRules(IplImage* mask, const IplImage* previous, const strokeInfo& current,
                      const cv::Rect& region);
