// What a request is going to show, long before it does where the photograph is large (at 12
// megapixels after about an eighth of the request's time): the working mask with the stroke's rules
// and the mask on display already applied, all at working size.
#pragma once

#include <opencv2/core/core_c.h>

#include "support/image.h"

// A mask of working size, 255 for the object and 0 for the rest. `workingMask` is of that size with
// `object` and 0. Reads the previous result, the current stroke and the working region.
ImagePtr previewOf(const IplImage* workingMask, int object, int cropWidth, int cropHeight);
