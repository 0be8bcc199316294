// The state byte of a node in the dense search: its parent (0 none, 1 the terminal, 8 + d the
// neighbour in direction d), its tree, and whether it is queued and on a laid path. A node of a tree
// without a parent is an orphan. All zero is a free node, so nodes that the graph skipped, and the
// border around the grid, need no initialisation.
//
// Directions 0 .. 7 are the scan order: left, up-left, up, up-right, right, down-right, down,
// down-left.
#pragma once

#include <cstdint>

#include "graph/graph.h"

namespace node_state {

constexpr std::uint8_t kParentMask = 0x0F;
constexpr std::uint8_t kNoParent = 0;
constexpr std::uint8_t kTerminalParent = 1;
constexpr std::uint8_t kFirstDirection = 8;
// A bit that the codes of all directions have, and no other.
constexpr std::uint8_t kParentIsNeighbour = kFirstDirection;
constexpr std::uint8_t kTreeMask = 0x30;
constexpr std::uint8_t kInNoTree = 0;
constexpr std::uint8_t kInSource = 0x10;
constexpr std::uint8_t kInSink = 0x20;
constexpr std::uint8_t kActive = 0x40;
constexpr std::uint8_t kOnPath = 0x80;

constexpr int opposite(int direction) {
    return (direction + 4) % kSlotsPerNode;
}

constexpr std::uint8_t parentCode(int direction) {
    return static_cast<std::uint8_t>(kFirstDirection + direction);
}

}  // namespace node_state
