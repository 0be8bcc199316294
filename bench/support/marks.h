// A user's marks, drawn and handed in as every host does it.
#pragma once

#include <vector>

#include "support/photograph.h"

struct Marks {
    std::vector<int> points;   // the stroke: x, y, x, y, ... in photograph pixels
    std::vector<int> markers;  // one marker code a pixel
    int strokeType;
};

// Everything inside may be object.
Marks boxMarks(const Photograph& photo);
Marks loopMarks(const Photograph& photo);

// A brush stroke along a line with the round brush that hosts use unless told otherwise.
Marks brushMarks(const Photograph& photo, cv::Point from, cv::Point to, bool adds);

// The first stroke of a brush session: over the middle of the box.
Marks firstBrush(const Photograph& photo);
// A later stroke, another one for every number: adding inside the box or removing near its border.
Marks laterBrush(const Photograph& photo, int number);

// Hands the marks to the engine; processSegment is what follows. The points may be moved into the
// photograph.
void storeMarks(const Photograph& photo, Marks& marks);
