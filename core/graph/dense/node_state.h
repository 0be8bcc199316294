// The state of a node in the dense search, one byte:
//
//     bits 0 .. 3   its parent: none, the terminal, or the neighbour in direction d as 8 + d
//     bits 4 and 5  its tree
//     bit 6         whether it waits in the active queue
//     bit 7         whether it is a step of its tree's kept path
//
// A node of a tree without a parent is an orphan. Zero is a free node, so that neither the nodes
// that the graph skipped nor the border around the grid have to be written.
#pragma once

#include <cstdint>

#include "graph/grid_directions.h"

namespace node_state {

constexpr int kParentMask = 0x0F;
constexpr int kNoParent = 0;
constexpr int kTerminalParent = 1;
constexpr int kParentIsNeighbour = 8;  // a bit that all directions' codes have, and no other code
constexpr int kTreeMask = 0x30;
constexpr int kInNoTree = 0;
constexpr int kInSource = 0x10;
constexpr int kInSink = 0x20;
constexpr int kActive = 0x40;
constexpr int kOnPath = 0x80;

constexpr int parentCode(int direction) {
    return kParentIsNeighbour + direction;
}
constexpr int directionOfParent(int state) {
    return (state & kParentMask) - kParentIsNeighbour;
}

inline void set(std::uint8_t& state, int bits) {
    state = static_cast<std::uint8_t>(state | bits);
}
inline void clear(std::uint8_t& state, int bits) {
    state = static_cast<std::uint8_t>(state & ~bits);
}

}  // namespace node_state
