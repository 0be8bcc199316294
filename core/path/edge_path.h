// Edge-snapping paths for a lasso: from a start pixel the cheapest path to every other pixel of an
// 8-connected grid, where a step between like colours is cheap and one across a colour edge dear.
//
// Conventions: images are 8-bit, `image` with 3 channels, `labels` with 1 channel of label codes
// and the same size, or null where no label forbids a step. A pixel is given as row y, column x;
// its node number is y * width + x. `alpha`, 0 to 1, is the share of the step's length in its
// weight; the rest is the share of the colour difference.
//
// Threads: calls that share no image may run at the same time; images are only read, except the
// cost map.
#pragma once

#include <opencv2/core/core_c.h>

#include <limits>
#include <vector>

#include "support/export.h"

constexpr int kPathNeighbours = 8;
// No path found yet; also the weight of a step that is forbidden.
constexpr double kPathUnreached = std::numeric_limits<double>::max();
constexpr int kNoNode = -1;

struct Neighbour_ {
    int neighbour;  // node number, kNoNode outside the image
    double weight;
};

// A pixel with its way back to the start and its neighbours in the order down-right, right,
// up-right, up, up-left, left, down-left, down.
struct Node_ {
    int index;
    double cost = kPathUnreached;
    int parent = kNoNode;
    Neighbour_ neighbours[kPathNeighbours];
};

// Fills in the node numbers of the neighbours of pixel (x, y). alpha is not used.
SEGCORE_API void assign_index(Node_& node, int height, int width, int y, int x, double alpha);

// Weight of a step between any two pixels of the image: sqrt(alpha * squared distance + (1 - alpha)
// * mean squared channel difference). Knows nothing of labels.
SEGCORE_API double find_weight(IplImage* image, int y1, int x1, int y2, int x2, double alpha);

// Weights the steps from pixel (x, y) to its neighbours (assign_index has been called): as
// find_weight, but kPathUnreached between an object and a background label. Other labels connect
// freely to both.
SEGCORE_API void assign_weight(IplImage* image, IplImage* labels, Node_& node, int y, int x,
                               double alpha);

// The parent of every pixel on its cheapest path from the start (x, y), as node numbers in node
// order: following them from any pixel ends at the start, which is its own parent. A pixel that no
// permitted step reaches has parent -1. Of several parents that offer the same cost the first
// offer stands. The whole grid is searched on each call.
//
// A null image, images that do not fit together and a start outside give an empty vector and one
// error line, as does a lack of memory.
SEGCORE_API std::vector<int> find_parent_info(IplImage* image, IplImage* labels, int y, int x,
                                              double alpha);
// The same, and writes the cost of every pixel (kPathUnreached for those with parent -1) into
// `costMap` once all are known. The map is at least as large as the image; any depth, values
// saturate as the imaging library does, so 64-bit floats hold them exactly.
SEGCORE_API std::vector<int> find_parent_info(IplImage* image, IplImage* labels, int y, int x,
                                              double alpha, IplImage* costMap);
