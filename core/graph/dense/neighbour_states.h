// The states of a node's eight neighbours in one word, so that one question goes to all of them at
// once. A branch for each neighbour would be guessed wrong nearly as often as right.
#pragma once

#include <cstdint>

#include "graph/dense/node_state.h"

namespace byte_lanes {

constexpr std::uint64_t kOnes = 0x0101010101010101U;

constexpr std::uint64_t inByte(int value, int byte) {
    return static_cast<std::uint64_t>(value) << (8 * byte);
}

constexpr std::uint64_t everyByte(int value) {
    return kOnes * static_cast<std::uint64_t>(value);
}

// Bit d is set when byte d is not zero. No byte may be above 0x7F.
constexpr unsigned nonZero(std::uint64_t bytes) {
    constexpr std::uint64_t kGather = 0x0102040810204080U;  // takes bit 8 d to bit 56 + d
    const std::uint64_t lowest = (bytes + everyByte(0x7F)) >> 7 & kOnes;
    return static_cast<unsigned>(lowest * kGather >> 56);
}

}  // namespace byte_lanes

class NeighbourStates {
  public:
    // `steps`: what to add to `tiled` to get its neighbours (TiledGrid::steps).
    NeighbourStates(const std::uint8_t* states, int tiled, const int* steps) {
        for (int d = 0; d < direction::kCount; ++d) {
            m_states |= byte_lanes::inByte(states[tiled + steps[d]], d);
        }
    }

    // Each answer is a set of directions, bit d for direction d.
    unsigned inTree(int tree) const { return matching(node_state::kTreeMask, tree); }
    unsigned withParent() const {
        return kAll & ~matching(node_state::kParentMask, node_state::kNoParent);
    }
    unsigned atTerminal() const {
        return matching(node_state::kParentMask, node_state::kTerminalParent);
    }
    unsigned onPath() const {
        return byte_lanes::nonZero(m_states >> 1 & byte_lanes::everyByte(node_state::kOnPath >> 1));
    }
    // Those whose parent is the node itself.
    unsigned children() const { return kAll & ~differing(node_state::kParentMask, parentHere()); }

  private:
    static constexpr unsigned kAll = 0xFF;

    static constexpr std::uint64_t parentHere() {
        std::uint64_t codes = 0;
        for (int d = 0; d < direction::kCount; ++d) {
            codes |= byte_lanes::inByte(node_state::parentCode(direction::opposite(d)), d);
        }
        return codes;
    }

    unsigned matching(int mask, int value) const {
        return kAll & ~differing(mask, byte_lanes::everyByte(value));
    }
    unsigned differing(int mask, std::uint64_t values) const {
        return byte_lanes::nonZero((m_states & byte_lanes::everyByte(mask)) ^ values);
    }

    std::uint64_t m_states = 0;
};
