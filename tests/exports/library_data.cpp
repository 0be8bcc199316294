// A host that reads the library's exported data: it sees what the library wrote, not a copy that the
// linker made for the program.
#include <cmath>
#include <cstdio>
#include <vector>

#include "engine/hybrid.h"
#include "history/marker.h"
#include "interface/segmentation_core.h"

int main() {
    // Four times the 320 x 240 pixels of the working image: half as wide and as high.
    constexpr int kWidth = 640;
    constexpr int kHeight = 480;
    const std::vector<std::uint32_t> photo(static_cast<std::size_t>(kWidth) * kHeight, 0xFF203040U);
    setSourceImage(kWidth, kHeight, photo.data());
    initSegmentationEngine(0);
    const float factor = g_imageResizeFactor;
    const int width = VORNSEMarker::m_width;
    deinitSegmentation();
    if (std::abs(factor - 2.0F) > 0.0001F || width < 319 || width > 320) {
        std::printf("resize factor %g, working width %d\n", static_cast<double>(factor), width);
        return 1;
    }
    return 0;
}
