// The graph of the working region for one cut. Fixed pixels are tied to their terminal with a
// large but finite weight; the others carry minus the log-likelihood under the opposite
// model. Links between neighbours have their contrast weight times the smoothness weight. The
// source is the object.
#include <cmath>

#include "engine/hybrid.h"
#include "engine/terminal_weights.h"
#include "graph/graph.h"
#include "history/marker.h"
#include "support/image.h"

namespace {

constexpr float kUndecided = 0.0001F;  // closer log-likelihoods of a grey pixel show no preference

TerminalWeights weightsOfGrey(const VORNSEColorModel& foreground,
                              const VORNSEColorModel& background, pixelVal sample) {
    TerminalWeights weights = modelWeights(foreground, background, sample);
    // Negated, so that a difference that is not a number counts as no preference.
    if (!(std::fabs(static_cast<float>(weights.source - weights.sink)) >= kUndecided)) {
        weights.source = weights.sink;
    }
    return weights;
}

}  // namespace

void VORNSEHybrid::constructGraphVORN() {}

void VORNSEHybrid::constructGraphVORN_Whole_Image() {
    const int width = m_cropWidth;
    const int height = m_cropHeight;
    const int xMin = VORNSEMarker::m_xMinBBox;
    const int yMin = VORNSEMarker::m_yMinBBox;
    const bool grey = VORNSEMarker::m_isGreyScale;
    m_graph->reset();
    m_graph->addNode(width * height);

    TerminalWeightCache weightsOf(m_fgModel, m_bgModel, grey ? weightsOfGrey : modelWeights);
    int node = 0;
    for (int y = 0; y < height; ++y) {
        const std::uint8_t* row = rowOf(m_cropImage, y);
        const std::uint8_t* labels = rowOf(m_cropLabel, y);
        const std::uint8_t* horizontal =
            grey ? rowOf(VORNSEMarker::m_texHor, y + yMin) + xMin : nullptr;
        const std::uint8_t* vertical =
            grey ? rowOf(VORNSEMarker::m_texVer, y + yMin) + xMin : nullptr;
        for (int x = 0; x < width; ++x, ++node) {
            if (labels[x] == label::kBackground) {
                m_graph->addtWeights(node, 0.0F, kHardWeight);
            } else if (labels[x] == label::kObject) {
                m_graph->addtWeights(node, kHardWeight, 0.0F);
            } else {
                const TerminalCapacities capacities =
                    weightsOf(sampleBytes(row, horizontal, vertical, x));
                m_graph->addtWeights(node, capacities.source, capacities.sink);
            }
        }
    }

    const auto link = [this](int from, int to, float weight, bool present) {
        if (present) {
            const auto capacity = static_cast<float>(m_lambda * static_cast<double>(weight));
            m_graph->addEdge(from, to, capacity, capacity, false);
        } else {
            m_graph->addEdge(from, from, 0.0F, 0.0F, true);
        }
    };
    node = 0;
    for (int y = 0; y < height; ++y) {
        const float* links = m_nLinks + 4 * ((y + yMin) * m_width + xMin);
        for (int x = 0; x < width; ++x, ++node, links += 4) {
            link(node, node - 1, links[0], x >= 1);
            link(node, node - width - 1, links[1], x >= 1 && y >= 1);
            link(node, node - width, links[2], y >= 1);
            link(node, node - width + 1, links[3], y >= 1 && x <= width - 2);
        }
    }
}
