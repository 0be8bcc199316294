// One pass over the working region. Invariant at the end: both sets hold at least as many samples
// as a model has components.
#include "colour/training_data.h"

#include "history/marker.h"
#include "support/image.h"

namespace {

// Takes the place of samples where the marks leave too few pixels.
constexpr pixelVal kFiller = {10.0, 20.0, 30.0};

void fillUp(std::vector<pixelVal>& samples) {
    if (samples.size() < kComponents) {
        samples.resize(kComponents, kFiller);
    }
}

}  // namespace

void extractTrainingData(const IplImage* image, const IplImage* labels,
                         std::vector<pixelVal>& foreground, std::vector<pixelVal>& background) {
    foreground.clear();
    background.clear();
    if (labels != nullptr) {
        const bool grey = VORNSEMarker::m_isGreyScale;
        const int xMin = VORNSEMarker::m_xMinBBox;
        const int yMin = VORNSEMarker::m_yMinBBox;
        for (int y = 0; y < image->height; ++y) {
            const std::uint8_t* row = rowOf(image, y);
            const std::uint8_t* labelRow = rowOf(labels, y);
            const std::uint8_t* horizontal =
                grey ? rowOf(VORNSEMarker::m_texHor, y + yMin) + xMin : nullptr;
            const std::uint8_t* vertical =
                grey ? rowOf(VORNSEMarker::m_texVer, y + yMin) + xMin : nullptr;
            for (int x = 0; x < image->width; ++x) {
                if (label::isObject(labelRow[x])) {
                    foreground.push_back(sampleAt(row, horizontal, vertical, x));
                } else if (label::isBackground(labelRow[x])) {
                    background.push_back(sampleAt(row, horizontal, vertical, x));
                }
            }
        }
    }
    fillUp(foreground);
    fillUp(background);
}
