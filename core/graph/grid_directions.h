// The eight neighbours of a pixel, in the order in which every scan visits them. The order is part
// of the result: of several parents that are equally good, an orphan takes the first.
//
//     1 2 3      Directions 0 .. 3 lead to earlier pixels in row order, 4 .. 7 to later ones.
//     0 . 4
//     7 6 5
#pragma once

#include "graph/graph.h"

namespace direction {

enum : int { kLeft, kUpLeft, kUp, kUpRight, kRight, kDownRight, kDown, kDownLeft };
constexpr int kCount = 8;
constexpr int kEarlier = 4;  // how many come before the pixel itself

struct Step {
    int x;
    int y;
};
constexpr Step kSteps[kCount] = {{-1, 0}, {-1, -1}, {0, -1}, {1, -1},
                                 {1, 0},  {1, 1},   {0, 1},  {-1, 1}};

constexpr int opposite(int direction) {
    return (direction + kEarlier) % kCount;
}

// What to add to a node to get its neighbour.
constexpr int nodeStep(int direction, int width) {
    return kSteps[direction].y * width + kSteps[direction].x;
}

// What to add to kSlotsPerNode * node to get the slot that leads to the neighbour. The later of two
// nodes owns both slots between them; the even one leads away from it, the odd one towards it.
constexpr int slotStep(int direction, int width) {
    return direction < kEarlier
               ? 2 * direction
               : kSlotsPerNode * nodeStep(direction, width) + 2 * opposite(direction) + 1;
}
static_assert(kSlotsPerNode == 2 * kEarlier);

}  // namespace direction
