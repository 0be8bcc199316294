// Live-wire search: Dijkstra's algorithm over the pixel grid (E. Mortensen and W. Barrett,
// "Intelligent Scissors for Image Composition", SIGGRAPH 1995).
//
// A pixel's record is filled when the search reaches the pixel, and forgotten right after. While a
// pixel waits, its cost is that of its queue entry. Records of the whole grid would take some 150
// bytes a pixel, more than a phone has for a photograph.
//
// Invariant: a pixel that has left the queue has its final cost and parent.
#include "path/edge_path.h"

#include <cmath>
#include <cstddef>
#include <exception>
#include <utility>

#include "path/min_priority_queue.h"
#include "support/codes.h"
#include "support/image.h"
#include "support/log.h"

namespace {

constexpr int kColourChannels = 3;
constexpr double kChannelShare = 1.0 / 3.0;

struct Step {
    int dy;
    int dx;
};
constexpr Step kSteps[kPathNeighbours] = {{1, 1},   {0, 1},  {-1, 1}, {-1, 0},
                                          {-1, -1}, {0, -1}, {1, -1}, {1, 0}};

double stepWeight(int squaredLength, const std::uint8_t* a, const std::uint8_t* b, double alpha) {
    int difference = 0;
    for (int c = 0; c < kColourChannels; ++c) {
        const int d = a[c] - b[c];
        difference += d * d;
    }
    return std::sqrt(squaredLength * alpha + (1.0 - alpha) * kChannelShare * difference);
}

bool isForbidden(int from, int to) {
    return (label::isObject(from) && label::isBackground(to)) ||
           (label::isBackground(from) && label::isObject(to));
}

bool isEightBit(const IplImage* image, int channels) {
    return image != nullptr && image->imageData != nullptr && image->nChannels == channels &&
           image->depth == IPL_DEPTH_8U;
}

struct Paths {
    std::vector<int> parents;
    std::vector<double> costs;  // empty unless asked for
};

// The arguments are checked.
Paths search(IplImage* image, IplImage* labels, int startNode, double alpha, bool wantsCosts) {
    const int width = image->width;
    const int height = image->height;
    const int count = width * height;
    Paths paths;
    paths.parents.assign(static_cast<std::size_t>(count), kNoNode);
    paths.parents[static_cast<std::size_t>(startNode)] = startNode;
    paths.costs.resize(wantsCosts ? static_cast<std::size_t>(count) : 0);

    MinPriorityQueue queue;
    queue.m_heap.reserve(static_cast<std::size_t>(count) + 1);
    queue.m_position.reserve(static_cast<std::size_t>(count));
    for (int n = 0; n < count; ++n) {
        queue.push({n, n == startNode ? 0.0 : kPathUnreached});
    }
    for (int i = 0; i < count; ++i) {
        const Qnode nearest = queue.pop_min();
        if (wantsCosts) {
            paths.costs[static_cast<std::size_t>(nearest.index)] = nearest.cost;
        }
        const int y = nearest.index / width;
        const int x = nearest.index % width;
        Node_ node;
        node.index = nearest.index;
        assign_index(node, height, width, y, x, alpha);
        assign_weight(image, labels, node, y, x, alpha);
        for (const Neighbour_& step : node.neighbours) {
            if (step.neighbour == kNoNode) {
                continue;
            }
            const auto next = static_cast<std::size_t>(step.neighbour);
            const int slot = queue.m_position[next];
            if (slot < 0) {
                continue;
            }
            Qnode& entry = queue.m_heap[static_cast<std::size_t>(slot)];
            const double offer = nearest.cost + step.weight;
            if (offer < entry.cost) {
                paths.parents[next] = nearest.index;
                entry.cost = offer;
                queue.prelocate_up(slot);
            }
        }
    }
    return paths;
}

// The map is written when the search is over: it may share its pixels with the images.
void writeCosts(const std::vector<double>& costs, int width, IplImage* costMap) {
    for (int node = 0; node < static_cast<int>(costs.size()); ++node) {
        cvSet2D(costMap, node / width, node % width,
                cvScalar(costs[static_cast<std::size_t>(node)]));
    }
}

bool covers(const IplImage* map, const IplImage* image) {
    return map->width >= image->width && map->height >= image->height;
}

// The cost map may be null.
std::vector<int> guardedSearch(IplImage* image, IplImage* labels, int y, int x, double alpha,
                               IplImage* costMap) {
    const bool imagesFit =
        isEightBit(image, kColourChannels) &&
        (labels == nullptr || (isEightBit(labels, 1) && labels->width == image->width &&
                               labels->height == image->height)) &&
        (costMap == nullptr || covers(costMap, image));
    if (!imagesFit || y < 0 || x < 0 || y >= image->height || x >= image->width) {
        SEGCORE_LOG_ERROR("find_parent_info: no path from (%d, %d), bad start or images", x, y);
        return {};
    }
    try {
        Paths paths = search(image, labels, y * image->width + x, alpha, costMap != nullptr);
        if (costMap != nullptr) {
            writeCosts(paths.costs, image->width, costMap);
        }
        return std::move(paths.parents);
    } catch (const std::exception& failure) {
        SEGCORE_LOG_ERROR("find_parent_info: %s", failure.what());
        return {};
    }
}

}  // namespace

void assign_index(Node_& node, int height, int width, int y, int x, double /*alpha*/) {
    for (int k = 0; k < kPathNeighbours; ++k) {
        const int ny = y + kSteps[k].dy;
        const int nx = x + kSteps[k].dx;
        const bool inside = ny >= 0 && nx >= 0 && ny < height && nx < width;
        node.neighbours[k].neighbour = inside ? ny * width + nx : kNoNode;
    }
}

double find_weight(IplImage* image, int y1, int x1, int y2, int x2, double alpha) {
    const int dy = y2 - y1;
    const int dx = x2 - x1;
    return stepWeight(dy * dy + dx * dx, rowOf(image, y1) + kColourChannels * x1,
                      rowOf(image, y2) + kColourChannels * x2, alpha);
}

void assign_weight(IplImage* image, IplImage* labels, Node_& node, int y, int x, double alpha) {
    const auto labelAt = [labels](int row, int column) {
        return labels != nullptr ? rowOf(labels, row)[column] : label::kFree;
    };
    const int own = labelAt(y, x);
    for (int k = 0; k < kPathNeighbours; ++k) {
        if (node.neighbours[k].neighbour == kNoNode) {
            continue;
        }
        const int ny = y + kSteps[k].dy;
        const int nx = x + kSteps[k].dx;
        node.neighbours[k].weight = isForbidden(own, labelAt(ny, nx))
                                        ? kPathUnreached
                                        : find_weight(image, y, x, ny, nx, alpha);
    }
}

std::vector<int> find_parent_info(IplImage* image, IplImage* labels, int y, int x, double alpha) {
    return guardedSearch(image, labels, y, x, alpha, nullptr);
}

std::vector<int> find_parent_info(IplImage* image, IplImage* labels, int y, int x, double alpha,
                                  IplImage* costMap) {
    if (costMap == nullptr) {
        SEGCORE_LOG_ERROR("find_parent_info: no cost map");
        return {};
    }
    return guardedSearch(image, labels, y, x, alpha, costMap);
}
