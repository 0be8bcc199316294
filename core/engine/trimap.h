// Codes of the band along the outline, and what became of its graph.
#pragma once

#include <cstdint>

namespace trimap {
constexpr std::uint8_t kOpen = 0;       // decided by the band's cut
constexpr std::uint8_t kOuterRing = 1;  // tied to the background
constexpr std::uint8_t kInnerRing = 2;  // tied to the object
constexpr std::uint8_t kOutside = 7;    // not part of the band
}  // namespace trimap

// Results of VORNSEHybrid::constructGraphTrimapVORN.
constexpr int kGraphBuilt = 0;
constexpr int kGraphFailed = 1;
