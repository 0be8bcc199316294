// The state bytes of a node's eight neighbours in one word, for questions to all of them at once: a
// branch for each would be guessed wrong nearly as often as right.
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

// Bit d for each byte d that is not zero; all are below 0x80.
constexpr unsigned nonZero(std::uint64_t bytes) {
    constexpr std::uint64_t kGather = 0x0102040810204080U;  // takes bit 8 d to bit 56 + d
    const std::uint64_t lowest = (bytes + everyByte(0x7F)) >> 7 & kOnes;
    return static_cast<unsigned>(lowest * kGather >> 56);
}

}  // namespace byte_lanes

class NeighbourStates {
  public:
    // `steps`: what to add to `node` to get its neighbours.
    NeighbourStates(const std::uint8_t* states, int node, const int* steps) {
        for (int direction = 0; direction < kSlotsPerNode; ++direction) {
            m_states |= byte_lanes::inByte(states[node + steps[direction]], direction);
        }
    }

    // Sets of directions, bit d for direction d.
    unsigned inTree(int tree) const {
        return kAll & ~differing(node_state::kTreeMask, byte_lanes::everyByte(tree));
    }
    unsigned withParent() const {
        return differing(node_state::kParentMask, byte_lanes::everyByte(node_state::kNoParent));
    }
    unsigned atTerminal() const {
        const std::uint64_t codes = byte_lanes::everyByte(node_state::kTerminalParent);
        return kAll & ~differing(node_state::kParentMask, codes);
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
        for (int direction = 0; direction < kSlotsPerNode; ++direction) {
            const int code = node_state::parentCode(node_state::opposite(direction));
            codes |= byte_lanes::inByte(code, direction);
        }
        return codes;
    }

    unsigned differing(int mask, std::uint64_t values) const {
        return byte_lanes::nonZero((m_states & byte_lanes::everyByte(mask)) ^ values);
    }

    std::uint64_t m_states = 0;
};
