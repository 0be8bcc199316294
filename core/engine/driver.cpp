// One segmentation request: colour models and cuts alternate for at most five passes (iterated
// graph cuts: C. Rother, V. Kolmogorov and A. Blake, "GrabCut", SIGGRAPH 2004), under a time limit
// and the host's cancel flag. Passes 0 to 2 try three smoothness weights, pass 3 chooses among
// them, pass 4 refines; a homogeneous background skips the trials. Invariant at the end: a
// delivered mask is in the history, a cancelled request leaves the history as it was, and nothing
// of the request stays allocated.
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "engine/gradient.h"
#include "engine/hybrid.h"
#include "engine/segmentation_request.h"
#include "graph/graph.h"
#include "history/marker.h"
#include "support/image.h"
#include "support/log.h"
#include "support/request_limit.h"
#include "support/timers.h"

namespace {

// chooseIter: contrast that makes an outline pixel good or bad, and the scores that bring the first
// pass back.
constexpr float kStrongEdge = 70.0F;
constexpr float kWeakEdge = 30.0F;
constexpr float kGoodFirstScore = 0.75F;
constexpr float kPerfectFinalScore = 0.98F;
constexpr float kClearGain = 0.2F;

// Share of strong minus weak edges along the object's inner outline; not a number without one.
float outlineScore(const IplImage* labels, const cv::Mat& magnitude) {
    cv::Mat object(labels->height, labels->width, CV_8UC1);
    for (int y = 0; y < labels->height; ++y) {
        const std::uint8_t* row = rowOf(labels, y);
        auto* out = object.ptr<std::uint8_t>(y);
        for (int x = 0; x < labels->width; ++x) {
            out[x] = label::isObject(row[x]) ? 255 : 0;
        }
    }
    cv::Mat inner;
    cv::erode(object, inner, cv::Mat());
    int outline = 0;
    int strong = 0;
    int weak = 0;
    for (int y = 0; y < object.rows; ++y) {
        const auto* row = object.ptr<std::uint8_t>(y);
        const auto* innerRow = inner.ptr<std::uint8_t>(y);
        const auto* edges = magnitude.ptr<float>(y);
        for (int x = 0; x < object.cols; ++x) {
            if (row[x] - innerRow[x] == 255) {
                ++outline;
                strong += edges[x] > kStrongEdge ? 1 : 0;
                weak += edges[x] < kWeakEdge ? 1 : 0;
            }
        }
    }
    return static_cast<float>(static_cast<double>(strong - weak) / static_cast<double>(outline));
}

}  // namespace

IplImage* VORNSEHybrid::segment() {
    SegmentationRequest request(*this);
    request.begin();
    for (int pass = 0; pass < SegmentationRequest::kPasses; ++pass) {
        if (!request.onePass(pass)) {
            SEGCORE_LOG_ERROR("Segmentation canceled due to timeout");
            clearMemory();
            return nullptr;
        }
    }
    request.choose();
    IplImage* mask = getObjMask();
    clearMemory();
    return mask;
}

bool VORNSEHybrid::cancelSegmentation() {
    stop_cpu_timer(g_cancelTimer);
    const bool cancelled = VORNSEMarker::m_exitApp;
    if (request_limit::isPassed(get_elapsed_time_in_millisec(g_cancelTimer))) {
        request_limit::noteRanOut(cancelled);
        return true;
    }
    return cancelled;
}

int VORNSEHybrid::updateLabelImage() {
    int objectSide = 0;
    int node = 0;
    for (int y = 0; y < m_cropHeight; ++y) {
        std::uint8_t* row = rowOf(m_cropLabel, y);
        for (int x = 0; x < m_cropWidth; ++x, ++node) {
            const bool fixed = row[x] == label::kBackground || row[x] == label::kObject;
            const bool sinkSide = m_graph->getTreeofNode(node) == 1;
            objectSide += sinkSide ? 0 : 1;
            if (!fixed) {
                row[x] = sinkSide ? label::kProbableBackground : label::kProbableObject;
            }
        }
    }
    return objectSide;
}

void VORNSEHybrid::chooseIter() {
    const cv::Mat magnitude = gradientMagnitude(m_cropImage);
    const float first = outlineScore(m_trialLabels[0], magnitude);
    const float final = outlineScore(m_cropLabel, magnitude);
    // Negated, so that a final result without an outline gives way to a good first one.
    if (first >= kGoodFirstScore && !(final > kPerfectFinalScore) &&
        !(final - first > kClearGain)) {
        cvCopy(m_trialLabels[0], m_cropLabel);
    }
}

IplImage* VORNSEHybrid::getObjMask() {
    SegmentationRequest request(*this);
    ImagePtr mask = request.upscale(request.workingMask());
    request.finish(mask.get());
    return mask.release();
}

void VORNSEHybrid::clearMemory() {
    for (IplImage*& trial : m_trialLabels) {
        releaseImage(trial);
    }
    releaseImage(m_cropImage);
    releaseImage(m_cropLabel);
    releaseImage(m_startLabel);
    graphSpaceDellocator();
    delete m_trimapGraph;
    m_trimapGraph = nullptr;
    destroy_timer(g_cancelTimer);
    g_cancelTimer = nullptr;
}
