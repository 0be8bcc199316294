// One segmentation request: colour models and cuts alternate for at most five passes (iterated
// graph cuts: C. Rother, V. Kolmogorov and A. Blake, "GrabCut", SIGGRAPH 2004), under a time limit
// and the host's cancel flag. Passes 0 to 2 try three smoothness weights, pass 3 chooses among
// them, pass 4 refines; a homogeneous background skips the trials. Invariant at the end: a
// delivered mask is in the history, a cancelled request leaves the history as it was, and nothing
// of the request stays allocated.
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "colour/model_init.h"
#include "colour/model_update.h"
#include "colour/training_data.h"
#include "engine/gradient.h"
#include "engine/hybrid.h"
#include "graph/graph.h"
#include "history/marker.h"
#include "history/undo_redo_history.h"
#include "support/image.h"
#include "support/log.h"
#include "support/timers.h"

namespace {

constexpr int kPasses = 5;
constexpr int kTrials = 3;
constexpr double kTimeLimitMs = 10000.0;
constexpr double kNoise = 0.1;
constexpr double kNoiseHomogeneous = 10.0;  // spreads the components of a flat background
constexpr double kStartLambda = 50.0;
constexpr int kUnusedInitArgument = 10;

// What a pass does with the colour models, as parallelLamdaSwtich says.
constexpr int kTrainModels = 0;
constexpr int kUpdateModels = 1;

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
    g_cancelTimer = create_timer();
    start_cpu_timer(g_cancelTimer);
    computeBoundingBox();
    preProcess();
    graphSpaceAllocator();
    if (m_graph->m_nodes == nullptr || m_graph->m_edgeCaps == nullptr) {
        throw std::bad_alloc();
    }
    m_cropImage = cropImage(VORNSEMarker::m_srcImage);
    m_cropLabel = cropImage(VORNSEMarker::m_labelImage);
    m_startLabel = cloneImage(m_cropLabel).release();

    m_lambda = kStartLambda;
    VORNSEMarker::m_noiseLevel = kNoise;
    bool choose = true;
    bool cancelled = false;
    int mode = kTrainModels;
    std::vector<pixelVal> foreground;
    std::vector<pixelVal> background;
    for (int pass = 0; pass < kPasses && !cancelled; ++pass) {
        if (choose) {
            mode = parallelLamdaSwtich(pass);
        }
        if (mode == kTrainModels || mode == kUpdateModels) {
            extractTrainingData(m_cropImage, m_cropLabel, foreground, background);
            if (mode == kTrainModels) {
                initModel(background, m_bgModel, kUnusedInitArgument);
                initModel(foreground, m_fgModel, kUnusedInitArgument);
            } else {
                updateModel(foreground, background, m_fgModel, m_bgModel);
            }
            const bool compact = pass == 0 && m_bgModel.colorModelCriteria();
            const bool homogeneous = compact || VORNSEMarker::m_isHomogenous;
            m_fgModel.setInverseCovariance();
            if (homogeneous) {
                VORNSEMarker::m_noiseLevel = kNoiseHomogeneous;
                m_bgModel.setInverseCovariance();
                VORNSEMarker::m_noiseLevel = kNoise;
                m_lambda = kStartLambda;
            } else {
                m_bgModel.setInverseCovariance();
            }
            if (mode == kTrainModels) {
                choose = !homogeneous;
            }
            VORNSEMarker::m_isHomogenous = homogeneous;
            mode = kUpdateModels;
        }
        constructGraphVORN_Whole_Image();
        m_graph->maxFlow();
        updateLabelImage();
        if (pass < kTrials) {
            m_trialLabels[pass] = cloneImage(m_cropLabel).release();
        }
        cancelled = cancelSegmentation();
    }
    if (cancelled) {
        SEGCORE_LOG_ERROR("Segmentation canceled due to timeout");
        clearMemory();
        return nullptr;
    }
    if (VORNSEMarker::m_isHomogenous) {
        chooseIter();
    }
    graphSpaceDellocator();
    IplImage* mask = getObjMask();
    clearMemory();
    return mask;
}

bool VORNSEHybrid::cancelSegmentation() {
    stop_cpu_timer(g_cancelTimer);
    return get_elapsed_time_in_millisec(g_cancelTimer) > kTimeLimitMs || VORNSEMarker::m_exitApp;
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
    checkImageSize(m_width, m_height, "getObjMask", 1410);
    ImagePtr mask = createImage(m_width, m_height, 1);
    cvSetZero(mask.get());
    const bool reduced = g_imageResizeFactor > 1.0F;
    const std::uint8_t objectValue = reduced ? 1 : 255;
    for (int y = 0; y < m_cropHeight; ++y) {
        const std::uint8_t* crop = rowOf(m_cropLabel, y);
        const int row = VORNSEMarker::m_yMinBBox + y;
        std::uint8_t* labels = rowOf(VORNSEMarker::m_labelImage, row) + VORNSEMarker::m_xMinBBox;
        std::uint8_t* out = rowOf(mask.get(), row) + VORNSEMarker::m_xMinBBox;
        for (int x = 0; x < m_cropWidth; ++x) {
            labels[x] = crop[x];
            if (label::isObject(crop[x])) {
                out[x] = objectValue;
            }
        }
    }
    if (reduced) {
        mask.reset(intelligentUpscaling(mask.get()));
    }
    postProcess(mask.get());
    VORNSEManageUndoRedo::record(mask.get());
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
